// A text file that grows by whole lines, each forced to the disk.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

// Another program that changes the file meanwhile is noticed, not overwritten. Nothing keeps the
// file open between two calls, so that a disk may be unplugged and come back.
//
// One object belongs to one thread at a time. Errors are texts of the system, such as "No space
// left on device".
class GrowingFile {
public:
  // `held` is what counts of the file; an unfinished line after it goes with the next append.
  GrowingFile(std::filesystem::path path, std::string held);

  // The error with which the file could not be written; nullopt if it could be. Creates the file if
  // it is missing. Neither changes what it holds nor waits for the disk.
  [[nodiscard]] std::optional<std::string> refusal() const;

  // Appends `lines`, which end with a line feed, and waits until they are on the disk. Returns the
  // error on failure; the file is then shortened to what it held, if possible, and the next append
  // does so again.
  [[nodiscard]] std::optional<std::string> append(std::string_view lines);

  // What counts of the file.
  [[nodiscard]] const std::string& held() const { return held_; }

private:
  [[nodiscard]] std::optional<std::string> check(int descriptor) const;
  [[nodiscard]] std::optional<std::string> writeTo(int descriptor, std::string_view lines);

  std::filesystem::path path_;
  std::string held_;
  std::string attempted_; // a failed append may have left some of it
  bool isListed_ = false; // the folder's entry is on the disk
};

} // namespace velto
