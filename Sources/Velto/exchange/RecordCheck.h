// The state of a practice record on the disk, in words and as JSON.
#pragma once

#include "Date.h"
#include "ProfileLocation.h"
#include "Record.h"
#include "RecordFile.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velto {

struct RecordCheck {
  enum class Reading : std::uint8_t { missing, readable, damaged, unreadable };

  // What a record holds, in figures.
  struct Contents {
    std::size_t answers = 0;
    std::optional<Date> oldest, newest; // nullopt without answers

    [[nodiscard]] static Contents of(const Stored& stored);
  };

  struct Beside {
    std::string name; // in the record's folder
    RecordFile::Copy::Kind kind = RecordFile::Copy::Kind::putAside;
    std::optional<Contents> contents; // nullopt if it does not decode
  };

  std::filesystem::path file;
  Reading reading = Reading::missing;
  std::optional<Contents> contents; // of the file
  bool isWritable = false;          // by permission; if the folder is missing, it can be created
  bool hasRoom = false;             // on the disk, for the file and the copies of a save
  bool isLocked = false;            // a program is saving it at this moment
  std::vector<Beside> beside;       // the newest first
  std::string restoredFrom;         // what `restore` would take; empty if nothing
  std::optional<Contents> restored; // and what that holds

  // Changes nothing on the disk. Main thread only.
  [[nodiscard]] static RecordCheck of(const ProfileLocation& location);

  // True if the record can be written and, if it exists, read.
  [[nodiscard]] bool passes() const;
  // Lines of text, and one line of JSON.
  [[nodiscard]] std::string words() const;
  [[nodiscard]] std::string json() const;
};

} // namespace velto
