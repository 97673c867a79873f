// The contrast of the palettes' colours, and the window without colour. Checks that the list of
// weak pairs in Documentation/accessibility.md matches the palettes.

#include "kit/Seen.h"

#include "Theme.h"

#include <QFile>

#include <cmath>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

// Relative luminance and contrast as WCAG 2 defines them, of opaque sRGB colours.
double luminance(const QColor& color) {
  const auto linear = [](double c) {
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

double contrast(const QColor& a, const QColor& b) {
  const double x = luminance(a), y = luminance(b);
  return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

struct Pairing {
  const char* color;
  const char* ground;
  const char* where;
  bool isText;
  QColor top;    // with its opacity
  QColor bottom; // opaque
};

// The window's texts on their backgrounds, and its meaningful graphics and outlines.
std::vector<Pairing> pairings(const Palette& p) {
  const auto faded = [](QColor c, double opacity) { return at(c, opacity); };
  const QColor hit = over(faded(p.good, 0.1), p.surface);
  const QColor miss = over(faded(p.bad, 0.08), p.surface);
  const QColor pressed = over(faded(p.ink, 0.7), p.surface);
  return {
      {"ink", "bg", "wordmark, figures", true, p.ink, p.bg},
      {"ink", "surface", "prompt, difficulty, slots, materials", true, p.ink, p.surface},
      {"ink", "selectedFill", "chosen drill, slot, material", true, p.ink, p.selectedFill},
      {"ink", "soft", "marker of the truth", true, p.ink, p.soft},
      {"ink", "good at 10 %", "the verdict's detail", true, p.ink, hit},
      {"ink", "bad at 8 %", "the verdict's detail", true, p.ink, miss},
      {"bg", "ink", "enabled primary button", true, p.bg, p.ink},
      {"bg", "ink at 70 %", "pressed primary button", true, p.bg, pressed},
      {"muted", "bg", "other drills, weakest band", true, p.muted, p.bg},
      {"muted", "surface", "status, scale labels, slot captions", true, p.muted, p.surface},
      {"muted", "selectedFill", "caption of the chosen slot", true, p.muted, p.selectedFill},
      {"muted", "soft", "disabled primary button", true, p.muted, p.soft},
      {"faint", "bg", "captions of the side panel, key hint", true, p.faint, p.bg},
      {"faint", "surface", "\"DIFFICULTY\", \"space = switch\"", true, p.faint, p.surface},
      {"identity", "bg", "subtitle", true, p.identity, p.bg},
      {"signal", "soft", "marker of the answer", true, p.signal, p.soft},
      {"signal at 45 %", "soft", "marker of the answer, graded", true, faded(p.signal, 0.45),
       p.soft},
      {"good", "good at 10 %", "\"HIT\"", true, p.good, hit},
      {"bad", "bad at 8 %", "\"MISS\"", true, p.bad, miss},
      {"good", "selectedFill", "\"FLIPPED\"", true, p.good, p.selectedFill},
      {"identity", "selectedFill", "dot of the chosen drill", false, p.identity, p.selectedFill},
      {"faint", "bg", "dots of the other drills", false, p.faint, p.bg},
      {"muted", "soft", "major ticks", false, p.muted, p.soft},
      {"faint at 55 %", "soft", "minor ticks of frequency", false, faded(p.faint, 0.55), p.soft},
      {"faint at 50 %", "soft", "minor ticks of decibels", false, faded(p.faint, 0.5), p.soft},
      {"ink at 55 %", "surface", "outline of a chosen control", false, faded(p.ink, 0.55),
       p.surface},
      {"line", "surface", "outlines", false, p.line, p.surface},
      {"line", "bg", "outlines, hairlines, divider", false, p.line, p.bg},
      {"track", "surface", "empty part of the difficulty bar", false, p.track, p.surface},
      {"track", "bg", "bands without answers", false, p.track, p.bg},
      {"control", "bg", "difficulty curve", false, p.control, p.bg},
      {"good", "bg", "strong bands", false, p.good, p.bg},
      {"warn", "bg", "bands between", false, p.warn, p.bg},
      {"bad", "bg", "weak bands", false, p.bad, p.bg},
      {"ink", "bg", "focus ring", false, p.ink, p.bg},
      {"ink", "surface", "focus ring", false, p.ink, p.surface},
  };
}

// The document's rows: the pairs below 4.5.
QString weakRows() {
  QString rows;
  for (const Palette& palette : {Palette::dark(), Palette::light()})
    for (const bool isText : {true, false})
      for (const Pairing& pair : pairings(palette)) {
        const double ratio = contrast(over(pair.top, pair.bottom), pair.bottom);
        if (pair.isText == isText && ratio < 4.5)
          rows += QStringLiteral("| %1 | %2 | `%3` on `%4` | %5 | %6 |\n")
                      .arg(palette.isDark ? "dark" : "light", isText ? "text" : "graphic",
                           pair.color, pair.ground, pair.where, QString::number(ratio, 'f', 2));
      }
  return rows;
}

// The most frequent colour of an item.
QColor groundOf(const Picture& picture, const QQuickItem* item) {
  const QRectF box = Stage::box(item);
  const double s = picture.scale();
  std::unordered_map<QRgb, int> counts;
  for (int y = static_cast<int>(std::ceil(box.top() * s)); y < box.bottom() * s - 1; ++y)
    for (int x = static_cast<int>(std::ceil(box.left() * s)); x < box.right() * s - 1; ++x)
      ++counts[picture.pixel(x, y).rgb()];
  const auto most = std::max_element(counts.begin(), counts.end(),
                                     [](auto& a, auto& b) { return a.second < b.second; });
  return most == counts.end() ? QColor() : QColor(most->first);
}

void forEachText(QQuickItem* from, const std::function<void(QQuickItem*)>& visit) {
  for (QQuickItem* child : from->childItems()) {
    if (!child->isVisible())
      continue;
    if (child->inherits("QQuickText") && !child->property("text").toString().isEmpty())
      visit(child);
    forEachText(child, visit);
  }
}

} // namespace

TEST(Contrast, MatchesKnownRatios) {
  EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 1e-9);
  EXPECT_NEAR(contrast("#777777", "#FFFFFF"), 4.48, 0.005);
  EXPECT_NEAR(contrast("#0000FF", "#FFFFFF"), 8.59, 0.005);
  EXPECT_NEAR(contrast("#FF0000", "#FF0000"), 1, 1e-9);
}

TEST(Contrast, PairsBelow4_5AreListedInTheDocument) {
  QFile file(QStringLiteral(VELTO_DOCUMENTATION "/accessibility.md"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  QString listed;
  for (const QString& line : QString::fromUtf8(file.readAll()).split('\n'))
    if (line.startsWith("| dark") || line.startsWith("| light"))
      listed += line + '\n';
  EXPECT_EQ(listed.toStdString(), weakRows().toStdString());
}

// Checks that every text of the window, on its background, is in the list above.
TEST(Contrast, PairingsIncludeEveryTextOfTheWindow) {
  enum class State { ungraded, hit, miss };
  for (const bool dark : {true, false})
    for (const Drill drill : Drill::allCases) {
      Stage stage(drill, dark);
      for (const State state : {State::ungraded, State::hit, State::miss}) {
        if (state == State::miss)
          stage.session.newTrial();
        if (state == State::ungraded)
          stage.settle();
        else
          stage.grade(state == State::hit);
        const Picture picture(stage.picture());
        const auto known = pairings(dark ? Palette::dark() : Palette::light());
        int texts = 0;
        forEachText(stage.root(), [&](QQuickItem* text) {
          ++texts;
          const auto color = text->property("color").value<QColor>();
          const QColor ground = groundOf(picture, text);
          EXPECT_TRUE(std::any_of(known.begin(), known.end(),
                                  [&](const Pairing& pair) {
                                    return pair.isText &&
                                           difference(pair.top, color) <= hueTolerance &&
                                           difference(pair.bottom, ground) <= hueTolerance;
                                  }))
              << text->property("text").toString().toStdString() << ": "
              << color.name(QColor::HexArgb).toStdString() << " on " << ground.name().toStdString();
        });
        EXPECT_GE(texts, 25);
      }
    }
}

namespace {

// A window in which all accents are ink and choices have the card's fill: only shape, weight, size
// and words distinguish its states.
struct Uncoloured : Stage {
  explicit Uncoloured(Drill drill, const Earlier& earlier = {})
      : Stage(drill, true, {1180, 386}, earlier) {
    Palette palette = Palette::dark();
    palette.identity = palette.signal = palette.control = palette.ink;
    palette.good = palette.warn = palette.bad = palette.ink;
    palette.selectedFill = palette.surface;
    palette.muted = palette.faint = palette.ink;
    qobject_cast<Theme*>(qmlAttachedPropertiesObject<Theme>(root(), true))->setPalette(palette);
    settle();
  }

  // The picture of one item.
  [[nodiscard]] QImage pictureOf(const QString& name) {
    const QRectF area = box(name);
    const QImage whole = picture();
    const double s = whole.devicePixelRatio();
    return whole.copy(QRectF(area.topLeft() * s, area.size() * s).toAlignedRect());
  }
};

} // namespace

TEST(WithoutColour, ChoicesRemainDistinguishable) {
  Uncoloured stage(Drill::polarity);
  const QImage drill = stage.pictureOf("drill3"), other = stage.pictureOf("drill0");
  const QImage slot = stage.pictureOf("slot0"), material = stage.pictureOf("material2");
  const QImage choice = stage.pictureOf("slotChoice1");
  stage.session.select(1);
  EXPECT_NE(stage.pictureOf("slot0"), slot);
  stage.session.setAnswer(1);
  EXPECT_NE(stage.pictureOf("slotChoice1"), choice);
  stage.session.setMaterial(Material::drums);
  EXPECT_NE(stage.pictureOf("material2"), material);
  stage.session.setDrill(Drill::frequency);
  EXPECT_NE(stage.pictureOf("drill3"), drill);
  EXPECT_NE(stage.pictureOf("drill0"), other);
  // Selected labels are also bolder.
  const auto bold = [&](const char* name) {
    return stage.item(QString::fromLatin1(name))->property("font").value<QFont>().weight();
  };
  EXPECT_GT(bold("drillLabel0"), bold("drillLabel1"));
  EXPECT_GT(bold("slotLabel0"), bold("slotLabel1"));
  EXPECT_GT(bold("materialLabel0"), bold("materialLabel1"));
}

TEST(WithoutColour, HitMissAndFlippedSlotRemainDistinguishable) {
  Uncoloured stage(Drill::polarity);
  stage.grade(true);
  const auto flipped = stage.session.trial()->oddSlot;
  const auto captionOf = [&](std::int64_t slot) {
    return stage.item(QStringLiteral("slotCaption%1").arg(slot))->property("text").toString();
  };
  EXPECT_EQ(captionOf(flipped), "FLIPPED");
  EXPECT_EQ(captionOf((flipped + 1) % 3), "in phase");
  EXPECT_EQ(stage.item("verdictWord")->property("text").toString(), "HIT");
  stage.session.newTrial();
  stage.grade(false);
  EXPECT_EQ(stage.item("verdictWord")->property("text").toString(), "MISS");
  // The chosen slot has a dot, the flipped one its caption.
  const auto chosen = static_cast<int>(stage.session.answer());
  EXPECT_NE(stage.find(QStringLiteral("slotDot%1").arg(chosen)), nullptr);
  EXPECT_EQ(stage.find(QStringLiteral("slotDot%1").arg(stage.session.trial()->oddSlot)), nullptr);
}

TEST(WithoutColour, MarkersAndDisabledButtonsRemainDistinguishable) {
  Uncoloured stage(Drill::frequency);
  stage.grade(false);
  EXPECT_EQ(stage.find("answerMarkerActual"), nullptr);
  EXPECT_EQ(stage.item("truthMarkerActual")->property("text").toString(), "ACTUAL");
  stage.session.setDrill(Drill::polarity);
  stage.settle();
  const QImage disabled = stage.pictureOf("primaryButton");
  stage.session.setAnswer(0);
  const QImage enabled = stage.pictureOf("primaryButton");
  // An enabled button has dark text on a light fill, a disabled one light text on a dark fill.
  const auto lightness = [](const QImage& image) {
    return image.pixelColor(image.width() / 2, 4).lightnessF();
  };
  EXPECT_GT(lightness(enabled) - lightness(disabled), 0.5F);
}

TEST(WithoutColour, WeakAndStrongBandsDifferInHeight) {
  const Uncoloured stage(Drill::frequency, [](Profile& profile) {
    const auto answer = [&](double target, double octaves) {
      const Trial trial{.drill = Drill::frequency, .difficulty = 40, .targetFreq = target};
      for (int i = 0; i < 3; ++i)
        profile.record(trial, Drills::grade(target * std::exp2(octaves), trial));
    };
    answer(100, 0);
    answer(1000, 0.6);
    answer(4000, 1.2);
  });
  const auto height = [&](int band) {
    return stage.item(QStringLiteral("bar%1").arg(band))->property("barHeight").toDouble();
  };
  EXPECT_LT(height(0), height(4)) << "a band without answers and one without errors";
  EXPECT_LT(height(4), height(14)) << "100 Hz and 1 kHz";
  EXPECT_LT(height(14), height(20)) << "1 kHz and 4 kHz";
  EXPECT_TRUE(stage.item("weakestText")->property("text").toString().startsWith("weakest · 4k Hz"));
}
