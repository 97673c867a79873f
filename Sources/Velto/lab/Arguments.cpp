#include "Arguments.h"

#include "Command.h"
#include "Folders.h"
#include "NumberText.h"
#include "Numbers.h"
#include "RecordFile.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

namespace velto {

namespace {

std::string quoted(const std::string& text) {
  return "'" + text + "'";
}

// "pink", "drums" or "pad".
std::string wordOf(Material material) {
  std::string word(material.shortName());
  std::transform(word.begin(), word.end(), word.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return word;
}

std::optional<Material> materialOf(const std::string& word) {
  for (const Material material : Material::allCases)
    if (word == wordOf(material))
      return material;
  return std::nullopt;
}

// Declares a switch with a value, which `take` stores.
template <typename Take>
CLI::Option& addSwitch(CLI::App& arguments, const std::string& name, const char* placeholder,
                       const std::string& explanation, Take take) {
  return *arguments.add_option_function<std::string>(name, std::move(take), explanation)
              ->type_name(placeholder);
}

} // namespace

void Lab::Arguments::addFlag(CLI::App& arguments, const std::string& name, bool& isWanted,
                             const std::string& explanation) {
  arguments.add_flag(name, isWanted, explanation)->disable_flag_override();
}

void Lab::Arguments::addJSON(CLI::App& arguments, bool& isWanted) {
  addFlag(arguments, "--json", isWanted, "print JSON");
}

CLI::Option& Lab::Arguments::addDrill(CLI::App& arguments, Drill& drill,
                                      const std::string& explanation) {
  return addSwitch(arguments, "--drill", "DRILL", explanation, [&drill](const std::string& word) {
    const auto found = Drill::fromRawValue(word);
    if (!found)
      throw WrongUse("--drill: " + quoted(word) + " is no drill");
    drill = *found;
  });
}

CLI::Option& Lab::Arguments::addMaterial(CLI::App& arguments, std::optional<Material>& material,
                                         const std::string& explanation) {
  return addSwitch(
      arguments, "--material", "MATERIAL", explanation, [&material](const std::string& word) {
        material = materialOf(word);
        if (!material)
          throw WrongUse("--material: " + quoted(word) + " is neither pink, drums nor pad");
      });
}

CLI::Option& Lab::Arguments::addNumber(CLI::App& arguments, const std::string& name, double& value,
                                       double least, double most, const std::string& explanation) {
  return addSwitch(arguments, name, "NUMBER", explanation,
                   [&value, name, least, most](const std::string& text) {
                     const auto number = NumberText::real(text);
                     if (!number || *number < least || *number > most)
                       throw WrongUse(name + ": " + quoted(text) + " is no number from " +
                                      Numbers::shortest(least) + " to " + Numbers::shortest(most));
                     value = *number;
                   });
}

CLI::Option& Lab::Arguments::addCount(CLI::App& arguments, const std::string& name,
                                      std::uint64_t& value, std::uint64_t least, std::uint64_t most,
                                      const std::string& explanation) {
  return addSwitch(arguments, name, "NUMBER", explanation,
                   [&value, name, least, most](const std::string& text) {
                     const auto number = NumberText::natural(text);
                     if (!number || *number < least || *number > most)
                       throw WrongUse(name + ": " + quoted(text) + " is no whole number from " +
                                      std::to_string(least) + " to " + std::to_string(most));
                     value = *number;
                   });
}

void Lab::Arguments::addPath(CLI::App& arguments, const std::string& placeholder, std::string& path,
                             const std::string& explanation) {
  arguments.add_option(placeholder, path, explanation)->required()->type_name("");
}

void Lab::Arguments::addOptionalPath(CLI::App& arguments, const std::string& placeholder,
                                     std::string& path, const std::string& explanation) {
  arguments.add_option(placeholder, path, explanation)->type_name("");
}

ProfileLocation Lab::Arguments::recordLocation() {
  auto location = ProfileLocation::find(Environment::ofProcess());
  if (!location)
    throw Failure(std::string("there is no practice record: ") + ProfileLocation::noDirectory);
  return *std::move(location);
}

Stored Lab::Arguments::readRecord(const ProfileLocation& location) {
  if (auto record = RecordFile::load(location))
    return *std::move(record);
  for (const auto& file : {location.file(), location.earlierFile.value_or(location.file())})
    if (Folders::exists(file))
      throw Failure("the record cannot be read: " + file.string());
  return {};
}

} // namespace velto
