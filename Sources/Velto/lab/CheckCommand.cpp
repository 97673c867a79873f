#include "CheckCommand.h"

#include "Arguments.h"
#include "Console.h"
#include "RecordCheck.h"

#include <memory>

namespace velto {

Lab::Action Lab::declareCheck(CLI::App& arguments) {
  const auto asJSON = std::make_shared<bool>(false);
  Arguments::addJSON(arguments, *asJSON);
  return [asJSON] {
    const RecordCheck check = RecordCheck::of(Arguments::recordLocation());
    Console::print(*asJSON ? check.json() : check.words());
    if (!check.passes())
      throw Failure(check.file.string() + ": the record cannot be used as it is");
  };
}

} // namespace velto
