#include "Assignment.h"

#include "SafeFile.h"

#include <utility>

namespace velto {

namespace {

namespace fs = std::filesystem;

std::string about(const fs::path& file, std::string_view what) {
  return file.string().append(": ").append(what);
}

std::string_view reasonOf(SafeFile::Reading::State state) {
  using enum SafeFile::Reading::State;
  switch (state) {
  case missing:
    return "there is no such file";
  case irregular:
    return "not a regular file";
  case exhausted:
    return "out of memory or of file descriptors";
  case unreadable:
  case complete:
    break;
  }
  return "the file cannot be read";
}

} // namespace

std::variant<std::string, Assignment::Failure> Assignment::textOf(const fs::path& file) {
  SafeFile::Reading reading = SafeFile::read(file);
  if (reading.state != SafeFile::Reading::State::complete)
    return Failure{about(file, reasonOf(reading.state))};
  return std::move(reading.bytes);
}

std::variant<TrialList, std::string> Assignment::listIn(const fs::path& file) {
  auto text = textOf(file);
  if (auto* failure = std::get_if<Failure>(&text))
    return std::move(failure->line);
  auto list = TrialList::parse(*std::get_if<std::string>(&text));
  if (const auto* wrong = std::get_if<std::string>(&list))
    return about(file, *wrong);
  return list;
}

std::variant<Assignment, std::string> Assignment::open(const fs::path& listFile,
                                                       const fs::path& resultsFile) {
  const auto list = listIn(listFile);
  if (const auto* wrong = std::get_if<std::string>(&list))
    return *wrong;

  SafeFile::Reading earlier = SafeFile::read(resultsFile);
  using enum SafeFile::Reading::State;
  if (earlier.state != complete && earlier.state != missing)
    return about(resultsFile, reasonOf(earlier.state));
  auto results = Results::read(*std::get_if<TrialList>(&list), earlier.bytes);
  if (const auto* wrong = std::get_if<std::string>(&results))
    return about(resultsFile, *wrong);
  auto& reading = *std::get_if<Results::Reading>(&results);
  if (reading.changedLine)
    return about(resultsFile, "line " + std::to_string(*reading.changedLine) +
                                  ": was changed, it does not follow from the list");

  auto file = std::make_shared<GrowingFile>(resultsFile, earlier.bytes.substr(0, reading.held));
  if (const auto refusal = file->refusal())
    return about(resultsFile, *refusal);
  return Assignment{.reading = std::move(reading),
                    .file = std::move(file),
                    .lastChanged = earlier.stamp ? earlier.stamp->modified : 0};
}

} // namespace velto
