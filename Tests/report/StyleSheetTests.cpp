// The page's style sheet: its three sets of colours, text on its grounds, and classes.
#include "StyleSheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace velto {
namespace {

// Red, green and blue, 0 to 1.
using Color = std::array<double, 3>;
using Variables = std::map<std::string, Color>;

// Relative luminance and contrast as WCAG 2 defines them.
double luminance(const Color& color) {
  const auto linear = [&color](std::size_t part) {
    const double c = color.at(part);
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(0) + 0.7152 * linear(1) + 0.0722 * linear(2);
}

double contrast(const Color& a, const Color& b) {
  const double x = luminance(a), y = luminance(b);
  return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

// Of "0b0c0f".
Color colorOf(const std::string& digits) {
  Color color{};
  for (std::size_t part = 0; part < color.size(); ++part)
    color.at(part) = std::stoi(digits.substr(2 * part, 2), nullptr, 16) / 255.0;
  return color;
}

Color laidOver(const Color& top, double opacity, const Color& ground) {
  Color color{};
  for (std::size_t part = 0; part < color.size(); ++part)
    color.at(part) = ground.at(part) + opacity * (top.at(part) - ground.at(part));
  return color;
}

// The variables that each rule for :root sets, in order: light, dark, paper.
std::array<Variables, 3> sets() {
  const std::string css = StyleSheet::text();
  const std::regex rule(":root\\{([^}]*)\\}"), variable("--(\\w+):#([0-9a-f]{6});");
  std::array<Variables, 3> all;
  std::size_t count = 0;
  for (auto at = std::sregex_iterator(css.begin(), css.end(), rule); at != std::sregex_iterator();
       ++at) {
    const std::string body = (*at)[1];
    for (auto one = std::sregex_iterator(body.begin(), body.end(), variable);
         one != std::sregex_iterator(); ++one)
      all.at(count)[(*one)[1]] = colorOf((*one)[2]);
    ++count;
  }
  EXPECT_EQ(count, 3U);
  return all;
}

// The variables that `pattern` captures in the style sheet.
std::set<std::string> used(const char* pattern) {
  const std::string css = StyleSheet::text();
  const std::regex regex(pattern);
  std::set<std::string> names;
  for (auto at = std::sregex_iterator(css.begin(), css.end(), regex); at != std::sregex_iterator();
       ++at)
    names.insert((*at)[1]);
  return names;
}

TEST(StyleSheet, GivesTextAContrastOfFourAndAHalf) {
  // What text is written in, and what it is written on.
  std::set<std::string> inks = used("[{;]color:var\\(--(\\w+)\\)");
  inks.merge(used("\\.tick,\\.name,\\.count\\{fill:var\\(--(\\w+)\\)"));
  const std::set<std::string> grounds = used("background:var\\(--(\\w+)\\)");
  EXPECT_EQ(inks, (std::set<std::string>{"ink", "muted"}));
  EXPECT_EQ(grounds, (std::set<std::string>{"bg", "surface"}));
  std::smatch opacity;
  const std::string css = StyleSheet::text();
  ASSERT_TRUE(std::regex_search(
      css, opacity, std::regex("\\.interval\\{fill:var\\(--signal\\);opacity:\\.(\\d+)")));
  const double veil = std::stoi(opacity[1]) / std::pow(10, opacity.length(1));
  for (const Variables& colors : sets())
    for (const std::string& ink : inks) {
      for (const std::string& ground : grounds)
        EXPECT_GE(contrast(colors.at(ink), colors.at(ground)), 4.5) << ink << " on " << ground;
      // Labels of a plot may lie on an interval.
      EXPECT_GE(contrast(colors.at(ink), laidOver(colors.at("signal"), veil, colors.at("surface"))),
                4.5)
          << ink << " on an interval";
    }
}

// Lines and marks that carry a figure: 3, as WCAG 2 asks of graphics.
TEST(StyleSheet, GivesMarksAContrastOfThree) {
  for (const Variables& colors : sets())
    for (const char* name : {"signal", "control", "ink", "muted", "w0", "w5", "w10", "d4"})
      EXPECT_GE(contrast(colors.at(name), colors.at("surface")), 3) << name;
}

// The light palette's line is translucent in the window.
TEST(StyleSheet, HasColoursForScreenAndPaper) {
  const auto [light, dark, paper] = sets();
  EXPECT_EQ(light.at("bg"), colorOf("faf3ef"));
  EXPECT_EQ(light.at("line"), colorOf("dfd9d6"));
  EXPECT_EQ(dark.at("bg"), colorOf("0b0c0f"));
  EXPECT_EQ(dark.at("line"), colorOf("26272e"));
  EXPECT_EQ(paper.at("bg"), colorOf("ffffff"));
  EXPECT_EQ(paper.at("surface"), colorOf("ffffff"));
  EXPECT_EQ(paper.at("ink"), light.at("ink"));
  EXPECT_EQ(dark.at("w0"), dark.at("good"));
  EXPECT_EQ(dark.at("w5"), colorOf("ff9f0a"));
  EXPECT_EQ(dark.at("w10"), dark.at("bad"));
  EXPECT_EQ(dark.at("d4"), dark.at("signal"));
}

TEST(StyleSheet, SortsBandsAndDays) {
  EXPECT_EQ(StyleSheet::weaknessClass(0), "w0");
  EXPECT_EQ(StyleSheet::weaknessClass(0.6), "w5");
  EXPECT_EQ(StyleSheet::weaknessClass(1.2), "w10");
  EXPECT_EQ(StyleSheet::weaknessClass(9), "w10");
  EXPECT_EQ(StyleSheet::weaknessClass(std::nan("")), "w10");
  EXPECT_EQ(StyleSheet::dayClass(0), "d0");
  EXPECT_EQ(StyleSheet::dayClass(1), "d1");
  EXPECT_EQ(StyleSheet::dayClass(19), "d1");
  EXPECT_EQ(StyleSheet::dayClass(20), "d2");
  EXPECT_EQ(StyleSheet::dayClass(49), "d2");
  EXPECT_EQ(StyleSheet::dayClass(50), "d3");
  EXPECT_EQ(StyleSheet::dayClass(99), "d3");
  EXPECT_EQ(StyleSheet::dayClass(100), "d4");
}

} // namespace
} // namespace velto
