#include "TemporaryRecord.h"

#include "System.h"
#include "UUID.h"

#include <cstdlib>
#include <system_error>

namespace velto {

namespace {

constexpr const char* variable = "VELTO_PROFILE_DIR";

} // namespace

TemporaryRecord::TemporaryRecord(std::string_view prefix)
    : folder_(System::temporaryDirectory() / (std::string(prefix) + UUID::random().string())) {
  if (const char* value = std::getenv(variable))
    earlier_ = value;
  System::setVariable(variable, folder_.string());
}

TemporaryRecord::~TemporaryRecord() {
  System::setVariable(variable, earlier_);
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

} // namespace velto
