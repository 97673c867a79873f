// Where a practice record is kept.
#pragma once

#include "Record.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace velto {

// Main thread only. Failures are not reported; the next save tries again.
class RecordStore {
public:
  RecordStore() = default;
  RecordStore(const RecordStore&) = delete;
  RecordStore& operator=(const RecordStore&) = delete;
  virtual ~RecordStore() = default;

  // The record; nullopt if there is none that can be read. Call at most once, before the other
  // functions.
  [[nodiscard]] virtual std::optional<Stored> load() = 0;

  // Call for each new answer, before it is saved. It counts as unsaved until the store has it.
  virtual void add(const Attempt& attempt) = 0;

  // The next save overwrites what the store holds instead of merging. Answers added so far no
  // longer count as unsaved.
  virtual void overwriteNext() = 0;

  // Saves the record; `stored` has all answers that were added. Does not wait. A no-op if a number
  // is not finite.
  virtual void save(const Stored& stored) = 0;

  // Merges `stored` with what others have saved meanwhile; nullopt if nobody has. Call before each
  // answer.
  [[nodiscard]] virtual std::optional<Stored> takeMerged(const Stored& stored) = 0;

  // Waits until all is saved as far as it can be. False if that takes longer than `most`.
  virtual bool wait(std::chrono::milliseconds most) = 0;

  // The name of the record's file.
  [[nodiscard]] virtual const std::filesystem::path& file() const = 0;
};

} // namespace velto
