// A list of trials and the file that gets the answers, opened together.
#pragma once

#include "GrowingFile.h"
#include "Results.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>

namespace velto {

struct Assignment {
  Results::Reading reading; // the answers so far
  std::shared_ptr<GrowingFile> file;
  std::int64_t lastChanged = 0; // when the results file was, in nanoseconds since 1970

  // Reads the list and the results so far, and creates the results file if it is missing. Returns
  // one line that names the file if the list cannot be read, if the results are no results of this
  // list or were changed by hand, or if they cannot be written. Does not wait for the disk.
  [[nodiscard]] static std::variant<Assignment, std::string>
  open(const std::filesystem::path& list, const std::filesystem::path& results);

  // The text of a file; a line that names it and says why if it cannot be read.
  struct Failure {
    std::string line;
  };
  [[nodiscard]] static std::variant<std::string, Failure> textOf(const std::filesystem::path& file);
  // The list in a file; the failure's line names the file.
  [[nodiscard]] static std::variant<TrialList, std::string>
  listIn(const std::filesystem::path& file);
};

} // namespace velto
