// The faces that the interface is set in.
#pragma once

#include "Portal.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velto {

// The wordmark's face. Main thread only.
namespace BrandType {

inline constexpr const char* family = "MORLA Display";

// Makes the face usable by this process: as it is installed, or from the file beside the program.
// Leaves registered() false where neither gives it. Needs a QGuiApplication.
void registerFace();

// True when the face can be used.
[[nodiscard]] bool registered();

// Where the face's file lies, or an empty path when it is not there.
[[nodiscard]] QString faceFile();

} // namespace BrandType

// The families of the desktop's fonts, live: those that the platform theme names, else those of the
// portal's font settings, else Inter and JetBrains Mono. Main thread only.
class Fonts : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QString system READ system NOTIFY changed FINAL)
  Q_PROPERTY(QString mono READ mono NOTIFY changed FINAL)
  Q_PROPERTY(QString brand READ brand CONSTANT FINAL)
  Q_PROPERTY(bool brandRegistered READ brandRegistered CONSTANT FINAL)

public:
  explicit Fonts(QObject* parent = nullptr);

  [[nodiscard]] QString system() const { return system_; }
  [[nodiscard]] QString mono() const { return mono_; }
  [[nodiscard]] static QString brand() { return QString::fromLatin1(BrandType::family); }
  [[nodiscard]] static bool brandRegistered() { return BrandType::registered(); }

Q_SIGNALS:
  void changed();

private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void receive(const QString& space, const QString& key, const QVariant& value);
  void choose();

  Portal portal_;
  QString portalSystem_; // as the portal's settings have them
  QString portalMono_;
  QString system_;
  QString mono_;
};

} // namespace velto
