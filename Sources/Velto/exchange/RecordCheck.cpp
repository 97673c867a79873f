#include "RecordCheck.h"

#include "Coding.h"
#include "SafeFile.h"

namespace velto {

RecordCheck RecordCheck::of(const std::filesystem::path& file) {
  using enum SafeFile::Reading::State;
  const SafeFile::Reading reading = SafeFile::read(file);
  RecordCheck check{.file = file, .exists = reading.state != missing, .answers = std::nullopt};
  if (reading.state == complete)
    if (const auto stored = Coding::decodeStored(reading.bytes))
      check.answers = stored->attempts.size();
  return check;
}

} // namespace velto
