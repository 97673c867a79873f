// The visible weight of text: how much ink a line has in each palette.

#include "kit/Snippet.h"

#include "desktop/Fonts.h"

#include <QFontDatabase>

#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

struct Type {
  const char* family;
  int size; // pixels at 1x
  QFont::Weight weight;
};

const char* const sans = "Inter";
const char* const mono = "JetBrains Mono";

// Every size and weight of the window.
const std::vector<Type> inUse{
    {sans, 8, QFont::Medium},    {sans, 9, QFont::Normal},    {sans, 9, QFont::Medium},
    {sans, 11, QFont::Normal},   {sans, 11, QFont::DemiBold}, {sans, 12, QFont::Normal},
    {sans, 12, QFont::DemiBold}, {sans, 12, QFont::Bold},     {sans, 13, QFont::DemiBold},
    {sans, 15, QFont::Normal},   {sans, 15, QFont::Bold},     {sans, 19, QFont::DemiBold},
    {sans, 22, QFont::DemiBold}, {mono, 8, QFont::Normal},    {mono, 8, QFont::Bold},
    {mono, 9, QFont::Normal},    {mono, 9, QFont::Medium},    {mono, 10, QFont::Normal},
    {mono, 10, QFont::Medium},   {mono, 24, QFont::Normal},   {mono, 24, QFont::Bold},
};

// A line of text in one palette's `ink` on its `surface`.
class Line {
public:
  explicit Line(bool dark)
      : hues_(dark ? darkHues : lightHues),
        snippet_(QByteArray("Rectangle { width: 500; height: 60; color: \"") +
                 hues_.surface.name().toLatin1() +
                 R"("; Label { objectName: "line"; x: 10; y: 10; color: ")" +
                 hues_.ink.name().toLatin1() +
                 R"("; text: "The quick brown fox, 3.15k Hz, HIT or MISS" } })") {}

  // Sums the share of the text's colour over all pixels.
  double ink(const Type& type) {
    QFont font(QString::fromLatin1(type.family));
    font.setPixelSize(type.size);
    font.setWeight(type.weight);
    snippet_.item("line")->setProperty("font", font);
    const Picture picture = snippet_.picture();
    double sum = 0;
    for (int y = 0; y < picture.pixels().height(); ++y)
      for (int x = 0; x < picture.pixels().width(); ++x)
        sum += Picture::share(picture.pixel(x, y), hues_.surface, hues_.ink);
    return sum;
  }

private:
  const Hues& hues_;
  Snippet snippet_;
};

void expectSameInk(const std::vector<Type>& types) {
  Line dark(true);
  Line light(false);
  for (const Type& type : types) {
    const double onDark = dark.ink(type);
    const double onLight = light.ink(type);
    EXPECT_GT(onLight, 20) << "hardly anything is drawn";
    EXPECT_NEAR(onDark / onLight, 1, 0.1)
        << type.family << ' ' << type.size << ' ' << static_cast<int>(type.weight);
  }
}

} // namespace

TEST(Ink, IsTheSameInBothPalettes) {
  expectSameInk(inUse);
}

// Cantarell has CFF outlines, DejaVu has TrueType ones.
TEST(Ink, IsTheSameInBothPalettesInOtherFaces) {
  for (const char* family : {"Cantarell", "DejaVu Sans", "DejaVu Sans Mono"}) {
    std::vector<Type> types = inUse;
    for (Type& type : types)
      type.family = family;
    expectSameInk(types);
  }
}

TEST(Ink, OfTheWordmarkIsTheSameInBothPalettes) {
  ASSERT_GE(QFontDatabase::addApplicationFont(BrandType::faceFile()), 0);
  expectSameInk({{BrandType::family, 19, QFont::Normal}, {BrandType::family, 22, QFont::Normal}});
}

TEST(Ink, GrowsWithTheWeight) {
  for (const bool dark : {true, false}) {
    Line line(dark);
    for (const Type& type : inUse) {
      double before = 0;
      for (const auto weight : {QFont::Normal, QFont::Medium, QFont::DemiBold, QFont::Bold}) {
        const double ink = line.ink({type.family, type.size, weight});
        EXPECT_GT(ink, before * 1.03) << type.family << ' ' << type.size << ' ' << weight;
        before = ink;
      }
    }
  }
}
