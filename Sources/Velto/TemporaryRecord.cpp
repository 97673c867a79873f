#include "TemporaryRecord.h"

#include "UUID.h"

#include <cstdlib>
#include <stdlib.h>
#include <system_error>

namespace velto {

namespace {

constexpr const char* variable = "VELTO_PROFILE_DIR";

std::filesystem::path temporaryDirectory() {
  std::error_code error;
  const auto directory = std::filesystem::temp_directory_path(error);
  return error ? "/tmp" : directory;
}

} // namespace

TemporaryRecord::TemporaryRecord(std::string_view prefix)
    : folder_(temporaryDirectory() / (std::string(prefix) + UUID::random().string())) {
  if (const char* value = std::getenv(variable))
    earlier_ = value;
  setenv(variable, folder_.c_str(), 1);
}

TemporaryRecord::~TemporaryRecord() {
  if (earlier_)
    setenv(variable, earlier_->c_str(), 1);
  else
    unsetenv(variable);
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

} // namespace velto
