// The colours of the page: text on its grounds, in all three sets, read from the style sheet.
#include "PageColors.h"

#include "StyleSheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace velto {
namespace {

using Variables = std::map<std::string, PageColor>;

// Relative luminance and contrast as WCAG 2 defines them.
double luminance(PageColor color) {
  const auto linear = [color](int shift) {
    const double c = static_cast<double>(color >> shift & 0xFFU) / 255;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(16) + 0.7152 * linear(8) + 0.0722 * linear(0);
}

double contrast(PageColor a, PageColor b) {
  const double x = luminance(a), y = luminance(b);
  return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
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
      all.at(count)[(*one)[1]] = static_cast<PageColor>(std::stoul((*one)[2], nullptr, 16));
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

TEST(PageColors, GiveTextAContrastOfFourAndAHalf) {
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
      EXPECT_GE(contrast(colors.at(ink),
                         PageColors::mixed(colors.at("surface"), colors.at("signal"), veil)),
                4.5)
          << ink << " on an interval";
    }
}

// Lines and marks that carry a figure: 3, as WCAG 2 asks of graphics.
TEST(PageColors, GiveMarksAContrastOfThree) {
  for (const Variables& colors : sets())
    for (const char* name : {"signal", "control", "ink", "muted", "w0", "w5", "w10", "d4"})
      EXPECT_GE(contrast(colors.at(name), colors.at("surface")), 3) << name;
}

TEST(PageColors, Mix) {
  EXPECT_EQ(PageColors::mixed(0x000000, 0xFFFFFF, 0.5), 0x808080U);
  EXPECT_EQ(PageColors::mixed(0x102030, 0x405060, -1), 0x102030U);
  EXPECT_EQ(PageColors::mixed(0x102030, 0x405060, 2), 0x405060U);
  EXPECT_EQ(PageColors::mixed(0x102030, 0x405060, 0.25), 0x1C2C3CU);
  EXPECT_EQ(PageColors::text(0x0B0C0F), "#0b0c0f");
}

TEST(PageColors, GoFromStrongToWeak) {
  const PageColors& colors = PageColors::dark();
  EXPECT_EQ(colors.weakness(0), colors.good);
  EXPECT_EQ(colors.weakness(0.5), colors.warn);
  EXPECT_EQ(colors.weakness(1), colors.bad);
  EXPECT_EQ(colors.weakness(7), colors.bad);
}

TEST(StyleSheet, SortsBandsAndDays) {
  EXPECT_EQ(StyleSheet::weaknessClass(0), "w0");
  EXPECT_EQ(StyleSheet::weaknessClass(0.6), "w5");
  EXPECT_EQ(StyleSheet::weaknessClass(1.2), "w10");
  EXPECT_EQ(StyleSheet::weaknessClass(9), "w10");
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
