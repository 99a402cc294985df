// ecrt_sdo_request_*.
#include "interface/Invoke.h"

using namespace ethercat_simulation;

namespace {

void start(Call call, ec_sdo_request_t* handle) {
  const auto work = [&](Master& master, SdoRequest& request) {
    if (request.isBusy()) {
      master.recorder().addBusyRequest(call, "the");
    }
    request.start(call == Call::sdoRead, master.time().now());
    return Nothing{};
  };
  invoke<SdoRequest>(call, handle, Nothing{}, work, NoArguments());
}

} // namespace

void ecrt_sdo_request_timeout(ec_sdo_request_t* req, uint32_t timeout) {
  const auto work = [&](SdoRequest& request) {
    request.setTimeout(timeout);
    return Nothing{};
  };
  invoke<SdoRequest>(Call::sdoTimeout, req, Nothing{}, work, [&](const SdoRequest& request) {
    return request.place() + ", " + std::to_string(timeout);
  });
}

ec_request_state_t ecrt_sdo_request_state(ec_sdo_request_t* req) {
  return invoke<SdoRequest>(
      Call::sdoState, req, EC_REQUEST_ERROR,
      [](Master& master, SdoRequest& request) {
        master.catchUp();
        return request.state();
      },
      NoArguments());
}

void ecrt_sdo_request_read(ec_sdo_request_t* req) {
  start(Call::sdoRead, req);
}

void ecrt_sdo_request_write(ec_sdo_request_t* req) {
  start(Call::sdoWrite, req);
}

uint8_t* ecrt_sdo_request_data(ec_sdo_request_t* req) {
  return invoke<SdoRequest, std::uint8_t*>(
      Call::sdoData, req, nullptr, [](SdoRequest& request) { return request.data(); }, NoArguments());
}

size_t ecrt_sdo_request_data_size(const ec_sdo_request_t* req) {
  return invoke<SdoRequest>(
      Call::sdoDataSize, req, std::size_t{0}, [](const SdoRequest& request) { return request.dataSize(); },
      NoArguments());
}
