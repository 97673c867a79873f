// What standard C++ does not offer and every system has in its own way, but for the saving of a
// file (SafeFile) and the desktop.
//
// Main thread only, unless said otherwise.
#pragma once

#include <ctime>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velto::System {

// The home of the account that runs the process, from the account database.
[[nodiscard]] std::optional<std::string> accountHome();

// Sets a variable of the process's environment, or takes it away. No other thread may use the
// environment meanwhile.
void setVariable(const char* name, const std::optional<std::string>& value);

// Where files that do not stay are put.
[[nodiscard]] std::filesystem::path temporaryDirectory();

// Reads the user's time zone anew.
void readTimeZone();
// What calendar and clock show there at `time`; none where the year does not fit. Any thread.
[[nodiscard]] std::optional<std::tm> localTime(std::time_t time);

// Runs `work` with the C locale for this thread, whatever the process has set. Any thread.
void runInCLocale(const std::function<void()>& work);

// Once, before anything is opened or printed. A reader that goes away then makes a write fail
// instead of ending the process, and where a standard stream is closed no file that is opened later
// takes its place.
void prepareStreams();

// Writes all bytes, unbuffered, and waits for the reader of a full pipe, also where that has set
// its end not to block. Returns 0 or the number of the error.
[[nodiscard]] int writeToOutput(std::string_view bytes);
// The same to standard error, but once and without a word about failure.
void writeToError(std::string_view bytes);

} // namespace velto::System
