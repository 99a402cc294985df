#include "master/Recorder.h"

namespace ethercat_simulation {

namespace {

constexpr std::size_t MISUSE_LINES = 100;

constexpr std::array<const char*, CALL_KINDS> CALL_NAMES{
    "ecrt_request_master",
    "ecrt_release_master",
    "ecrt_open_master",
    "ecrt_master_get_slave",
    "ecrt_master_get_sync_manager",
    "ecrt_master_get_pdo",
    "ecrt_master_get_pdo_entry",
    "ecrt_master_slave_config",
    "ecrt_slave_config_pdos",
    "ecrt_slave_config_dc",
    "ecrt_slave_config_state",
    "ecrt_master_create_domain",
    "ecrt_domain_reg_pdo_entry_list",
    "ecrt_domain_data",
    "ecrt_domain_size",
    "ecrt_domain_process",
    "ecrt_domain_queue",
    "ecrt_domain_state",
    "ecrt_master_activate",
    "ecrt_master_deactivate",
    "ecrt_master_receive",
    "ecrt_master_send",
    "ecrt_master_state",
    "ecrt_master_link_state",
    "ecrt_master_application_time",
    "ecrt_master_sync_reference_clock",
    "ecrt_master_sync_slave_clocks",
    "ecrt_master_reference_clock_time",
    "ecrt_master_select_reference_clock",
    "ecrt_slave_config_create_sdo_request",
    "ecrt_slave_config_create_sdo_request_complete",
    "ecrt_sdo_request_timeout",
    "ecrt_sdo_request_state",
    "ecrt_sdo_request_read",
    "ecrt_sdo_request_write",
    "ecrt_sdo_request_data",
    "ecrt_sdo_request_data_size",
    "ecrt_master_sdo_upload",
    "ecrt_master_sdo_download",
    "ecrt_master_sdo_download_complete",
    "open",
    "close",
    "ioctl",
};

} // namespace

const char* callName(Call call) {
  return CALL_NAMES[static_cast<std::size_t>(call)];
}

void Recorder::orderFailure(Call call, int result, unsigned int after) {
  m_orders[static_cast<std::size_t>(call)].push_back({result, after});
  m_armed |= std::uint64_t{1} << static_cast<unsigned int>(call);
}

bool Recorder::takeOrder(Call call, int* result) {
  auto& orders = m_orders[static_cast<std::size_t>(call)];
  if (orders.front().after > 0) {
    --orders.front().after;
    return false;
  }
  *result = orders.front().result;
  orders.pop_front();
  if (orders.empty()) {
    m_armed &= ~(std::uint64_t{1} << static_cast<unsigned int>(call));
  }
  return true;
}

void Recorder::addOutOfOrder(Call call, bool active) {
  ++m_misuse.outOfOrder;
  addLine(std::string(callName(call)) + " was called while the master was " +
          (active ? "active." : "not active."));
}

void Recorder::addBusyRequest(Call call, const char* which) {
  ++m_misuse.outOfOrder;
  addLine(std::string(callName(call)) + " was called while " + which + " request was busy.");
}

void Recorder::addDeadHandle(Call call, bool isNull) {
  ++m_misuse.deadHandle;
  addLine(std::string(callName(call)) + " was called with a " +
          (isNull ? "null handle." : "handle that has been freed."));
}

void Recorder::addForeignHandle(Call call) {
  ++m_misuse.foreignHandle;
  addLine(std::string(callName(call)) + " was called with a handle that does not belong there.");
}

void Recorder::addLine(const std::string& line) {
  if (m_misuse.lines.size() < MISUSE_LINES) {
    m_misuse.lines.push_back(line);
  }
}

void Recorder::addTrace(Call call, const std::string& arguments, const std::string& result) {
  std::string text = std::string(callName(call)) + "(" + arguments + ")";
  if (!result.empty()) {
    text += " = " + result;
  }
  m_trace.push_back({call, std::move(text)});
}

} // namespace ethercat_simulation
