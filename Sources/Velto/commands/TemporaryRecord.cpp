#include "TemporaryRecord.h"

#include "Environment.h"
#include "Folders.h"
#include "UUID.h"

namespace velto {

namespace {

constexpr const char* variable = "VELTO_PROFILE_DIR";

} // namespace

TemporaryRecord::TemporaryRecord(std::string_view prefix)
    : folder_(Folders::temporary() / (std::string(prefix) + UUID::random().string())),
      earlier_(Environment::ofProcess().variable(variable)) {
  Environment::setVariable(variable, folder_.string());
}

TemporaryRecord::~TemporaryRecord() {
  Environment::setVariable(variable, earlier_);
  Folders::remove(folder_);
}

} // namespace velto
