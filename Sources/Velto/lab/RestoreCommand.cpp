#include "RestoreCommand.h"

#include "Arguments.h"
#include "Coding.h"
#include "Console.h"
#include "Files.h"
#include "Folders.h"
#include "RecordFile.h"

#include <memory>
#include <string>

namespace velto {

namespace {

namespace fs = std::filesystem;
using RecordFile::Candidate;

// A file that the user names: one beside the record, or any other.
Candidate named(const ProfileLocation& location, const std::string& name) {
  const fs::path beside = location.directory / name;
  const fs::path path = Folders::exists(beside) ? beside : fs::path(name);
  auto record = Coding::decodeStored(Lab::Files::read(path.string()));
  if (!record)
    throw Lab::Failure(path.string() + ": no practice record");
  return {path, *std::move(record)};
}

Candidate chosen(const ProfileLocation& location, const std::string& name) {
  if (!name.empty())
    return named(location, name);
  auto candidate = RecordFile::candidate(location);
  if (!candidate)
    throw Lab::Failure("there is nothing to bring back");
  return *std::move(candidate);
}

} // namespace

Lab::Action Lab::declareRestore(CLI::App& arguments) {
  const auto name = std::make_shared<std::string>();
  Arguments::addOptionalPath(arguments, "FILE", *name,
                             "one that check lists; by default the one it names");
  return [name] {
    const ProfileLocation location = Arguments::recordLocation();
    const Candidate candidate = chosen(location, *name);
    const auto result = RecordFile::replace(
        location, [&](const std::optional<Stored>&) { return candidate.record; }, true);
    if (!result.problem.empty())
      throw Failure(result.problem);
    Console::print("The record has " + std::to_string(candidate.record.attempts.size()) +
                   " answers now, from " + candidate.source.string() + "\n" +
                   (result.former ? "The former one is kept: " + result.former->string() + "\n"
                                  : std::string()));
  };
}

} // namespace velto
