// Reads and replaces a practice record from outside of Velto, which may run meanwhile.
//
// Main thread only: uses the same files as ProfileStore, in the same way.
#pragma once

#include "ProfileLocation.h"
#include "Record.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velto::RecordFile {

// The record that Velto would load: from the file, from copies that it left when it did not end
// cleanly, or from the earlier location. nullopt if there is none that can be read. Changes nothing
// on the disk.
[[nodiscard]] std::optional<Stored> load(const ProfileLocation& location);

// Copies and former records beside the file; those that were never completed are left out.
struct Copy {
  enum class Kind : std::uint8_t {
    running,  // of a Velto that runs
    left,     // of one that did not end cleanly
    putAside, // a former record
  };
  std::filesystem::path path;
  Kind kind = Kind::putAside;
  std::optional<Stored> record; // nullopt if it does not decode
};

// The newest first.
[[nodiscard]] std::vector<Copy> copies(const std::filesystem::path& file);

// The record that is worth bringing back: what Velto would load if that is more than the file
// holds; else the newest copy that differs from it, of those that Velto left only if they have
// answers that the record has not. nullopt if there is none.
struct Candidate {
  std::filesystem::path source; // the file of the record itself for what Velto would load
  Stored record;
};
[[nodiscard]] std::optional<Candidate> candidate(const ProfileLocation& location);

// What imported answers make of the present record. Answers count once, by their id, as when two
// Veltos save to one file. Roll-ups have no ids: the one with more answers is kept. A record that
// is missing or empty becomes `imported` as it is.
[[nodiscard]] Stored merged(const std::optional<Stored>& present, const Stored& imported);

struct Replacement {
  std::string problem;                         // empty on success
  bool isChanged = false;                      // false if the file held these bytes already
  std::optional<std::filesystem::path> former; // where the file's former bytes are; none if empty
};

inline constexpr std::chrono::milliseconds defaultPatience{2000};

// Replaces the record by what `change` makes of the present one, which it gets as load() returns
// it. Takes the record's lock, waiting for at most `patience`, and puts the present file aside
// first. On failure nothing is changed; after a kill, or if the disk fails in the middle of the
// file, a copy remains that Velto loads. `unlessRunning` refuses while a Velto runs that has
// answers of its own, which it would merge.
[[nodiscard]] Replacement
replace(const ProfileLocation& location,
        const std::function<Stored(const std::optional<Stored>& present)>& change,
        bool unlessRunning, std::chrono::milliseconds patience = defaultPatience);

} // namespace velto::RecordFile
