// Reads pictures of the window and compares them with the expected look.
#pragma once

#include "Stage.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QRawFont>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

// Readable failure messages.
inline void PrintTo(const QColor& color, std::ostream* out) {
  *out << color.name(QColor::HexArgb).toStdString();
}
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QRectF& rect, std::ostream* out) {
  *out << rect.x() << ',' << rect.y() << ' ' << rect.width() << 'x' << rect.height();
}

namespace velto::kit {

// The tests' own copy of a palette.
struct Hues {
  QColor bg, surface, soft, ink, muted, faint, line, identity, signal, control, selectedFill, track,
      good, warn, bad;
};

inline const Hues darkHues{
    .bg = "#0B0C0F",
    .surface = "#121318",
    .soft = "#17181E",
    .ink = "#F0F1F4",
    .muted = "#9B9FAB",
    .faint = "#646975",
    .line = "#26272E",
    .identity = "#FF453A",
    .signal = "#00A7C8",
    .control = "#6E7580",
    .selectedFill = "#1D2733",
    .track = "#1F2129",
    .good = "#30D158",
    .warn = "#FF9F0A",
    .bad = "#E74C3C",
};

inline const Hues lightHues{
    .bg = "#FAF3EF",
    .surface = "#FFFBF6",
    .soft = "#F1E7DF",
    .ink = "#1B1D22",
    .muted = "#6F665D",
    .faint = "#9A8F84",
    .line = QColor(0x1B, 0x1D, 0x22, 31), // 12 %
    .identity = "#D6342A",
    .signal = "#007A97",
    .control = "#8A8078",
    .selectedFill = "#E7EEF1",
    .track = "#E8DDD4",
    .good = "#248A3D",
    .warn = "#B25000",
    .bad = "#C0392B",
};

[[nodiscard]] inline QColor at(QColor color, double opacity) {
  color.setAlphaF(color.alphaF() * static_cast<float>(opacity));
  return color;
}

// `top` blended over the opaque `ground`.
[[nodiscard]] inline QColor over(const QColor& top, const QColor& ground) {
  const float a = top.alphaF();
  const auto blend = [a](float x, float y) { return a * x + (1 - a) * y; };
  return QColor::fromRgbF(blend(top.redF(), ground.redF()), blend(top.greenF(), ground.greenF()),
                          blend(top.blueF(), ground.blueF()));
}

// Largest difference of a channel, 0 to 255.
[[nodiscard]] inline int difference(const QColor& a, const QColor& b) {
  return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                   std::abs(a.blue() - b.blue()), std::abs(a.alpha() - b.alpha())});
}

// A grabbed window with its pixels addressed in points.
class Picture {
public:
  explicit Picture(const QImage& image)
      : image_(image.convertToFormat(QImage::Format_RGB32)), scale_(image.devicePixelRatio()) {}

  [[nodiscard]] double scale() const { return scale_; }
  [[nodiscard]] QSize pixels() const { return image_.size(); }
  [[nodiscard]] QColor pixel(int x, int y) const { return image_.pixelColor(x, y); }

  // The pixel that contains `point`.
  [[nodiscard]] QColor colorAt(QPointF point) const {
    return pixel(static_cast<int>(std::floor(point.x() * scale_ + 1e-6)),
                 static_cast<int>(std::floor(point.y() * scale_ + 1e-6)));
  }

  // Sum of the shares of `color` in the pixels along `step` from `start`: the thickness in pixels
  // of a line of that colour.
  [[nodiscard]] double thickness(QPoint start, QPoint step, int count, const QColor& ground,
                                 const QColor& color) const {
    double sum = 0;
    for (int i = 0; i < count; ++i)
      sum += share(pixel(start.x() + i * step.x(), start.y() + i * step.y()), ground, color);
    return sum;
  }

  // Share of `color` in a pixel blended with `ground`, by the channel in which the two differ most.
  [[nodiscard]] static double share(const QColor& pixel, const QColor& ground,
                                    const QColor& color) {
    const std::array from{ground.red(), ground.green(), ground.blue()};
    const std::array to{color.red(), color.green(), color.blue()};
    const std::array is{pixel.red(), pixel.green(), pixel.blue()};
    std::size_t best = 0;
    for (std::size_t i = 1; i < 3; ++i)
      if (std::abs(to[i] - from[i]) > std::abs(to[best] - from[best]))
        best = i;
    return static_cast<double>(is[best] - from[best]) / (to[best] - from[best]);
  }

private:
  QImage image_;
  double scale_;
};

// Tolerance per channel for rounding in blended colours.
inline constexpr int hueTolerance = 2;

inline void expectColor(const QColor& seen, const QColor& expected, const char* what) {
  EXPECT_LE(difference(seen, expected), hueTolerance)
      << what << " is " << seen.name(QColor::HexArgb).toStdString() << " instead of "
      << expected.name(QColor::HexArgb).toStdString();
}

inline void expectRect(const QRectF& seen, const QRectF& expected, double tolerance = 0.01) {
  const bool same = std::abs(seen.x() - expected.x()) <= tolerance &&
                    std::abs(seen.y() - expected.y()) <= tolerance &&
                    std::abs(seen.width() - expected.width()) <= tolerance &&
                    std::abs(seen.height() - expected.height()) <= tolerance;
  EXPECT_TRUE(same) << testing::PrintToString(seen) << " instead of "
                    << testing::PrintToString(expected);
}

// Weights of a face as its file states them, which is the same in every release of it. The names of
// its styles are not: "Semi Bold", "SemiBold".
inline constexpr int regular = 400, medium = 500, semibold = 600, bold = 700;

[[nodiscard]] inline int weightOf(const QRawFont& face) {
  const QByteArray table = face.fontTable("OS/2");
  constexpr qsizetype weightClass = 4; // its offset
  if (table.size() < weightClass + 2)
    return 0;
  const auto byte = [&](qsizetype at) { return static_cast<unsigned char>(table[at]); };
  return byte(weightClass) * 256 + byte(weightClass + 1);
}

// A text item and its background.
struct ExpectedText {
  QString text;
  QString family;
  int weight = regular;
  int size = 12;
  double tracking = 0;
  QColor color;  // with its opacity
  QColor ground; // opaque
};

// Checks a text item's properties, then looks for the text in the picture.
inline void expectText(QQuickItem* item, const Picture& picture, const ExpectedText& expected) {
  SCOPED_TRACE(item->objectName().toStdString());
  EXPECT_EQ(item->property("text").toString(), expected.text);
  const auto font = item->property("font").value<QFont>();
  const QRawFont face = QRawFont::fromFont(font);
  EXPECT_EQ(face.familyName(), expected.family);
  EXPECT_EQ(weightOf(face), expected.weight);
  EXPECT_EQ(font.pixelSize(), expected.size);
  EXPECT_NEAR(font.letterSpacing(), expected.tracking, 1.0 / 64) << "kept in 64ths";
  expectColor(item->property("color").value<QColor>(), expected.color, "the text's colour");

  EXPECT_FALSE(item->property("truncated").toBool());
  EXPECT_LE(item->property("contentWidth").toDouble(), item->width() + 0.01) << "cut off";

  // Every pixel is a blend of background and colour, and strokes reach most of the colour.
  const QColor full = over(expected.color, expected.ground);
  const QRectF box = Stage::box(item);
  const double s = picture.scale();
  double most = 0;
  int strangers = 0;
  for (int y = static_cast<int>(std::ceil(box.top() * s)); y < box.bottom() * s - 1; ++y)
    for (int x = static_cast<int>(std::ceil(box.left() * s)); x < box.right() * s - 1; ++x) {
      const QColor pixel = picture.pixel(x, y);
      most = std::max(most, Picture::share(pixel, expected.ground, full));
      const auto outside = [](int value, int a, int b) {
        return value < std::min(a, b) - hueTolerance || value > std::max(a, b) + hueTolerance;
      };
      if (outside(pixel.red(), expected.ground.red(), full.red()) ||
          outside(pixel.green(), expected.ground.green(), full.green()) ||
          outside(pixel.blue(), expected.ground.blue(), full.blue()))
        ++strangers;
    }
  EXPECT_GE(most, 0.6) << "not drawn in its colour";
  EXPECT_LE(most, 1.1) << "drawn in another colour";
  EXPECT_EQ(strangers, 0) << "pixels that are not a blend of text and background";
}

// An outlined or filled box.
struct ExpectedBox {
  double radius = 0;
  bool continuous = false;
  QColor fill;   // with its opacity
  QColor stroke; // with its opacity; fully transparent for none
  double strokeWidth = 1;
  QColor ground;          // opaque
  QPointF probe = {0, 0}; // a point of the fill, from the box's top left corner
};

// Checks a box's properties, then its fill, outline and corners in the picture.
inline void expectBox(QQuickItem* item, const Picture& picture, const ExpectedBox& expected) {
  SCOPED_TRACE(item->objectName().toStdString());
  const QRectF box = Stage::box(item);
  EXPECT_NEAR(item->property("radius").toDouble(), expected.radius, 1e-9);
  EXPECT_EQ(item->property("continuous").toBool(), expected.continuous);
  const bool stroked = expected.stroke.alpha() > 0;
  if (stroked) {
    expectColor(item->property("strokeColor").value<QColor>(), expected.stroke, "the outline");
    EXPECT_NEAR(item->property("strokeWidth").toDouble(), expected.strokeWidth, 1e-9);
  } else {
    EXPECT_EQ(item->property("strokeColor").value<QColor>().alpha(), 0);
  }

  const double s = picture.scale();
  // Edges are rounded to whole pixels.
  const auto pixel = [s](double points) { return static_cast<int>(std::round(points * s)); };
  const QColor fill = over(expected.fill, expected.ground);
  expectColor(picture.colorAt(box.topLeft() + expected.probe), fill, "the fill");

  // Round upper corners show the ground; square ones would not.
  if (expected.radius * s >= 4)
    for (const int x : {pixel(box.left()), pixel(box.right()) - 1}) {
      const QColor square = stroked ? over(expected.stroke, fill) : fill;
      const QColor corner = picture.pixel(x, pixel(box.top()));
      if (difference(square, expected.ground) > 8) {
        EXPECT_LE(std::abs(Picture::share(corner, expected.ground, square)), 0.6)
            << "a corner is not round";
      }
    }

  if (!stroked)
    return;
  // The outline's thickness on all sides, away from the corners.
  const QColor line = over(expected.stroke, fill);
  const int depth = static_cast<int>(std::ceil(expected.strokeWidth * s)) + 1;
  const auto side = [&](double edge, double along, bool horizontal, bool inward) {
    const int e = pixel(edge) - (inward ? 0 : 1);
    const int a = static_cast<int>(std::floor(along * s));
    const int step = inward ? 1 : -1;
    const QPoint start = horizontal ? QPoint(a, e) : QPoint(e, a);
    const QPoint direction = horizontal ? QPoint(0, step) : QPoint(step, 0);
    EXPECT_NEAR(picture.thickness(start, direction, depth, fill, line), expected.strokeWidth * s,
                0.15 + 1.5 / std::max(1, difference(line, fill)))
        << (horizontal ? (inward ? "top" : "bottom") : (inward ? "left" : "right"));
  };
  const double x = box.left() + expected.probe.x();
  const double y = box.top() + expected.probe.y();
  side(box.left(), y, false, true);
  side(box.right(), y, false, false);
  side(box.top(), x, true, true);
  side(box.bottom(), x, true, false);
}

} // namespace velto::kit
