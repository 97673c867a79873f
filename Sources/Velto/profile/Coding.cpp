#include "Coding.h"

#include "KeyedCoding.h"

namespace velto {

namespace KeyedCoding {

template <>
inline constexpr auto fields<Trial> = std::tuple{
    required("drill", &Trial::drill),
    required("seed", &Trial::seed),
    required("material", &Trial::material),
    required("difficulty", &Trial::difficulty),
    required("slots", &Trial::slots),
    required("targetFreq", &Trial::targetFreq),
    required("boostDB", &Trial::boostDB),
    required("boostQ", &Trial::boostQ),
    required("targetLevelDB", &Trial::targetLevelDB),
    required("targetGRdB", &Trial::targetGRdB),
    required("oddSlot", &Trial::oddSlot),
    required("correlation", &Trial::correlation),
};

template <>
inline constexpr auto fields<Staircase> = std::tuple{
    required("difficulty", &Staircase::difficulty),
    required("consecutiveCorrect", &Staircase::consecutiveCorrect),
    required("reversals", &Staircase::reversals),
    required("lastDirection", &Staircase::lastDirection),
};

template <>
inline constexpr auto fields<Attempt> = std::tuple{
    required("id", &Attempt::id),
    required("date", &Attempt::date),
    required("drill", &Attempt::drill),
    required("material", &Attempt::material),
    required("difficulty", &Attempt::difficulty),
    required("correct", &Attempt::correct),
    required("error", &Attempt::error),
    optional("bandIndex", &Attempt::bandIndex),
};

template <>
inline constexpr auto fields<BandRoll> = std::tuple{
    required("attempts", &BandRoll::attempts),
    required("hits", &BandRoll::hits),
    required("errorSum", &BandRoll::errorSum),
};

// Files written before the roll-up existed have no "lifetime".
template <>
inline constexpr auto fields<Stored> = std::tuple{
    required("attempts", &Stored::attempts),
    required("staircases", &Stored::staircases),
    optional("lifetime", &Stored::lifetime),
};

} // namespace KeyedCoding

std::optional<std::string> Coding::encode(const Trial& trial) {
  return KeyedCoding::encode(trial);
}

std::optional<std::string> Coding::encode(const Staircase& staircase) {
  return KeyedCoding::encode(staircase);
}

std::optional<std::string> Coding::encode(const Attempt& attempt) {
  return KeyedCoding::encode(attempt);
}

std::optional<std::string> Coding::encode(const BandRoll& roll) {
  return KeyedCoding::encode(roll);
}

std::optional<std::string> Coding::encode(const Stored& stored) {
  constexpr std::size_t bytesPerAttempt = 256;
  constexpr std::size_t bytesBeside = 8192;
  return KeyedCoding::encode(stored, stored.attempts.size() * bytesPerAttempt + bytesBeside);
}

std::optional<Trial> Coding::decodeTrial(std::string_view text) {
  return KeyedCoding::decode<Trial>(text);
}

std::optional<Staircase> Coding::decodeStaircase(std::string_view text) {
  return KeyedCoding::decode<Staircase>(text);
}

std::optional<Attempt> Coding::decodeAttempt(std::string_view text) {
  return KeyedCoding::decode<Attempt>(text);
}

std::optional<BandRoll> Coding::decodeBandRoll(std::string_view text) {
  return KeyedCoding::decode<BandRoll>(text);
}

std::optional<Stored> Coding::decodeStored(std::string_view text) {
  return KeyedCoding::decode<Stored>(text);
}

} // namespace velto
