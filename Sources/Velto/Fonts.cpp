#include "Fonts.h"

#include "Portal.h"
#include "Resources.h"

#include <QFontDatabase>
#include <QFontInfo>

namespace velto {

namespace {

bool faceRegistered = false;

bool faceExists() {
  return QFontDatabase::hasFamily(QString::fromLatin1(BrandType::family));
}

// "Cantarell 11" or "JetBrains Mono Medium 10,5": the family, without what follows it.
QString portalFamily(const Portal& portal, const QString& key) {
  QStringList words = portal.read(QStringLiteral("org.gnome.desktop.interface"), key)
                          .toString()
                          .split(QLatin1Char(' '), Qt::SkipEmptyParts);
  while (!words.isEmpty()) {
    const QString family = words.join(QLatin1Char(' '));
    if (QFontDatabase::hasFamily(family))
      return family;
    words.removeLast();
  }
  return {};
}

// Without a platform theme Qt names a generic alias instead of a font.
bool isGenericAlias(const QString& family) {
  static const QStringList aliases{QString(), QStringLiteral("Sans"), QStringLiteral("Sans Serif"),
                                   QStringLiteral("sans-serif"), QStringLiteral("monospace")};
  return aliases.contains(family, Qt::CaseInsensitive);
}

QString familyFor(QFontDatabase::SystemFont role, const Portal& portal, const QString& portalKey,
                  const QString& fallback) {
  const QString themed = QFontDatabase::systemFont(role).family();
  if (!isGenericAlias(themed))
    return themed;
  const QString fromPortal = portalFamily(portal, portalKey);
  return fromPortal.isEmpty() ? fallback : fromPortal;
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

Fonts::Fonts(QObject* parent) : QObject(parent) {
  const Portal portal;
  system_ = familyFor(QFontDatabase::GeneralFont, portal, QStringLiteral("font-name"),
                      QStringLiteral("Inter"));
  mono_ = familyFor(QFontDatabase::FixedFont, portal, QStringLiteral("monospace-font-name"),
                    QStringLiteral("JetBrains Mono"));
}

} // namespace velto
