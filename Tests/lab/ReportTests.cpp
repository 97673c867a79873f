// velto-lab report.
#include "Coding.h"
#include "LabRunner.h"
#include "kit/RecordTesting.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

namespace fs = std::filesystem;
using testing::contentOf;
using testing::isOneComplaint;
using testing::LabRunner;
using testing::put;

constexpr const char* oneAnswer =
    R"({"attempts":[{"id":"00000000-0000-4000-8000-000000000001","date":785000000,)"
    R"("drill":"level","material":"Pink noise","difficulty":20,"correct":true,"error":0.1}],)"
    R"("staircases":{}})";

TEST(LabReport, WritesAPage) {
  const LabRunner lab;
  put(lab.record(), oneAnswer);
  const auto result = lab.run({"report", "page.html"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.error, "");
  const std::string page = contentOf(lab.folder() / "page.html");
  EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
  EXPECT_NE(page.find("1\u00A0answer,"), std::string::npos);
  EXPECT_NE(page.find("without <code>--fair</code>"), std::string::npos);
  // The record stays as it was.
  EXPECT_EQ(contentOf(lab.record()), oneAnswer);
  EXPECT_EQ(lab.run({"report", "-"}).out, page);
  EXPECT_NE(lab.run({"report", "--fair", "-"}).out.find("of velto <code>--fair</code>."),
            std::string::npos);
}

TEST(LabReport, CanBeAboutAnEmptyRecord) {
  const LabRunner lab;
  const auto result = lab.run({"report", "page.html"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(contentOf(lab.folder() / "page.html").find("Start with 20 trials"), std::string::npos);
  EXPECT_FALSE(fs::exists(lab.record()));
}

TEST(LabReport, AnalysesTheNewestAnswers) {
  const LabRunner lab;
  const std::string one = oneAnswer;
  const std::size_t begin = one.find("{\"id\""), end = one.find("],");
  const std::string row = one.substr(begin, end - begin);
  std::string miss = testing::changed(row, "true", "false");
  miss = testing::changed(miss, "000001\"", "000002\"");
  put(lab.record(), "{\"attempts\":[" + row + "," + miss + "],\"staircases\":{}}");
  EXPECT_NE(lab.run({"report", "-"}).out.find("data-label=\"Hits\">50\u00A0%<"), std::string::npos);
  const std::string newest = lab.run({"report", "--newest", "1", "-"}).out;
  EXPECT_NE(newest.find("data-label=\"Newest\">1</td><td data-label=\"Hits\">0\u00A0%<"),
            std::string::npos)
      << newest;
}

// A Velto that was killed: its only answer is in a copy.
TEST(LabReport, CountsAnswersThatOnlyACopyHolds) {
  const LabRunner lab;
  const Stored one = Coding::decodeStored(oneAnswer).value();
  put(lab.record(), Coding::encode(Stored{}).value());
  put(lab.record().string() + ".saving-12345678",
      Coding::encodeBackup(oneAnswer, one.attempts, 0, 1).value());
  const auto before = lab.files();
  EXPECT_NE(lab.run({"report", "-"}).out.find("1\u00A0answer,"), std::string::npos);
  EXPECT_EQ(lab.files(), before);
}

TEST(LabReport, RefusesWhatItCannotReadOrWrite) {
  const LabRunner lab;
  put(lab.record(), "{");
  const auto damaged = lab.run({"report", "page.html"});
  EXPECT_EQ(damaged.status, 1);
  EXPECT_TRUE(isOneComplaint(damaged.error)) << damaged.error;
  EXPECT_FALSE(fs::exists(lab.folder() / "page.html"));
  put(lab.record(), oneAnswer);
  const auto nowhere = lab.run({"report", "no/such/folder/page.html"});
  EXPECT_EQ(nowhere.status, 1);
  EXPECT_TRUE(isOneComplaint(nowhere.error)) << nowhere.error;
  EXPECT_EQ(lab.run({"report"}).status, 2);
  EXPECT_EQ(lab.run({"report", "--newest", "0", "page.html"}).status, 2);
}

} // namespace
} // namespace velto
