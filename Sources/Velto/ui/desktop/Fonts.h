// The interface's typefaces.
#pragma once

#include "Portal.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <future>

namespace velto {

// The wordmark's face. Main thread only, except for registerFace().
namespace BrandType {

inline constexpr const char* family = "MORLA Display";

// Makes the face available to this process: the installed one, else the one from the program's
// resources. If there is neither, registered() stays false. Needs a QGuiApplication. Any thread;
// the other functions must not run before it has returned.
void registerFace();

// True if the face is available.
[[nodiscard]] bool registered();

// The path of the face's file; empty if there is none.
[[nodiscard]] QString faceFile();

} // namespace BrandType

// The families of the desktop's fonts, followed live: from the platform theme, else from the
// portal's settings, else Inter and JetBrains Mono. Main thread only.
class Fonts : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QString system READ system NOTIFY changed FINAL)
  Q_PROPERTY(QString mono READ mono NOTIFY changed FINAL)
  Q_PROPERTY(QString brand READ brand CONSTANT FINAL)
  Q_PROPERTY(bool brandRegistered READ brandRegistered CONSTANT FINAL)

public:
  // The settings that the constructor waits for.
  [[nodiscard]] static std::vector<Portal::Setting> portalSettings();
  // Reads the configuration of the system's fonts on another thread, or that of a relocatable
  // bundle if the system has none. Done before the first font is used, it saves that time. Needs no
  // QGuiApplication.
  [[nodiscard]] static std::future<void> readConfigurationAhead();

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
  QString portalSystem_; // from the portal's settings
  QString portalMono_;
  QString system_;
  QString mono_;
};

} // namespace velto
