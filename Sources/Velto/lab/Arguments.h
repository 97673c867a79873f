// Arguments that several commands take.
//
// The functions that add an argument declare it and store its value when it is parsed: the place
// must live until then. Values are checked strictly; wrong ones are reported as WrongUse.
#pragma once

#include "Drill.h"
#include "ProfileLocation.h"
#include "Record.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace velto::Lab::Arguments {

// A switch without a value.
void addFlag(CLI::App& arguments, const std::string& name, bool& isWanted,
             const std::string& explanation);
// --json: print JSON instead of words.
void addJSON(CLI::App& arguments, bool& isWanted);

// --drill and --material. A material is called "pink", "drums" or "pad".
CLI::Option& addDrill(CLI::App& arguments, Drill& drill, const std::string& explanation);
CLI::Option& addMaterial(CLI::App& arguments, std::optional<Material>& material,
                         const std::string& explanation);

// A switch with a number between two bounds, inclusive. Decimal digits, with a point if need be.
CLI::Option& addNumber(CLI::App& arguments, const std::string& name, double& value, double least,
                       double most, const std::string& explanation);
// Same for whole numbers.
CLI::Option& addCount(CLI::App& arguments, const std::string& name, std::uint64_t& value,
                      std::uint64_t least, std::uint64_t most, const std::string& explanation);

// A required argument without a switch, called `placeholder` in the help.
void addPath(CLI::App& arguments, const std::string& placeholder, std::string& path,
             const std::string& explanation);

// Same, but may be left out.
void addOptionalPath(CLI::App& arguments, const std::string& placeholder, std::string& path,
                     const std::string& explanation);

// Where the practice record is. Throws Failure if there is no usable folder.
[[nodiscard]] ProfileLocation recordLocation();
// The record that Velto would load, with what only copies hold after an unclean end; an empty one
// if there is none. Throws Failure if it cannot be read. Changes nothing on the disk.
[[nodiscard]] Stored readRecord(const ProfileLocation& location);

} // namespace velto::Lab::Arguments
