#include "interface/Invoke.h"

#include <cstdio>

namespace ethercat_simulation {

void chargeBadHandle(Call call, const void* handle) {
  const Handle* known = Handles::instance().find(handle);
  Master* culprit = known != nullptr ? known->owner : Registry::instance().culprit();
  if (culprit == nullptr) {
    return;
  }
  const bool dead = handle == nullptr || Handles::instance().isForgotten(handle) ||
                    (known != nullptr && known->object == nullptr);
  if (dead) {
    culprit->recorder().addDeadHandle(call, handle == nullptr);
  } else {
    culprit->recorder().addForeignHandle(call);
  }
}

Master* findMaster(unsigned int index) {
  bool explained = false;
  Master* master = Registry::instance().find(index, &explained);
  if (master == nullptr && !explained) {
    std::fprintf(stderr, "Failed to open master %u: there is no simulated bus of this index.\n", index);
  }
  return master;
}

bool needsNoReservation(Call call) {
  switch (call) {
  case Call::releaseMaster:
  case Call::getSlave:
  case Call::getSyncManager:
  case Call::getPdo:
  case Call::getPdoEntry:
  case Call::masterState:
  case Call::linkState:
  case Call::sdoUpload:
  case Call::sdoDownload:
  case Call::sdoDownloadComplete:
    return true;
  default:
    return false;
  }
}

std::string resultText(Nothing /*result*/) {
  return {};
}

std::string resultText(int result) {
  return std::to_string(result);
}

std::string resultText(std::size_t result) {
  return std::to_string(result);
}

std::string resultText(const ec_slave_config_t* result) {
  return placeText(result);
}

std::string resultText(const ec_domain_t* result) {
  const Handle* handle = Handles::instance().find(result);
  return handle == nullptr ? "NULL" : std::to_string(static_cast<const Domain*>(handle->object)->number());
}

std::string resultText(const ec_sdo_request_t* result) {
  const Handle* handle = Handles::instance().find(result);
  return handle == nullptr ? "NULL" : static_cast<const SdoRequest*>(handle->object)->place();
}

std::string resultText(ec_request_state_t result) {
  return std::to_string(static_cast<int>(result));
}

std::string resultText(const std::uint8_t* result) {
  return result == nullptr ? "NULL" : "memory";
}

std::string placeText(const ec_slave_config_t* configuration) {
  const Handle* handle = Handles::instance().find(configuration);
  if (handle == nullptr) {
    return configuration == nullptr ? "NULL" : "?";
  }
  return handle->object == nullptr || handle->kind != HandleKind::slaveConfiguration
             ? "?"
             : static_cast<const SlaveConfiguration*>(handle->object)->place();
}

std::string hexText(std::uint32_t value, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*X", digits, value);
  return text;
}

} // namespace ethercat_simulation
