// The practice record: answers, staircases, the roll-up of old answers, and the file that stores
// them.
#pragma once

#include "Drill.h"
#include "Grading.h"
#include "ProfileLocation.h"
#include "Publisher.h"
#include "Record.h"
#include "Staircase.h"
#include "Statistics.h"
#include "Trial.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velto {

class RecordStore;

// Main thread only; nothing waits for a disk but the destructor. File errors are not reported: a
// missing, unreadable or malformed file without a backup is an empty record. A failed save keeps
// the record in memory, and the next answer saves again.
class Profile {
public:
  // Answers kept in detail; older ones are rolled up.
  static constexpr std::size_t detailRows = 5000;

  // Locates the file from the process's environment, moves an earlier version's file there, and
  // loads it. Computes the statistics if it could be loaded.
  Profile();
  explicit Profile(const ProfileLocation& location);
  // Loads the record from `store` and saves it there.
  explicit Profile(std::unique_ptr<RecordStore> store);
  // An empty record that is never saved. Touches no file.
  struct Unsaved {};
  explicit Profile(Unsaved);
  // Waits until the record is on the disk; see ProfileStore.
  ~Profile();

  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  // The row of an answer given at `date`.
  [[nodiscard]] static Attempt answered(const Trial& trial, const Drills::Grade& grade, Date date);

  // Updates the drill's staircase, appends the answer, trims, recomputes and saves. Before that,
  // takes over what other programs have saved meanwhile.
  void record(const Trial& trial, const Drills::Grade& grade);

  // The drill's staircase; a new one if the drill has none.
  [[nodiscard]] Staircase staircase(Drill drill) const;

  // Share of hits, 0 to 1, among the drill's newest Statistics::accuracyWindow answers; nullopt
  // without answers.
  [[nodiscard]] std::optional<double> accuracy(Drill drill) const;

  // Difficulties of the drill's newest Statistics::curveLength answers, oldest first. Valid until
  // the next recompute.
  [[nodiscard]] std::span<const double> curve(Drill drill) const;

  // Recomputes the statistics as of now.
  void recompute();

  // Rolls up and removes the oldest answers beyond `detailRows`.
  void trim();

  // Replaces attempts and staircases; the roll-up stays. Does not trim, recompute or save. The next
  // save does not merge.
  void replace(std::vector<Attempt> attempts, std::map<std::string, Staircase> staircases);

  // Saves as RecordStore::save() does. Leaves the file unchanged if a number is not finite, or if
  // the disk has no room for a backup.
  void save();
  // Waits until everything is on the disk as far as it can be. False if that takes longer than
  // `most`.
  bool waitForDisk(std::chrono::milliseconds most);

  [[nodiscard]] const std::vector<Attempt>& attempts() const { return stored_.attempts; }
  [[nodiscard]] const Stats& stats() const { return stats_; }
  [[nodiscard]] const std::map<std::int64_t, BandRoll>& lifetime() const {
    return stored_.lifetime;
  }
  [[nodiscard]] const std::map<std::string, Staircase>& staircases() const {
    return stored_.staircases;
  }
  // Empty if the record is never saved.
  [[nodiscard]] std::filesystem::path url() const;

  // Sent before each change of attempts or stats, while the old value can still be read.
  Publisher<> objectWillChange;

private:
  void load();
  void takeMerged();

  Stored stored_;
  Stats stats_;
  std::unique_ptr<RecordStore> store_; // null if the record is never saved
};

} // namespace velto
