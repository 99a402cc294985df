// By the library's requests, as an application transfers.
#include "sdo/SdoTransfer.h"

#include "bus/Session.h"
#include "host/RealTime.h"
#include "text/Failure.h"
#include "text/Redirection.h"
#include "text/Text.h"

#include <chrono>
#include <cstdio>

namespace igh_bus {
namespace {

using Clock = std::chrono::steady_clock;

// A slave has a second to answer before the master gives up. Once the bus stands still in OP, what is not
// done after that time was refused at least once.
constexpr std::uint64_t PATIENCE_CYCLES = 1000;
constexpr std::uint32_t OP = 8;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// The transfer as a request of the library.
class Request {
public:
  Request(std::uint16_t master, SdoTransfer& transfer);
  void create();
  void arm();
  // Withdraws the transfer; the library has the buffers no more.
  void destroy() const { igh_master_destroy_sdo_request(m_master, m_handle, m_transfer.read); }
  bool done() const { return m_done; }
  // Once it is done: what was read.
  void take();

private:
  bool armTyped();
  bool armRaw();

  std::uint16_t m_master;
  SdoTransfer& m_transfer;
  std::vector<double> m_values; // of a type
  std::uint32_t m_handle = 0;
  bool m_done = false;
};

Request::Request(std::uint16_t master, SdoTransfer& transfer) : m_master(master), m_transfer(transfer) {
  transfer.bytes.resize(transfer.size.value_or(static_cast<std::uint32_t>(transfer.bytes.size())));
  if (transfer.type)
    m_values = decode(*transfer.type, transfer.bytes);
}

void Request::create() {
  const auto& [slave, index, subindex, complete, read, type, wanted, bytes] = m_transfer;
  constexpr std::int32_t NO_LIMIT = 0; // the deadline is kept here
  const auto size = static_cast<std::uint32_t>(bytes.size());
  const bool created = type ? igh_master_create_sdo_request_ex(m_master, slave, index, subindex, type->id,
                                                               static_cast<std::uint32_t>(m_values.size()),
                                                               NO_LIMIT, read, &m_handle)
                       : complete ? igh_master_create_raw_sdo_request_complete(m_master, slave, index, size,
                                                                               NO_LIMIT, read, &m_handle)
                                  : igh_master_create_raw_sdo_request(m_master, slave, index, subindex, size,
                                                                      NO_LIMIT, read, &m_handle);
  if (!created)
    throw Failure(busError, format("the master refused a request for slave %u", slave));
}

bool Request::armTyped() {
  const auto count = static_cast<std::uint32_t>(m_values.size());
  return m_transfer.read ? igh_master_sdo_recv_ex(m_master, m_handle, m_values.data(), count, &m_done)
                         : igh_master_sdo_send_ex(m_master, m_handle, m_values.data(), count, &m_done);
}

bool Request::armRaw() {
  auto& bytes = m_transfer.bytes;
  const auto size = static_cast<std::uint32_t>(bytes.size());
  return m_transfer.read ? igh_master_raw_sdo_recv(m_master, m_handle, bytes.data(), size, &m_done)
                         : igh_master_raw_sdo_send(m_master, m_handle, bytes.data(), size, &m_done);
}

void Request::take() {
  if (m_done && m_transfer.read && m_transfer.type)
    m_transfer.bytes = encode(*m_transfer.type, m_values);
}

void Request::arm() {
  if (!(m_transfer.type ? armTyped() : armRaw()))
    throw Failure(busError,
                  m_transfer.read
                      ? "the library refused the read"
                      : "the library refused the write: after a short answer it takes a read that is "
                        "answered in full, or a new activation");
}

// False when the transfer was not done in time.
bool transferInCycle(const ScanOptions& options, double timeoutSeconds, SdoTransfer& transfer) {
  const StdoutSilencer silence; // the library tells of each step
  const StopSignals signals;
  RunOptions running;
  static_cast<ScanOptions&>(running) = options;
  Request request(options.master, transfer);
  Session session(running, [&] { request.create(); });
  request.arm();
  Pacemaker pacemaker(running.periodNs);
  const auto start = Clock::now();
  std::uint64_t cyclesInOp = 0;
  while (!request.done() && cyclesInOp < PATIENCE_CYCLES && secondsSince(start) < timeoutSeconds &&
         pacemaker.wait())
    cyclesInOp = session.exchange() == OP ? cyclesInOp + 1 : 0;
  request.destroy();
  request.take();
  if (!request.done() && StopSignals::requested())
    throw Failure(busError, "ended by a signal before the transfer was done");
  return request.done();
}

} // namespace

void transferByLibrary(const ScanOptions& options, double timeoutSeconds, SdoTransfer& transfer) {
  const auto start = Clock::now();
  const bool done = transferInCycle(options, timeoutSeconds, transfer);
  if (done && (!transfer.read || transfer.complete))
    return;
  const OpenedMaster master(options.master); // the library does not hold it now
  auto answer = callSlave(master, transfer);
  const auto refusal = refusalText(transfer, answer, secondsSince(start));
  if (done && !refusal.empty()) { // a platform without these calls, for instance
    std::fprintf(stderr, "igh_bus: the length of the answer could not be checked: %s\n", refusal.c_str());
    return;
  }
  if (!refusal.empty())
    throw Failure(busError, refusal);
  if (!transfer.read)
    return; // written by now
  if (transfer.complete)
    throw Failure(busError,
                  format("slave %u did not give %s by complete access: it is longer than --count, or the "
                         "slave does not serve that",
                         transfer.slave, transfer.object().c_str()));
  // A short answer is a success for the library, and the rest of the buffer is zeros.
  checkLength(transfer, answer.bytes);
  transfer.bytes = done ? transfer.bytes : answer.bytes;
}

} // namespace igh_bus
