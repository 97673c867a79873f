// The page as a whole.
#include "ReportPage.h"

#include "ReportRecords.h"
#include "StyleSheet.h"
#include "kit/Command.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace velto {
namespace {

using testing::anyStored;
using testing::practised;
using testing::put;
using testing::reported;
using testing::reportTime;
using testing::row;
using testing::ScopedTimeZone;
using testing::ScratchFolder;

// A record whose roll-up holds old answers.
Stored rolled() {
  Stored record = practised(3, 30);
  record.lifetime[5] = {.attempts = 100000, .hits = 40000, .errorSum = 90000};
  return record;
}

std::map<std::string, Stored> records() {
  Stored one;
  one.attempts.push_back(row(Drill::frequency, 14, true, 0, reportTime()));
  return {{"empty", {}},
          {"one answer", one},
          {"a day", practised(1, 160)},
          {"5000 answers", practised(100, 50)},
          {"roll-up", rolled()}};
}

std::string errorsOf(const std::string& command, const std::string& page) {
  const ScratchFolder folder;
  put(folder.path() / "page.html", page);
  const auto result =
      kit::runCommand(command + " '" + (folder.path() / "page.html").string() + "' 2>&1");
  return result.status == 0 ? "" : "status " + std::to_string(result.status) + "\n" + result.output;
}

std::string xmlErrors(const std::string& page) {
  return errorsOf("xmllint --nonet --noout", page);
}

TEST(ReportPage, IsValidHTMLAndXML) {
  for (const auto& [name, record] : records()) {
    const std::string page = reportPage(reported(record));
    EXPECT_EQ(xmlErrors(page), "") << name;
    EXPECT_EQ(errorsOf("tidy -quiet -errors --drop-empty-elements no", page), "") << name;
  }
}

RC_GTEST_PROP(ReportPageLaw, AnyRecordGivesAPage, ()) {
  const Stored record = anyStored();
  const Date now{*testing::finiteDouble()};
  const std::string page = reportPage(ReportData::of(record, now, SeedSource::spread));
  RC_ASSERT(page.find("nan") == std::string::npos);
  RC_ASSERT(page.find("\"inf") == std::string::npos);
  RC_ASSERT(page.find("-inf") == std::string::npos);
  // No text is longer than a plausible number makes it.
  const std::regex digits("[0-9]{12}");
  RC_ASSERT(!std::regex_search(page, digits));
  RC_ASSERT(xmlErrors(page).empty());
}

TEST(ReportPage, LoadsNothingAndRunsNothing) {
  for (const auto& [name, record] : records()) {
    const std::string page = reportPage(reported(record));
    for (const char* part : {"://", "<script", "<link", "<img", "<iframe", "<object", "<base",
                             "src=", "href", "url(", "@import", "javascript:", "http-equiv"})
      EXPECT_EQ(page.find(part), std::string::npos) << name << ": " << part;
    EXPECT_FALSE(std::regex_search(page, std::regex("\\son[a-z]+=")));
  }
}

TEST(ReportPage, IsTheSameEachTime) {
  const Stored record = practised(20, 40);
  EXPECT_EQ(reportPage(reported(record)), reportPage(reported(record)));
  EXPECT_NE(reportPage(reported(record)),
            reportPage(ReportData::of(record, testing::local(2026, 11, 23), SeedSource::spread)));
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

TEST(ReportPage, DescribesEveryPlotInWords) {
  const std::string page = reportPage(reported(practised(12, 40)));
  EXPECT_EQ(countOf(page, "<svg "), 10U);
  EXPECT_EQ(countOf(page, "<figcaption>"), 10U);
  const std::regex plot("<svg [^>]*role=\"img\"[^>]*><title>([^<]+)</title><desc>[^<]+</desc>");
  std::set<std::string> titles;
  for (auto at = std::sregex_iterator(page.begin(), page.end(), plot); at != std::sregex_iterator();
       ++at)
    EXPECT_TRUE(titles.insert((*at)[1]).second) << (*at)[1];
  EXPECT_EQ(titles.size(), 10U);
}

// All words of a plot have a class that gives them a colour with enough contrast.
TEST(ReportPage, ColoursAllTextOfItsPlots) {
  const std::string page = reportPage(reported(practised(12, 40)));
  const std::regex classes("<text class=\"(\\w+)\"");
  std::set<std::string> found;
  for (auto at = std::sregex_iterator(page.begin(), page.end(), classes);
       at != std::sregex_iterator(); ++at)
    found.insert((*at)[1]);
  EXPECT_EQ(found, (std::set<std::string>{"count", "name", "tick"}));
  EXPECT_EQ(countOf(page, "<text "), countOf(page, "<text class="));
}

// The words without the drawings still hold every figure of the record.
TEST(ReportPage, CanBeReadWithoutItsDrawings) {
  const std::string page = reportPage(reported(rolled()));
  std::string words;
  for (std::size_t at = 0; at != page.npos;) {
    const std::size_t drawing = page.find("<svg ", at);
    words += page.substr(at, drawing - at);
    at = drawing == page.npos ? drawing : page.find("</svg>", drawing);
  }
  for (const char* part :
       {"What to practise next", ">125<", ">100", "you heard it half of the time",
        "Your mean error is", "Difficulty over", "2026-11", "3\u00A0days"})
    EXPECT_NE(words.find(part), std::string::npos) << part;
}

// The parts of `text` that a pattern's first group captures.
std::vector<std::string> captured(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  std::vector<std::string> parts;
  for (auto at = std::sregex_iterator(text.begin(), text.end(), regex);
       at != std::sregex_iterator(); ++at)
    parts.push_back((*at)[1]);
  return parts;
}

// The width in em of a table whose cells do not wrap, except between the words of its heads. A
// character of a sans-serif face is 0.62 em wide at most, on average.
double widthOf(const std::string& table) {
  std::vector<std::size_t> longest;
  for (const std::string& row : captured(table, "<tr>(.*?)</tr>")) {
    std::size_t column = 0;
    const bool isHead = row.starts_with("<th>") || row.starts_with("<th scope=\"col\"");
    for (std::string cell : captured(row, "<t[hd][^>]*>([^<]*)<")) {
      std::size_t length = 0, word = 0;
      for (const char byte : cell) {
        const bool isContinued = (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
        word = isHead && byte == ' ' ? 0 : word + (isContinued ? 0 : 1);
        length = std::max(length, word);
      }
      longest.resize(std::max(longest.size(), column + 1));
      longest[column] = std::max(longest[column], length);
      ++column;
    }
  }
  double characters = 0;
  for (const std::size_t length : longest)
    characters += static_cast<double>(length);
  EXPECT_GE(longest.size(), 5U) << table;
  return 0.62 * characters;
}

// On a phone of 360 points there are 298 between the paddings of page and section.
TEST(ReportPage, FitsAPhone) {
  constexpr double room = 360 - 2 * 16 - 2 * (14 + 1), cellPadding = 2 * 3, fontSize = 12;
  const std::string css = StyleSheet::text(), screen = css.substr(0, css.find("@media print"));
  for (const char* rule :
       {"main{max-width:1080px;margin:0 auto;padding:20px 16px 32px}",
        "padding:14px;margin:0 0 14px",
        "@media screen and (max-width:719px){\ntable{font-size:12px}th,td{padding:3px}",
        "@media (min-width:720px){.pair{grid-template-columns:repeat(2,minmax(0,1fr))}}",
        ".pair{display:grid;grid-template-columns:minmax(0,1fr)"})
    EXPECT_NE(screen.find(rule), std::string::npos) << rule;
  for (const std::string& width : captured(screen, "[{;](?:min-)?width:([^;}]*)"))
    EXPECT_EQ(width, "100%");

  for (const auto& [name, record] : records()) {
    const std::string page = reportPage(reported(record));
    for (const char* part : {" style=", "<svg width", "<svg height", "<pre", "<table width"})
      EXPECT_EQ(page.find(part), std::string::npos) << name << ": " << part;
    for (const std::string& table : captured(page, "<table>(.*?)</table>")) {
      const auto columns = captured(table.substr(0, table.find("</tr>")), "(<th)").size();
      EXPECT_LE(widthOf(table) * fontSize + static_cast<double>(columns) * cellPadding, room)
          << name << ": " << table;
    }
  }
}

// The paper's rules come last, so that they also win over those of a dark desktop.
TEST(StyleSheet, HasRulesForPaper) {
  const std::string css = StyleSheet::text();
  const std::size_t print = css.find("@media print{");
  ASSERT_NE(print, css.npos);
  EXPECT_GT(print, css.rfind("prefers-color-scheme:dark"));
  EXPECT_GT(print, css.rfind("@media screen"));
  const std::string paper = css.substr(print);
  for (const char* rule : {":root{color-scheme:light;--bg:#ffffff;", "@page{size:A4;margin:10mm}",
                           "break-inside:avoid", "main{max-width:none;padding:0}"})
    EXPECT_NE(paper.find(rule), std::string::npos) << rule;
}

TEST(ReportPage, SaysWhichTrialsItTakesThemFor) {
  const Stored record = practised(2, 20);
  EXPECT_NE(reportPage(reported(record, SeedSource::spread)).find("of velto <code>--fair</code>."),
            std::string::npos);
  EXPECT_NE(
      reportPage(reported(record, SeedSource::clock)).find("of velto without <code>--fair</code>."),
      std::string::npos);
}

TEST(ReportPage, CountsLocalDays) {
  Stored record;
  record.attempts.push_back(row(Drill::level, {}, true, 0, testing::utc(2026, 11, 21, 23, 30)));
  const auto pageIn = [&record](const char* zone) {
    const ScopedTimeZone scope(zone);
    return reportPage(ReportData::of(record, testing::utc(2026, 11, 22, 12), SeedSource::spread));
  };
  EXPECT_NE(pageIn("UTC").find("<title>2026-11-21: 1\u00A0"), std::string::npos);
  EXPECT_NE(pageIn("CET-1").find("<title>2026-11-22: 1\u00A0"), std::string::npos);
}

} // namespace
} // namespace velto
