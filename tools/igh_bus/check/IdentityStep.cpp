#include "check/Steps.h"
#include "sdo/SdoTransfer.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <chrono>
#include <igh_master.h>

namespace igh_bus::check {
namespace {

constexpr std::uint16_t IDENTITY = 0x1018;
constexpr double PATIENCE_SECONDS = 2; // an answer takes some 30 ms, and a refused transfer never ends
constexpr const char* NAMES[] = {"vendor", "product", "revision", "serial"};
constexpr std::size_t SERIAL = 3;

// A request fails without a reason: the slave is asked again, by the call that gives it.
std::string reasonOf(Bench& bench, std::uint16_t master, std::uint16_t slave, std::size_t part) {
  std::string reason = "ended by a signal";
  if (StopSignals::requested())
    return reason;
  SdoTransfer transfer;
  transfer.slave = slave;
  transfer.index = IDENTITY;
  transfer.subindex = static_cast<std::uint8_t>(part + 1);
  bench.beside([&] {
    const OpenedMaster opened(master);
    const auto start = std::chrono::steady_clock::now();
    const auto answer = callSlave(opened, transfer);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    reason = refusalText(transfer, answer, passed.count());
    if (reason.empty())
      reason = "outside the cycle the slave gives " + hexPairs(answer.bytes);
  });
  return reason;
}

} // namespace

void IdentityCheck::createRequests() {
  m_requests.clear();
  for (const auto slave : m_bus.withObjects) {
    auto& requests = m_requests.emplace_back();
    for (std::size_t part = 0; part < requests.size(); ++part) {
      if (!igh_master_create_sdo_request(m_bus.options.master, slave, IDENTITY,
                                         static_cast<std::uint8_t>(part + 1), DATA_TYPE_UDINT, 0, true,
                                         &requests[part]))
        throw Failure(busError, "the master refused a request for " + m_bus.name(slave));
    }
  }
}

std::optional<double> IdentityCheck::read(Bench& bench, std::uint32_t request) const {
  double value = 0;
  bool done = false;
  igh_master_sdo_recv(m_bus.options.master, request, &value, &done);
  for (auto left = m_bus.cyclesOf(PATIENCE_SECONDS); left > 0 && !done && bench.step(); --left) {
  }
  igh_master_destroy_sdo_request(m_bus.options.master, request, true);
  return done ? std::optional(value) : std::nullopt;
}

// The serial number is told, and not judged: many slaves have none, or one in a single place only.
void IdentityCheck::compare(Bench& bench, std::uint16_t slave, const Parts& requests, Line& line) {
  const auto& info = m_bus.slaves[slave].info;
  const std::uint32_t scanned[] = {info.vendor_id, info.product_code, info.revision_number,
                                   info.serial_number};
  std::string text;
  bool same = true;
  for (std::size_t part = 0; part < requests.size(); ++part) {
    const auto value = read(bench, requests[part]);
    const bool differs = !value || *value != scanned[part];
    same = same && (!differs || part == SERIAL);
    if (!value)
      text += format(", %s not read within %.0f s: ", NAMES[part], PATIENCE_SECONDS) +
              reasonOf(bench, m_bus.options.master, slave, part);
    else
      text += format(", %s 0x%08X", NAMES[part], static_cast<std::uint32_t>(*value)) +
              (differs ? format(" (scan 0x%08X)", scanned[part]) : "");
    if (!value && part != SERIAL)
      break;
  }
  m_wrong += same ? 0 : 1;
  line.details.push_back(m_bus.name(slave) + ": " + text.substr(2));
}

void IdentityCheck::check(Bench& bench, Line& line) {
  for (std::size_t i = 0; i < m_requests.size(); ++i)
    compare(bench, m_bus.withObjects[i], m_requests[i], line);
  line.judge(m_wrong == 0, format("%zu of %zu slaves tell what the scan found", m_requests.size() - m_wrong,
                                  m_requests.size()));
}

} // namespace igh_bus::check
