#include "Drill.h"

#include <algorithm>

namespace velto {

namespace {

constexpr auto drillNames =
    std::to_array<std::string_view>({"frequency", "level", "dynamics", "polarity"});
static_assert(drillNames.size() == Drill::allCases.size());
constexpr auto defaultMaterials = std::to_array<Material>(
    {Material::pinkNoise, Material::pinkNoise, Material::drums, Material::pad});
static_assert(defaultMaterials.size() == Drill::allCases.size());
constexpr auto materialNames =
    std::to_array<std::string_view>({"Pink noise", "Drum loop", "Synth pad"});
static_assert(materialNames.size() == Material::allCases.size());
constexpr auto materialShortNames = std::to_array<std::string_view>({"Pink", "Drums", "Pad"});
static_assert(materialShortNames.size() == Material::allCases.size());

template <typename Enumeration, std::size_t N>
std::optional<Enumeration> caseNamed(std::string_view name,
                                     const std::array<std::string_view, N>& names) {
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end())
    return std::nullopt;
  return Enumeration::allCases[static_cast<std::size_t>(found - names.begin())];
}

} // namespace

std::optional<Drill> Drill::fromRawValue(std::string_view rawValue) {
  return caseNamed<Drill>(rawValue, drillNames);
}

std::string_view Drill::rawValue() const {
  return drillNames[value_];
}

std::optional<Material> Material::fromRawValue(std::string_view rawValue) {
  return caseNamed<Material>(rawValue, materialNames);
}

std::string_view Material::rawValue() const {
  return materialNames[value_];
}

std::string_view Material::shortName() const {
  return materialShortNames[value_];
}

Material Drills::defaultMaterial(Drill drill) {
  return defaultMaterials[drill];
}

} // namespace velto
