#include "CheckCommand.h"

#include "Arguments.h"
#include "Console.h"
#include "JSONWriter.h"
#include "RecordCheck.h"

#include <cstdint>
#include <memory>
#include <string>

namespace velto {

namespace {

std::string json(const RecordCheck& check) {
  JSON::Writer writer;
  writer.beginObject();
  writer.key("file");
  writer.string(check.file.string());
  writer.key("exists");
  writer.boolean(check.exists);
  writer.key("readable");
  writer.boolean(check.answers.has_value());
  if (check.answers) {
    writer.key("answers");
    writer.integer(static_cast<std::uint64_t>(*check.answers));
  }
  writer.endObject();
  return writer.finish().value() + "\n";
}

std::string words(const RecordCheck& check) {
  const std::string file = check.file.string();
  if (!check.exists)
    return file + ": no record yet\n";
  if (!check.answers)
    return file + ": cannot be read\n";
  return file + ": " + std::to_string(*check.answers) + " answers\n";
}

} // namespace

Lab::Action Lab::declareCheck(CLI::App& arguments) {
  const auto asJSON = std::make_shared<bool>(false);
  Arguments::addJSON(arguments, *asJSON);
  return [asJSON] {
    const RecordCheck check = RecordCheck::of(Arguments::recordLocation().file());
    Console::print(*asJSON ? json(check) : words(check));
    if (check.exists && !check.answers)
      throw Failure("the record cannot be read");
  };
}

} // namespace velto
