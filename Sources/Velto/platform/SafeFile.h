// A file that is rewritten in place and still outlives a writer that dies on the way: while that
// goes on, a sibling holds the same bytes whole.
//
// A save
//   1. writes the new bytes to a part of a sibling and gives it the sibling's name, so that a
//      sibling is always whole,
//   2. writes the file itself, plainly,
//   3. removes the sibling.
// Whatever happens, the file or its sibling is whole. A sibling that a save left behind goes with
// the next one that succeeds.
//
// What is written is not forced to the disk: this guards against the death of the program, a full
// disk and errors, not against a loss of power.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace velto::SafeFile {

// Larger files are as good as unreadable.
inline constexpr std::uintmax_t mostBytes = std::uintmax_t{1} << 30;

// Where the sibling of `file` lies, and the part that becomes the sibling.
[[nodiscard]] std::filesystem::path sibling(const std::filesystem::path& file);
[[nodiscard]] std::filesystem::path siblingPart(const std::filesystem::path& file);

// Saves `bytes`; says whether the file now holds them. If not, what was saved before is still
// there. Where the folder takes no new file the plain write goes on without a sibling. Programs
// that save the same file at once take turns; one that keeps it for a quarter of a second makes
// the save fail. Any thread.
bool write(const std::filesystem::path& file, std::string_view bytes);

// Keeps those away that save files of the same folder, as far as the file system can do that.
class Turn {
public:
  enum class Use { reading, writing };

  // Waits for a quarter of a second at most.
  Turn(const std::filesystem::path& file, Use use);
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn();

  // Whether others kept it all the time.
  [[nodiscard]] bool isRefused() const { return refused_; }

private:
  int folder_ = -1;
  bool refused_ = false;
};

// The bytes of a regular file; none if it cannot be read. Any thread.
[[nodiscard]] std::optional<std::string> contents(const std::filesystem::path& file);

// What `decode` makes of the file's bytes or, only where the file is there but gives nothing, of
// its sibling's. Changes nothing. Any thread.
template <typename Decode>
[[nodiscard]] std::invoke_result_t<Decode, std::string_view> load(const std::filesystem::path& file,
                                                                  Decode decode) {
  const auto decoded = [&](const std::filesystem::path& path) {
    const auto bytes = contents(path);
    return bytes ? decode(*bytes) : std::nullopt;
  };
  const Turn turn(file, Turn::Use::reading);
  if (auto value = decoded(file))
    return value;
  std::error_code error;
  if (!std::filesystem::exists(file, error))
    return std::nullopt;
  return decoded(sibling(file));
}

} // namespace velto::SafeFile
