// The interface's colours and how items inherit them.
#pragma once

#include <QColor>
#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace velto {

// A Colors::Palette for QML. A plain value; all colours are sRGB.
struct Palette {
  Q_GADGET
  QML_VALUE_TYPE(veltoPalette)

  Q_PROPERTY(bool isDark MEMBER isDark CONSTANT FINAL)
  Q_PROPERTY(QColor bg MEMBER bg CONSTANT FINAL)
  Q_PROPERTY(QColor surface MEMBER surface CONSTANT FINAL)
  Q_PROPERTY(QColor soft MEMBER soft CONSTANT FINAL)
  Q_PROPERTY(QColor ink MEMBER ink CONSTANT FINAL)
  Q_PROPERTY(QColor muted MEMBER muted CONSTANT FINAL)
  Q_PROPERTY(QColor faint MEMBER faint CONSTANT FINAL)
  Q_PROPERTY(QColor line MEMBER line CONSTANT FINAL)
  Q_PROPERTY(QColor identity MEMBER identity CONSTANT FINAL)
  Q_PROPERTY(QColor signal MEMBER signal CONSTANT FINAL)
  Q_PROPERTY(QColor control MEMBER control CONSTANT FINAL)
  Q_PROPERTY(QColor selectedFill MEMBER selectedFill CONSTANT FINAL)
  Q_PROPERTY(QColor track MEMBER track CONSTANT FINAL)
  Q_PROPERTY(QColor good MEMBER good CONSTANT FINAL)
  Q_PROPERTY(QColor warn MEMBER warn CONSTANT FINAL)
  Q_PROPERTY(QColor bad MEMBER bad CONSTANT FINAL)

public:
  bool isDark = true;
  QColor bg;           // window; text on the enabled primary button
  QColor surface;      // panels, the trial card
  QColor soft;         // scale strips, disabled primary button
  QColor ink;          // primary text, truth marker, enabled primary button, selected outlines
  QColor muted;        // secondary text, major ticks
  QColor faint;        // captions, minor ticks
  QColor line;         // hairlines and 1-point borders
  QColor identity;     // brand accent
  QColor signal;       // the listener's marker
  QColor control;      // the difficulty curve
  QColor selectedFill; // chosen buttons, chosen or flipped slot
  QColor track;        // empty part of bars
  QColor good;         // a hit
  QColor warn;         // the middle of the weakness scale
  QColor bad;          // a miss

  bool operator==(const Palette&) const = default;

  // The two palettes, each made on first use. Any thread.
  [[nodiscard]] static const Palette& dark();
  [[nodiscard]] static const Palette& light();
};

// See Colors::mix. Aborts if a colour is invalid.
[[nodiscard]] QColor mix(const QColor& from, const QColor& to, double t);

// See Colors::laidOver.
[[nodiscard]] QColor laidOver(const QColor& top, const QColor& ground);

// See Colors::weakness.
[[nodiscard]] QColor weaknessColor(const Palette& palette, double weakness);

// The palette that items inherit: `Theme.palette` is the palette set on the item, else that of the
// nearest ancestor with one, else the dark palette. Main thread only.
class Theme : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("Theme is attached to items")
  QML_ATTACHED(velto::Theme)
  Q_PROPERTY(velto::Palette palette READ palette WRITE setPalette NOTIFY paletteChanged FINAL)

public:
  explicit Theme(QObject* parent);
  static Theme* qmlAttachedProperties(QObject* object) { return new Theme(object); }

  [[nodiscard]] const Palette& palette() const { return palette_; }
  void setPalette(const Palette& palette);

Q_SIGNALS:
  void paletteChanged();

private:
  void followParent();
  void update();

  std::optional<Palette> own_;
  QPointer<Theme> ancestor_;
  QMetaObject::Connection ancestorConnection_;
  Palette palette_ = Palette::dark();
};

// The two palettes for QML.
class Palettes : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(velto::Palette dark READ dark CONSTANT FINAL)
  Q_PROPERTY(velto::Palette light READ light CONSTANT FINAL)

public:
  [[nodiscard]] static const Palette& dark() { return Palette::dark(); }
  [[nodiscard]] static const Palette& light() { return Palette::light(); }

  // See weaknessColor.
  Q_INVOKABLE static QColor weakness(const velto::Palette& palette, double weakness) {
    return weaknessColor(palette, weakness);
  }

  // See mix.
  Q_INVOKABLE static QColor mixed(const QColor& from, const QColor& to, double t) {
    return mix(from, to, t);
  }

  // See laidOver.
  Q_INVOKABLE static QColor laidOver(const QColor& top, const QColor& ground) {
    return velto::laidOver(top, ground);
  }

  // See Colors::faded.
  Q_INVOKABLE static QColor faded(const QColor& color, double opacity);
};

} // namespace velto
