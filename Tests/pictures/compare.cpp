// velto_compare_pictures WINDOW OTHER [SHEETS]
//
// Compares the pictures of velto_window_states in the folder WINDOW with those of the same names in
// OTHER, which may be larger, and prints by how much they differ, from 0 to 255:
//
//   {"level-dark-hit-1001.png": {
//     "block": {"difference": 14.2, "at": [120, 96]},
//     "item": {"difference": 3.1, "at": "verdictDetail"},
//     "ground": {"difference": 0, "at": ""}}}
//
// Each renderer gives the outline of a glyph other pixels, but much the same ink. So means are
// compared, by the channel that differs most: of blocks of 8 by 8 pixels, which see a wrong shape,
// and of the rectangles of all items, which see a wrong weight. Beside them the colour that most
// pixels of an item have, which is the same in every renderer. Of each, the largest difference is
// printed.
//
// Into the folder SHEETS go sheets of both pictures, one above the other, and of their difference.
#include <QDir>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int side = 8; // of a block, in pixels

std::array<double, 3> meanOf(const QImage& image, const QRect& area) {
  std::array<double, 3> sum{};
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x) {
      const QRgb pixel = image.pixel(x, y);
      sum[0] += qRed(pixel);
      sum[1] += qGreen(pixel);
      sum[2] += qBlue(pixel);
    }
  for (double& part : sum)
    part /= area.width() * area.height();
  return sum;
}

double difference(const QImage& a, const QImage& b, const QRect& area) {
  const auto first = meanOf(a, area), second = meanOf(b, area);
  double most = 0;
  for (std::size_t i = 0; i < first.size(); ++i)
    most = std::max(most, std::abs(first[i] - second[i]));
  return most;
}

QJsonObject largestBlock(const QImage& a, const QImage& b) {
  double most = 0;
  QPoint place;
  // Overlapping, so that no edge of a block hides a difference.
  for (int y = 0; y + side <= a.height(); y += side / 2)
    for (int x = 0; x + side <= a.width(); x += side / 2)
      if (const double value = difference(a, b, {x, y, side, side}); value > most) {
        most = value;
        place = {x, y};
      }
  return {{QStringLiteral("difference"), most},
          {QStringLiteral("at"), QJsonArray{place.x(), place.y()}}};
}

// The colour that most pixels of an area have.
QRgb groundOf(const QImage& image, const QRect& area) {
  QHash<QRgb, int> counts;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x)
      ++counts[image.pixel(x, y)];
  QRgb found = 0;
  int most = 0;
  for (auto count = counts.cbegin(); count != counts.cend(); ++count)
    if (count.value() > most || (count.value() == most && count.key() > found)) {
      most = count.value();
      found = count.key();
    }
  return found;
}

double groundDifference(const QImage& a, const QImage& b, const QRect& area) {
  const QRgb first = groundOf(a, area), second = groundOf(b, area);
  return std::max({std::abs(qRed(first) - qRed(second)), std::abs(qGreen(first) - qGreen(second)),
                   std::abs(qBlue(first) - qBlue(second))});
}

using Measure = double(const QImage&, const QImage&, const QRect&);

QJsonObject largestItem(const QImage& a, const QImage& b, const QJsonObject& items,
                        Measure& measure) {
  double most = 0;
  QString name;
  for (auto item = items.begin(); item != items.end(); ++item) {
    const QJsonArray box = item.value().toArray();
    const QRectF rect(box[0].toDouble(), box[1].toDouble(), box[2].toDouble(), box[3].toDouble());
    const QRect area = rect.toAlignedRect() & a.rect();
    if (area.isEmpty())
      continue;
    if (const double value = measure(a, b, area); value > most) {
      most = value;
      name = item.key();
    }
  }
  return {{QStringLiteral("difference"), most}, {QStringLiteral("at"), name}};
}

QImage sheetOf(const QImage& a, const QImage& b) {
  QImage apart(a.size(), QImage::Format_RGB32);
  for (int y = 0; y < a.height(); ++y)
    for (int x = 0; x < a.width(); ++x) {
      const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
      apart.setPixel(x, y,
                     qRgb(std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                          std::abs(qBlue(p) - qBlue(q))));
    }
  QImage all(a.width(), 3 * a.height() + 2, QImage::Format_RGB32);
  all.fill(Qt::magenta);
  QPainter painter(&all);
  int top = 0;
  for (const QImage& image : {a, b, apart}) {
    painter.drawImage(0, top, image);
    top += a.height() + 1;
  }
  return all;
}

int compareAll(const QDir& window, const QDir& other, const QString& sheets) {
  QFile file(window.filePath(QStringLiteral("states.json")));
  if (!file.open(QIODevice::ReadOnly))
    return EXIT_FAILURE;
  QJsonObject result;
  for (const auto course : QJsonDocument::fromJson(file.readAll()).array())
    for (const auto step : course[QStringLiteral("steps")].toArray())
      for (const auto view : step[QStringLiteral("views")].toArray()) {
        const QString name = view[QStringLiteral("picture")].toString();
        if (!other.exists(name))
          continue;
        const QImage a = QImage(window.filePath(name)).convertToFormat(QImage::Format_RGB32);
        const QImage whole = QImage(other.filePath(name)).convertToFormat(QImage::Format_RGB32);
        if (a.isNull() || !whole.rect().contains(a.rect())) {
          std::fprintf(stderr, "%s cannot be read, or is too small\n", qPrintable(name));
          return EXIT_FAILURE;
        }
        const QImage b = whole.copy(a.rect());
        const QJsonObject items = view[QStringLiteral("items")].toObject();
        result.insert(
            name,
            QJsonObject{{QStringLiteral("block"), largestBlock(a, b)},
                        {QStringLiteral("item"), largestItem(a, b, items, difference)},
                        {QStringLiteral("ground"), largestItem(a, b, items, groundDifference)}});
        if (!sheets.isEmpty() && !sheetOf(a, b).save(QDir(sheets).filePath(name)))
          return EXIT_FAILURE;
      }
  std::puts(QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::fputs("usage: velto_compare_pictures WINDOW OTHER [SHEETS]\n", stderr);
    return EXIT_FAILURE;
  }
  return compareAll(QDir(QString::fromLocal8Bit(argv[1])), QDir(QString::fromLocal8Bit(argv[2])),
                    argc == 4 ? QString::fromLocal8Bit(argv[3]) : QString());
}
