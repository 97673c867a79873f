#include "Fonts.h"

#include "Resources.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>

#include <fontconfig/fontconfig.h>

namespace velto {

namespace {

bool faceRegistered = false;

bool faceExists() {
  return QFontDatabase::hasFamily(QString::fromLatin1(BrandType::family));
}

const QString portalSpace = QStringLiteral("org.gnome.desktop.interface");
const QString systemKey = QStringLiteral("font-name");
const QString monoKey = QStringLiteral("monospace-font-name");

// The family in a setting such as "Cantarell 11" or "JetBrains Mono Medium 10,5"; empty if unknown.
QString portalFamily(const QString& setting) {
  QStringList words = setting.split(QLatin1Char(' '), Qt::SkipEmptyParts);
  while (!words.isEmpty()) {
    const QString family = words.join(QLatin1Char(' '));
    if (QFontDatabase::hasFamily(family))
      return family;
    words.removeLast();
  }
  return {};
}

// Without a platform theme Qt returns a generic alias instead of a font.
bool isGenericAlias(const QString& family) {
  static const QStringList aliases{QString(), QStringLiteral("Sans"), QStringLiteral("Sans Serif"),
                                   QStringLiteral("sans-serif"), QStringLiteral("monospace")};
  return aliases.contains(family, Qt::CaseInsensitive);
}

// Registers a family that the system lacks, if it lies beside the program, as in a relocatable
// bundle: in files such as fonts/JetBrainsMono-Bold.ttf.
void provide(const QString& family) {
  if (QFontDatabase::hasFamily(family))
    return;
  const QString compact = QString(family).remove(QLatin1Char(' '));
  const QStringList files = resourceFiles(QStringLiteral("fonts"), compact + QStringLiteral("-*"));
  for (const QString& file : files)
    QFontDatabase::addApplicationFont(file);
}

// Makes a bundle's own fonts and configuration the current ones, if the system has no configuration
// of fonts.
void configureFromBundle() {
  const QString file = resourceFile(QStringLiteral("fonts/fonts.conf"));
  if (file.isEmpty())
    return;
  FcConfig* const config = FcConfigCreate();
  // Of a null configuration, it would load the default one first, and complain if there is none.
  FcChar8* const ofSystem = FcConfigGetFilename(config, nullptr);
  const QByteArray path = QFile::encodeName(file);
  if (ofSystem == nullptr &&
      FcConfigParseAndLoad(config, reinterpret_cast<const FcChar8*>(path.constData()), FcTrue) &&
      FcConfigBuildFonts(config))
    FcConfigSetCurrent(config);
  FcStrFree(ofSystem);
  FcConfigDestroy(config);
}

QString familyFor(QFontDatabase::SystemFont role, const QString& setting, const QString& fallback) {
  const QString themed = QFontDatabase::systemFont(role).family();
  if (!isGenericAlias(themed))
    return themed;
  const QString fromPortal = portalFamily(setting);
  if (!fromPortal.isEmpty())
    return fromPortal;
  provide(fallback);
  return fallback;
}

} // namespace

QString BrandType::faceFile() {
  return resourceFile(QStringLiteral("MORLADisplay-Regular.otf"));
}

void BrandType::registerFace() {
  if (!faceExists()) {
    const QString file = faceFile();
    if (file.isEmpty())
      return;
    QFontDatabase::addApplicationFont(file);
  }
  faceRegistered = faceExists();
}

bool BrandType::registered() {
  return faceRegistered;
}

std::vector<Portal::Setting> Fonts::portalSettings() {
  return {{portalSpace, systemKey}, {portalSpace, monoKey}};
}

std::future<void> Fonts::readConfigurationAhead() {
  return std::async(std::launch::async, [] {
    configureFromBundle();
    FcInit();
  });
}

Fonts::Fonts(QObject* parent) : QObject(parent) {
  connect(&portal_, &Portal::settingChanged, this, &Fonts::receive);
  QCoreApplication::instance()->installEventFilter(this);
  portalSystem_ = portal_.read(portalSpace, systemKey).toString();
  portalMono_ = portal_.read(portalSpace, monoKey).toString();
  choose();
}

bool Fonts::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ApplicationFontChange)
    choose();
  return QObject::eventFilter(watched, event);
}

void Fonts::receive(const QString& space, const QString& key, const QVariant& value) {
  if (space != portalSpace)
    return;
  if (key == systemKey)
    portalSystem_ = value.toString();
  else if (key == monoKey)
    portalMono_ = value.toString();
  choose();
}

void Fonts::choose() {
  const QString system =
      familyFor(QFontDatabase::GeneralFont, portalSystem_, QStringLiteral("Inter"));
  const QString mono =
      familyFor(QFontDatabase::FixedFont, portalMono_, QStringLiteral("JetBrains Mono"));
  if (system == system_ && mono == mono_)
    return;
  system_ = system;
  mono_ = mono;
  Q_EMIT changed();
}

} // namespace velto
