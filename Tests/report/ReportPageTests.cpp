// The page as a whole.
#include "ReportPage.h"

#include "ReportRecords.h"
#include "kit/Command.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <string>

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
  for (const char* part : {"What to practise next", ">125<", ">100", "You hear it half of the time",
                           "Your mean error is", "Difficulty over", "2026-11", "3\u00A0days"})
    EXPECT_NE(words.find(part), std::string::npos) << part;
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
