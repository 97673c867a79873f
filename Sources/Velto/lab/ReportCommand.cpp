#include "ReportCommand.h"

#include "Arguments.h"
#include "Console.h"
#include "Date.h"
#include "Files.h"
#include "ReportData.h"
#include "ReportPage.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace velto {

namespace {

struct Wish {
  std::string file;
  bool isFair = false;
  std::uint64_t newest = DrillAnalysis::defaultNewest;
};

void report(const Wish& wish) {
  const Stored record = Lab::Arguments::readRecord(Lab::Arguments::recordLocation());
  ReportData data;
  {
    Lab::Progress progress("analysing", Drill::allCases.size());
    data = ReportData::of(record, Date::now(), wish.isFair ? SeedSource::spread : SeedSource::clock,
                          wish.newest, [&progress] { progress.advance(); });
  }
  Lab::Files::write(wish.file, reportPage(data));
}

} // namespace

Lab::Action Lab::declareReport(CLI::App& arguments) {
  const auto wish = std::make_shared<Wish>();
  Arguments::addPath(arguments, "FILE.html", wish->file, "the page to write, or - for the output");
  arguments.add_flag("--fair", wish->isFair, "take all trials for those of velto --fair")
      ->disable_flag_override();
  Arguments::addCount(arguments, "--newest", wish->newest, 1, 5000,
                      "analyse the newest NUMBER answers of each drill");
  return [wish] { report(*wish); };
}

} // namespace velto
