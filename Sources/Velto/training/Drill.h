// Drills and their source materials.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace velto {

// The four kinds of exercise. The raw value identifies a drill in files and in per-drill maps.
class Drill {
public:
  enum Case : std::uint8_t {
    frequency, // which band is boosted in B
    level,     // by how many dB B is louder than A
    dynamics,  // how many dB of gain reduction B has
    polarity   // which of three slots has its right channel flipped
  };

  constexpr Drill(Case value) : value_(value) {}     // NOLINT: implicit, a case is a drill
  constexpr operator Case() const { return value_; } // NOLINT: implicit, for switch

  // nullopt if `rawValue` names no drill.
  [[nodiscard]] static std::optional<Drill> fromRawValue(std::string_view rawValue);
  // "frequency", "level", "dynamics" or "polarity".
  [[nodiscard]] std::string_view rawValue() const;
  [[nodiscard]] std::string_view id() const { return rawValue(); }

  // All drills, in display and file order.
  static const std::array<Drill, 4> allCases;

private:
  Case value_;
};

inline constexpr std::array<Drill, 4> Drill::allCases{Drill::frequency, Drill::level,
                                                      Drill::dynamics, Drill::polarity};

// The synthesised source materials. The raw value is the display name, and identifies a material in
// files.
class Material {
public:
  enum Case : std::uint8_t { pinkNoise, drums, pad };

  constexpr Material(Case value) : value_(value) {}  // NOLINT: implicit, a case is a material
  constexpr operator Case() const { return value_; } // NOLINT: implicit, for switch

  // nullopt if `rawValue` names no material.
  [[nodiscard]] static std::optional<Material> fromRawValue(std::string_view rawValue);
  // "Pink noise", "Drum loop" or "Synth pad".
  [[nodiscard]] std::string_view rawValue() const;
  // For a button: "Pink", "Drums" or "Pad".
  [[nodiscard]] std::string_view shortName() const;

  // All materials, in display order.
  static const std::array<Material, 3> allCases;

private:
  Case value_;
};

inline constexpr std::array<Material, 3> Material::allCases{Material::pinkNoise, Material::drums,
                                                            Material::pad};

namespace Drills {

// The material a drill starts with.
[[nodiscard]] Material defaultMaterial(Drill drill);

} // namespace Drills

} // namespace velto

template <>
struct std::hash<velto::Drill> {
  std::size_t operator()(velto::Drill drill) const noexcept {
    return std::hash<std::string_view>{}(drill.rawValue());
  }
};

template <>
struct std::hash<velto::Material> {
  std::size_t operator()(velto::Material material) const noexcept {
    return std::hash<velto::Material::Case>{}(material);
  }
};
