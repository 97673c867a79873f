#include "BrandCheck.h"

#include "Environment.h"
#include "Numbers.h"
#include "Report.h"
#include "desktop/Fonts.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QRawFont>
#include <QtEndian>

#include <cmath>
#include <optional>

namespace velto {

namespace {

constexpr int pointSize = 22;
const QString wordmark = QStringLiteral("MORLA Velto");

// Empty if there is no home directory.
QString masterFile() {
  const auto home = Environment::ofProcess().home();
  if (!home)
    return {};
  return QDir(QString::fromStdString(home->string()))
      .filePath(QStringLiteral("Projects/morla/company/morla-brand/type/MORLADisplay-Regular.otf"));
}

std::optional<QByteArray> digestOf(const QString& path) {
  QFile file(path);
  if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
    return std::nullopt;
  QCryptographicHash hash(QCryptographicHash::Sha256);
  if (!hash.addData(&file))
    return std::nullopt;
  return hash.result();
}

QFont font(const QString& family, QFont::Weight weight) {
  QFont font(family);
  font.setPixelSize(pointSize);
  font.setWeight(weight);
  return font;
}

// The brand font, if the font system knows its family.
std::optional<QFont> brandFont() {
  const QString family = QString::fromLatin1(BrandType::family);
  if (!QFontDatabase::hasFamily(family))
    return std::nullopt;
  return font(family, QFont::Normal);
}

// Name record 6 of the face that Qt actually uses. Records of the Windows platform are UTF-16.
std::string postScriptName(const QFont& font) {
  constexpr quint16 windowsPlatform = 3;
  constexpr quint16 postScriptNameId = 6;
  constexpr qsizetype headerSize = 6;
  constexpr qsizetype recordSize = 12;
  const QByteArray table = QRawFont::fromFont(font).fontTable("name");
  const auto word = [&table](qsizetype at) {
    return at + 2 <= table.size() ? qFromBigEndian<quint16>(table.constData() + at) : quint16(0);
  };
  const qsizetype count = word(2);
  const qsizetype texts = word(4);
  for (qsizetype i = 0; i < count; ++i) {
    const qsizetype record = headerSize + i * recordSize;
    if (word(record + 6) != postScriptNameId)
      continue;
    const QByteArray text = table.mid(texts + word(record + 10), word(record + 8));
    if (word(record) != windowsPlatform)
      return text.toStdString();
    std::string name;
    for (qsizetype c = 1; c < text.size(); c += 2)
      name += text[c]; // PostScript names are ASCII
    return name;
  }
  return {};
}

// Prints the gates and tracks whether all passed.
class Run {
public:
  bool gates() {
    Report::line("── brand");
    const QString shipped = BrandType::faceFile();
    check("wordmark face is in the bundle", !shipped.isEmpty(),
          shipped.isEmpty() ? "missing — run build.sh, not swift build"
                            : QFileInfo(shipped).fileName().toStdString());
    checkUnmodified(shipped);
    BrandType::registerFace();
    check("face is usable by the app", BrandType::registered(),
          BrandType::registered() ? BrandType::family
                                  : "registered flag false — wordmark would fall back");
    checkDrawn();
    Report::line(allPassed_ ? "  brand gate green" : "  BRAND GATE RED");
    return allPassed_;
  }

private:
  void check(std::string_view name, bool ok, std::string_view detail) {
    constexpr std::size_t nameWidth = 44;
    Report::line(Report::check(ok, name, nameWidth, detail));
    allPassed_ = allPassed_ && ok;
  }

  void checkUnmodified(const QString& shipped) {
    const auto ours = digestOf(shipped);
    const auto master = digestOf(masterFile());
    const bool equal = ours && master && *ours == *master;
    check("bundled face is the brand repo's, unmodified", equal,
          !ours || !master ? "brand repo copy unreadable"
          : equal          ? ours->left(4).toHex().toStdString() + "…"
                           : "SHA differs — it was re-exported or re-drawn");
  }

  void checkDrawn() {
    const auto brand = brandFont();
    const std::string name = brand ? postScriptName(*brand) : "nil";
    check("custom face resolves (not silently substituted)", name.find("MORLA") != name.npos, name);
    if (!brand)
      return;
    const double width = QFontMetricsF(*brand).horizontalAdvance(wordmark);
    const double systemWidth =
        QFontMetricsF(font(Fonts().system(), QFont::DemiBold)).horizontalAdvance(wordmark);
    check("wordmark typesets in the brand face, not the fallback",
          std::abs(width - systemWidth) > 1.0,
          Numbers::fixed(width, 1) + " pt vs " + Numbers::fixed(systemWidth, 1) + " pt system");
  }

  bool allPassed_ = true;
};

} // namespace

bool BrandCheck::run() {
  return Run().gates();
}

} // namespace velto
