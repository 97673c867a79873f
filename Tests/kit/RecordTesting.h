// Helpers for tests of the practice record: scoped environment variables, rows, generators.
#pragma once

#include "Record.h"
#include "kit/Files.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <stdlib.h>
#include <time.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace velto::testing {

using kit::contentOf;
using kit::put;
using kit::ScratchFolder;

// Sets or removes an environment variable for its scope.
class ScopedVariable {
public:
  ScopedVariable(std::string name, const std::optional<std::string>& value)
      : name_(std::move(name)) {
    if (const char* previous = getenv(name_.c_str()))
      previous_ = previous;
    assign(value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { assign(previous_); }

private:
  void assign(const std::optional<std::string>& value) const {
    if (value)
      setenv(name_.c_str(), value->c_str(), 1);
    else
      unsetenv(name_.c_str());
  }

  std::string name_;
  std::optional<std::string> previous_;
};

// Sets the time zone for its scope.
class ScopedTimeZone {
public:
  explicit ScopedTimeZone(const std::string& zone) : variable_(std::in_place, "TZ", zone) {
    tzset();
  }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;
  ~ScopedTimeZone() {
    variable_.reset();
    tzset();
  }

private:
  std::optional<ScopedVariable> variable_;
};

// `text` with its only occurrence of `from` replaced by `to`.
inline std::string changed(std::string text, const std::string& from, const std::string& to) {
  const auto position = text.find(from);
  if (position == text.npos || text.find(from, position + 1) != text.npos)
    throw std::invalid_argument("not exactly one " + from + " in " + text);
  return text.replace(position, from.size(), to);
}

// A date from seconds since 1970.
inline Date since1970(std::int64_t seconds) {
  return {static_cast<double>(seconds) - 978307200};
}

inline std::tm fieldsOf(int year, int month, int day, int hour, int minute, int second) {
  std::tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  return fields;
}

inline std::int64_t utcSeconds(int year, int month, int day, int hour = 0, int minute = 0,
                               int second = 0) {
  auto fields = fieldsOf(year, month, day, hour, minute, second);
  return timegm(&fields);
}

inline Date utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return since1970(utcSeconds(year, month, day, hour, minute, second));
}

// A moment in local time.
inline Date local(int year, int month, int day, int hour = 12, int minute = 0, int second = 0) {
  auto fields = fieldsOf(year, month, day, hour, minute, second);
  fields.tm_isdst = -1;
  return since1970(mktime(&fields));
}

inline Attempt row(Drill drill, std::optional<std::int64_t> band = std::nullopt,
                   bool correct = true, double error = 0, Date date = {}) {
  return {.id = UUID::random(),
          .date = date,
          .drill = drill,
          .material = Material::pinkNoise,
          .difficulty = 50,
          .correct = correct,
          .error = error,
          .bandIndex = band};
}

inline bool sameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

// ---- Generators ----

inline rc::Gen<std::uint64_t> anyBits() {
  return rc::gen::resize(rc::kNominalSize, rc::gen::arbitrary<std::uint64_t>());
}

inline rc::Gen<double> finiteDouble() {
  const auto anything = rc::gen::suchThat(
      rc::gen::map(anyBits(), [](std::uint64_t bits) { return std::bit_cast<double>(bits); }),
      [](double value) { return std::isfinite(value); });
  return rc::gen::oneOf(
      anything, rc::gen::map(rc::gen::inRange(-4000, 4001), [](int n) { return n / 40.0; }),
      rc::gen::element(0.0, -0.0, 1e308, -1e308, 5e-324, -5e-324, 2.2250738585072009e-308,
                       std::numeric_limits<double>::max(), 0x1p53, 0x1p63, 0x1p64, 0.1, 1e21,
                       1e-7));
}

inline rc::Gen<std::int64_t> anyInteger() {
  return rc::gen::oneOf(
      rc::gen::map(anyBits(), [](std::uint64_t bits) { return std::bit_cast<std::int64_t>(bits); }),
      rc::gen::inRange<std::int64_t>(-3, 30),
      rc::gen::element(std::numeric_limits<std::int64_t>::min(),
                       std::numeric_limits<std::int64_t>::max()));
}

inline rc::Gen<Drill> anyDrill() {
  return rc::gen::elementOf(Drill::allCases);
}

inline rc::Gen<Material> anyMaterial() {
  return rc::gen::elementOf(Material::allCases);
}

inline Attempt anyAttempt() {
  Attempt attempt;
  attempt.id = UUID::random();
  attempt.date = {*finiteDouble()};
  attempt.drill = *anyDrill();
  attempt.material = *anyMaterial();
  attempt.difficulty = *finiteDouble();
  attempt.correct = *rc::gen::arbitrary<bool>();
  attempt.error = *finiteDouble();
  if (*rc::gen::arbitrary<bool>())
    attempt.bandIndex = *anyInteger();
  return attempt;
}

inline Staircase anyStaircase() {
  return {*finiteDouble(), *anyInteger(), *anyInteger(), *anyInteger()};
}

inline BandRoll anyBandRoll() {
  return {*anyInteger(), *anyInteger(), *finiteDouble()};
}

// UTF-8 names, including all kinds of characters that need an escape.
inline std::string anyName() {
  std::string name;
  for (int i = *rc::gen::inRange(0, 6); i > 0; --i)
    name += *rc::gen::element<std::string>("a", "Z", "\"", "\\", "/", "\n", "\x01", "\x1f", "\x7f",
                                           " ", "\xc3\xa9", "\xe2\x80\xa8", "\xf0\x9f\x8e\xa7");
  return name;
}

inline Stored anyStored() {
  Stored stored;
  for (int i = *rc::gen::inRange(0, 12); i > 0; --i)
    stored.attempts.push_back(anyAttempt());
  for (const Drill drill : Drill::allCases)
    if (*rc::gen::arbitrary<bool>())
      stored.staircases[std::string(drill.rawValue())] = anyStaircase();
  for (int i = *rc::gen::inRange(0, 3); i > 0; --i)
    stored.staircases[anyName()] = anyStaircase();
  for (int i = *rc::gen::inRange(0, 6); i > 0; --i)
    stored.lifetime[*anyInteger()] = anyBandRoll();
  return stored;
}

} // namespace velto::testing
