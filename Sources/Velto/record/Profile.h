// The practice record: every answer, the difficulty of each drill, the roll-up of old answers, and
// the file that keeps them.
#pragma once

#include "Drills.h"
#include "ProfileLocation.h"
#include "Publisher.h"
#include "Record.h"
#include "Statistics.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velto {

// Main thread only. Trouble with the file is never reported: a file that is missing, unreadable or
// malformed is an empty record, and a write that fails leaves the record in memory as it is, for
// the next answer to try again.
class Profile {
public:
  // Rows that are kept in detail; older ones are rolled up.
  static constexpr std::size_t detailRows = 5000;

  // Finds the file from the process environment, moves an older version's file there, loads it, and
  // computes the statistics if there was one to load.
  Profile();
  explicit Profile(const ProfileLocation& location);

  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  // Moves the drill's staircase, appends the answer, trims, recomputes and saves.
  void record(const Trial& trial, const Drills::Grade& grade);

  // The drill's staircase, or a fresh one.
  [[nodiscard]] Staircase staircase(Drill drill) const;

  // The share of hits, 0 to 1, among the drill's newest answers; none without answers.
  [[nodiscard]] std::optional<double> accuracy(Drill drill) const;

  // The difficulties of the drill's newest answers, oldest first; valid until the next recompute.
  [[nodiscard]] std::span<const double> curve(Drill drill) const;

  // Rebuilds the statistics as of now.
  void recompute();

  // Rolls up and removes the oldest rows beyond `detailRows`.
  void trim();

  // Puts another history in the place of attempts and staircases; the roll-up stays. Neither trims,
  // recomputes nor saves.
  void replace(std::vector<Attempt> attempts, std::map<std::string, Staircase> staircases);

  // Writes the file in place, with a whole copy beside it while that goes on. A number that JSON
  // cannot hold, and a disk that does not take the copy, leave the file as it was.
  void save() const;

  [[nodiscard]] const std::vector<Attempt>& attempts() const { return stored_.attempts; }
  [[nodiscard]] const Stats& stats() const { return stats_; }
  [[nodiscard]] const std::map<std::int64_t, BandRoll>& lifetime() const {
    return stored_.lifetime;
  }
  [[nodiscard]] const std::map<std::string, Staircase>& staircases() const {
    return stored_.staircases;
  }
  [[nodiscard]] const std::filesystem::path& url() const { return url_; }

  // Sent before each change of attempts or stats, while the old value can still be read.
  Publisher<> objectWillChange;

private:
  void load();

  Stored stored_;
  Stats stats_;
  std::filesystem::path url_;
};

} // namespace velto
