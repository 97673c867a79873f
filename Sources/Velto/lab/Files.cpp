#include "Files.h"

#include "Command.h"
#include "Console.h"
#include "WholeFile.h"

#include <cerrno>
#include <cstring>

namespace velto {

std::string Lab::Files::read(const std::string& path) {
  WholeFile::Reading reading = WholeFile::read(path);
  if (reading.error == EBUSY)
    throw Failure(path + ": the file changed while it was read");
  if (reading.error != 0)
    throw Failure(path + ": " + std::strerror(reading.error));
  return std::move(reading.bytes);
}

void Lab::Files::write(const std::string& path, std::string_view bytes) {
  if (path == "-")
    Console::print(bytes);
  else if (const int error = WholeFile::write(path, bytes); error != 0)
    throw Failure(path + ": " + std::strerror(error));
}

} // namespace velto
