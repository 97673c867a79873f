// As much of RapidCheck's interface as the laws of the core use, for a system that has no library
// of it. It checks the same laws over random values, but draws plainly and does not shrink.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace rc {

using Source = std::mt19937_64;

// What the law that is being checked draws from.
inline Source& source() {
  static Source instance(20010101);
  return instance;
}

template <typename T>
class Gen {
public:
  using Value = T;

  explicit Gen(std::function<T(Source&)> draw) : draw_(std::move(draw)) {}
  template <typename Other>
  requires(!std::is_same_v<Other, T> && std::is_convertible_v<Other, T>)
      Gen(const Gen<Other>& other)
      : draw_([other](Source& from) -> T { return other.drawn(from); }) {}

  T drawn(Source& from) const { return draw_(from); }
  T operator*() const { return drawn(source()); }

private:
  std::function<T(Source&)> draw_;
};

struct LawFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};
struct LawDoesNotApply {};

namespace gen {

template <typename T>
T uniform(Source& from, T low, T below) {
  return static_cast<T>(std::uniform_int_distribution<std::int64_t>(low, below - 1)(from));
}

template <typename T>
Gen<T> arbitrary() {
  return Gen<T>([](Source& from) {
    if constexpr (std::is_same_v<T, bool>) {
      return (from() & 1) != 0;
    } else if constexpr (std::is_integral_v<T>) {
      return static_cast<T>(from());
    } else {
      T list(static_cast<std::size_t>(uniform<int>(from, 0, 100)));
      for (auto&& one : list)
        one = arbitrary<typename T::value_type>().drawn(from);
      return list;
    }
  });
}

template <typename T>
Gen<T> inRange(T low, T below) {
  return Gen<T>([low, below](Source& from) { return uniform(from, low, below); });
}

template <typename T>
Gen<T> just(T value) {
  return Gen<T>([value](Source&) { return value; });
}

template <typename Container>
auto elementOf(const Container& container) {
  using T = std::decay_t<decltype(*std::begin(container))>;
  return Gen<T>([list = std::vector<T>(std::begin(container), std::end(container))](Source& from) {
    return list[uniform<std::size_t>(from, 0, list.size())];
  });
}

template <typename T, typename... Rest>
Gen<T> element(T first, Rest... rest) {
  return elementOf(std::array<T, 1 + sizeof...(Rest)>{first, static_cast<T>(rest)...});
}

template <typename T>
Gen<T> weightedOneOf(std::initializer_list<std::pair<std::size_t, Gen<T>>> choices) {
  return Gen<T>([list = std::vector(choices)](Source& from) {
    std::size_t total = 0;
    for (const auto& [weight, choice] : list)
      total += weight;
    auto left = uniform<std::size_t>(from, 0, total);
    for (const auto& [weight, choice] : list) {
      if (left < weight)
        return choice.drawn(from);
      left -= weight;
    }
    throw std::logic_error("no choice");
  });
}

template <typename T, typename... Rest>
Gen<T> oneOf(Gen<T> first, Rest... rest) {
  return weightedOneOf<T>({{1, first}, {1, rest}...});
}

template <typename T, typename Function>
auto map(Gen<T> gen, Function function) {
  return Gen<std::invoke_result_t<Function, T>>(
      [gen, function](Source& from) { return function(gen.drawn(from)); });
}

template <typename... T>
Gen<std::tuple<T...>> tuple(Gen<T>... gens) {
  // Braces draw from left to right.
  return Gen<std::tuple<T...>>(
      [gens...](Source& from) { return std::tuple<T...>{gens.drawn(from)...}; });
}

template <typename T, typename Predicate>
Gen<T> suchThat(Gen<T> gen, Predicate predicate) {
  return Gen<T>([gen, predicate](Source& from) {
    while (true)
      if (T value = gen.drawn(from); predicate(value))
        return value;
  });
}

template <typename T>
Gen<T> noShrink(Gen<T> gen) {
  return gen;
}

template <typename T>
Gen<T> resize(int, Gen<T> gen) {
  return gen;
}

} // namespace gen

// Checks the law a hundred times.
template <typename... Arguments>
void check(void (*law)(Arguments...)) {
  constexpr int wanted = 100;
  int checked = 0;
  for (int tries = 0; checked < wanted && tries < 10 * wanted; ++tries) {
    try {
      law(*gen::arbitrary<std::decay_t<Arguments>>()...);
      ++checked;
    } catch (const LawDoesNotApply&) {
    } catch (const LawFailed& failure) {
      FAIL() << failure.what() << " (case " << tries + 1 << ")";
    }
  }
  EXPECT_EQ(checked, wanted) << "the law seldom applies";
}

} // namespace rc

#define RC_FAIL(message) throw ::rc::LawFailed(message)
#define RC_ASSERT(condition)                                                                       \
  do {                                                                                             \
    if (!(condition))                                                                              \
      RC_FAIL(#condition);                                                                         \
  } while (false)
#define RC_PRE(condition)                                                                          \
  do {                                                                                             \
    if (!(condition))                                                                              \
      throw ::rc::LawDoesNotApply();                                                               \
  } while (false)
