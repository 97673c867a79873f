#include "ImportCommand.h"

#include "Arguments.h"
#include "Console.h"
#include "Files.h"
#include "ProfileCSV.h"
#include "RecordFile.h"

#include <memory>
#include <string>

namespace velto {

namespace {

Stored readCSV(const std::string& path) {
  try {
    return ProfileCSV::read(Lab::Files::read(path));
  } catch (const CSV::Damaged& problem) {
    throw Lab::Failure(path + ": " + problem.what());
  }
}

} // namespace

Lab::Action Lab::declareImport(CLI::App& arguments) {
  const auto path = std::make_shared<std::string>();
  Arguments::addPath(arguments, "FILE.csv", *path, "what to read; - is standard input");
  return [path] {
    const Stored imported = readCSV(*path);
    std::size_t before = 0, after = 0;
    const auto result = RecordFile::replace(
        Arguments::recordLocation(),
        [&](const std::optional<Stored>& present) {
          Stored record = RecordFile::merged(present, imported);
          before = present ? present->attempts.size() : 0;
          after = record.attempts.size();
          return record;
        },
        false);
    if (!result.problem.empty())
      throw Failure(result.problem);
    Console::print("The file has " + std::to_string(imported.attempts.size()) +
                   " answers; the record had " + std::to_string(before) + " and has " +
                   std::to_string(after) + ".\n" +
                   (result.former ? "The former one is kept: " + result.former->string() + "\n"
                                  : std::string()));
  };
}

} // namespace velto
