#include "bus/Session.h"

#include "text/Failure.h"
#include "text/Redirection.h"
#include "text/Text.h"

#include <cmath>

namespace igh_bus {
namespace {

void countError(unsigned int, unsigned int slave, int code, void* counts) {
  static_cast<ErrorCounts*>(counts)->count(slave, code);
}

void countCallback(void* callbacks) {
  ++*static_cast<std::uint64_t*>(callbacks);
}

} // namespace

Session::Session(const RunOptions& options, const std::function<void()>& prepare) : m_options(options) {
  try {
    bringUp(prepare);
  } catch (...) {
    end();
    throw;
  }
}

Session::~Session() {
  end();
}

void Session::bringUp(const std::function<void()>& prepare) {
  const auto id = m_options.master;
  if (!igh_master_initialize_ex(id, m_options.periodNs, !m_options.withoutClocks, m_options.followReference))
    throw Failure(usageError, "the period was refused");
  igh_master_set_dc_debug_enable(id, m_options.followReference);
  igh_master_set_exchange_mode(id, m_options.exchangeMode);
  igh_master_set_error_callback(id, countError, &m_errors);
  for (const auto& path : m_options.descriptions) {
    if (!igh_master_append_eni(id, path.c_str()))
      throw Failure(usageError, path + ": cannot be loaded");
  }
  {
    const StdoutSilencer silence(!m_options.listing);
    if (!igh_master_scan(id, nullptr))
      throw Failure(busError, "the scan found no slave");
  }
  igh_master_config_all_slave(id);
  m_lastWatched.reserve(m_options.watches.size()); // filled between two cycles
  for (const auto& watch : m_options.watches)
    createHandle(watch, true);
  for (const auto& setting : m_options.settings)
    igh_master_pdo_send(id, createHandle(setting.address, false), setting.value);
  if (prepare)
    prepare();
  if (!igh_master_active(id))
    throw Failure(busError, "the master could not be activated");
}

void Session::reactivate() const {
  if (!igh_master_active(m_options.master))
    throw Failure(busError, "the master could not be activated again");
}

std::uint32_t Session::createHandle(const EntryAddress& address, bool read) {
  std::uint32_t handle = 0;
  if (!igh_master_create_pdo_info(m_options.master, address.slave, address.entry.c_str(), read, &handle))
    throw Failure(usageError, format("slave %u has no entry \"%s\"", address.slave, address.entry.c_str()));
  m_handles.push_back({handle, read});
  return handle;
}

void Session::end() {
  for (const auto& handle : m_handles)
    igh_master_destroy_pdo_info(m_options.master, handle.id, handle.read);
  igh_master_uninitialize(m_options.master);
}

std::uint32_t Session::exchange() {
  igh_master_exchange(m_options.master, countCallback, &m_callbacks);
  ++m_errors.cycle;
  std::uint32_t state = 0;
  igh_master_get_state(m_options.master, &state);
  return state;
}

void Session::closeBooks() {
  for (std::size_t i = 0; i < m_options.watches.size(); ++i)
    m_lastWatched.push_back(watched(i));
  for (const auto index : {COMM_DIAG_LAST, COMM_DIAG_MIN, COMM_DIAG_MAX})
    m_lastRecords.at(index) = record(index);
  igh_master_set_error_callback(m_options.master, nullptr, nullptr);
  m_closed = true;
}

void Session::exchangeUncounted() const {
  igh_master_exchange(m_options.master, nullptr, nullptr);
}

double Session::watched(std::size_t number) const {
  if (m_closed)
    return m_lastWatched[number];
  double value = NAN;
  igh_master_pdo_recv(m_options.master, m_handles[number].id, &value);
  return value;
}

std::int64_t Session::clockOffsetNs() const {
  std::uint64_t offset = 0;
  igh_master_get_system_base_offset(m_options.master, &offset);
  return static_cast<std::int64_t>(offset);
}

_ETHERCAT_COMM_DIAG_INFO Session::record(COMM_DIAG_INDEX index) const {
  if (m_closed)
    return m_lastRecords.at(index);
  _ETHERCAT_COMM_DIAG_INFO info{};
  igh_master_get_comm_diag_info(m_options.master, index, &info);
  return info;
}

} // namespace igh_bus
