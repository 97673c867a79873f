#include "ExportCommand.h"

#include "Arguments.h"
#include "Files.h"
#include "Folders.h"
#include "ProfileCSV.h"
#include "RecordFile.h"

#include <memory>
#include <string>

namespace velto {

Lab::Action Lab::declareExport(CLI::App& arguments) {
  const auto path = std::make_shared<std::string>();
  Arguments::addPath(arguments, "FILE.csv", *path, "where to write; - is standard output");
  return [path] {
    const ProfileLocation location = Arguments::recordLocation();
    const auto record = RecordFile::load(location);
    if (!record)
      throw Failure(location.file().string() + (Folders::exists(location.file())
                                                    ? ": the record cannot be read"
                                                    : ": there is no record"));
    Files::write(*path, ProfileCSV::write(*record));
  };
}

} // namespace velto
