// The way of every call of <ecrt.h> into the simulation: lock, handle, count, ordered failure, order of
// calls, work, trace.
#ifndef ETHERCAT_SIMULATION_INVOKE_H
#define ETHERCAT_SIMULATION_INVOKE_H

#include "base/Lock.h"
#include "interface/Handles.h"
#include "interface/Registry.h"

#include <cerrno>

namespace ethercat_simulation {

// Result of a void call.
struct Nothing {};

// What a call answers to a dead or foreign handle; the real master would say EPERM, where it does not crash.
constexpr int BAD_HANDLE_RESULT = -EPERM;

void chargeBadHandle(Call call, const void* handle);

// Null, and told on standard error, when there is no master of this index.
Master* findMaster(unsigned int index);

// Whether the call is served on a master that was opened and not reserved.
bool needsNoReservation(Call call);

// Null, and counted as misuse, for anything but a living handle of this kind.
template <class Object> const Handle* resolve(Call call, const void* address) {
  const Handle* handle = Handles::instance().find(address);
  if (handle != nullptr && handle->object != nullptr) {
    const bool opened = handle->kind == HandleKind::openedMaster && kindOf<Object>() == HandleKind::master;
    if (handle->kind == kindOf<Object>() || (opened && needsNoReservation(call))) {
      return handle;
    }
  }
  chargeBadHandle(call, address);
  return nullptr;
}

template <class Result> Result orderedResult(int ordered) {
  if constexpr (std::is_pointer_v<Result>) {
    return nullptr;
  } else if constexpr (std::is_same_v<Result, Nothing>) {
    return {};
  } else {
    return static_cast<Result>(ordered);
  }
}

// Texts of the trace.
std::string resultText(Nothing result);
std::string resultText(int result);
std::string resultText(std::size_t result);
std::string resultText(const ec_slave_config_t* result);
std::string resultText(const ec_domain_t* result);
std::string resultText(const ec_sdo_request_t* result);
std::string resultText(ec_request_state_t result);
std::string resultText(const std::uint8_t* result);
std::string placeText(const ec_slave_config_t* configuration);
std::string hexText(std::uint32_t value, int digits);

// `work` does the call on the object, and on its master where it asks for both. `describe` gives the
// arguments behind the master as text; it is asked only while tracing.
template <class Object, class Result, class Work, class Describe>
Result invoke(Call call, const void* handle, Result badHandle, Work work, Describe describe) {
  const Guard guard;
  const Handle* known = resolve<Object>(call, handle);
  if (known == nullptr) {
    return badHandle;
  }
  auto& object = *static_cast<Object*>(known->object);
  Master& master = *known->owner;
  Recorder& recorder = master.recorder();
  recorder.count(call);
  // Named before the work: that may end the object.
  const std::string arguments = recorder.tracing() ? describe(object) : std::string();
  int ordered = 0;
  Result result = badHandle;
  if (recorder.shallFail(call, &ordered)) {
    result = orderedResult<Result>(ordered);
  } else {
    recorder.checkOrder(call, master.reservation().active());
    if constexpr (std::is_invocable_v<Work, Master&, Object&>) {
      result = work(master, object);
    } else {
      result = work(object);
    }
  }
  if (recorder.tracing()) {
    recorder.addTrace(call, arguments, resultText(result));
  }
  return result;
}

// The way of the two calls that give a handle of a master; take(master) makes it.
template <class Take> ec_master_t* takeMaster(Call call, unsigned int index, Take take) {
  const Guard guard;
  Master* master = findMaster(index);
  if (master == nullptr) {
    return nullptr;
  }
  Registry::instance().requested(*master);
  Recorder& recorder = master->recorder();
  recorder.count(call);
  int ordered = 0;
  ec_master_t* handle = recorder.shallFail(call, &ordered) ? nullptr : take(*master);
  if (recorder.tracing()) {
    recorder.addTrace(call, std::to_string(index), handle == nullptr ? "NULL" : "master");
  }
  return handle;
}

// For calls without arguments worth a word.
struct NoArguments {
  std::string operator()(const Master&) const { return {}; }
  std::string operator()(const SlaveConfiguration& configuration) const { return configuration.place(); }
  std::string operator()(const Domain& domain) const { return std::to_string(domain.number()); }
  std::string operator()(const SdoRequest& request) const { return request.place(); }
};

} // namespace ethercat_simulation

#endif
