#include "sdo/SdoTransfer.h"

#include "bus/Session.h"
#include "host/RealTime.h"
#include "sdo/SdoAborts.h"
#include "text/Failure.h"
#include "text/Redirection.h"
#include "text/Text.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ecrt.h>

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
  Request(std::uint16_t master, SdoTransfer& transfer) : m_master(master), m_transfer(transfer) {}
  void create();
  void arm();
  // Withdraws the transfer; the library has the buffers no more.
  void destroy() const { igh_master_destroy_sdo_request(m_master, m_handle, m_transfer.read); }
  bool done() const { return m_done; }

private:
  bool armTyped();
  bool armRaw();

  std::uint16_t m_master;
  SdoTransfer& m_transfer;
  std::uint32_t m_handle = 0;
  bool m_done = false;
};

void Request::create() {
  const auto& [slave, index, subindex, complete, read, type, values, bytes] = m_transfer;
  constexpr std::int32_t NO_LIMIT = 0; // the deadline is kept here
  const auto size = static_cast<std::uint32_t>(bytes.size());
  const bool created = type ? igh_master_create_sdo_request_ex(m_master, slave, index, subindex, type->id,
                                                               static_cast<std::uint32_t>(values.size()),
                                                               NO_LIMIT, read, &m_handle)
                       : complete ? igh_master_create_raw_sdo_request_complete(m_master, slave, index, size,
                                                                               NO_LIMIT, read, &m_handle)
                                  : igh_master_create_raw_sdo_request(m_master, slave, index, subindex, size,
                                                                      NO_LIMIT, read, &m_handle);
  if (!created)
    throw Failure(busError, format("the master refused a request for slave %u", slave));
}

bool Request::armTyped() {
  auto& values = m_transfer.values;
  const auto count = static_cast<std::uint32_t>(values.size());
  return m_transfer.read ? igh_master_sdo_recv_ex(m_master, m_handle, values.data(), count, &m_done)
                         : igh_master_sdo_send_ex(m_master, m_handle, values.data(), count, &m_done);
}

bool Request::armRaw() {
  auto& bytes = m_transfer.bytes;
  const auto size = static_cast<std::uint32_t>(bytes.size());
  return m_transfer.read ? igh_master_raw_sdo_recv(m_master, m_handle, bytes.data(), size, &m_done)
                         : igh_master_raw_sdo_send(m_master, m_handle, bytes.data(), size, &m_done);
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
bool transferByLibrary(const ScanOptions& options, double timeoutSeconds, SdoTransfer& transfer) {
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
  if (!request.done() && StopSignals::requested())
    throw Failure(busError, "ended by a signal before the transfer was done");
  return request.done();
}

struct Answer {
  int result = 0;
  std::uint32_t abortCode = 0;
  std::vector<std::uint8_t> bytes; // of a read
};

Answer callSlave(ec_master_t* master, const SdoTransfer& transfer) {
  Answer answer;
  const auto position = static_cast<std::uint16_t>(transfer.slave);
  if (transfer.read) {
    constexpr std::size_t SURPLUS = 4096; // to see how much longer an answer is
    std::size_t size = 0;
    answer.bytes.resize(transfer.size() + SURPLUS);
    answer.result =
        ecrt_master_sdo_upload(master, position, transfer.index, transfer.subindex, answer.bytes.data(),
                               answer.bytes.size(), &size, &answer.abortCode);
    answer.bytes.resize(std::min(size, answer.bytes.size()));
    return answer;
  }
  auto bytes = transfer.type ? encode(*transfer.type, transfer.values) : transfer.bytes;
  answer.result = transfer.complete
                      ? ecrt_master_sdo_download_complete(master, position, transfer.index, bytes.data(),
                                                          bytes.size(), &answer.abortCode)
                      : ecrt_master_sdo_download(master, position, transfer.index, transfer.subindex,
                                                 bytes.data(), bytes.size(), &answer.abortCode);
  return answer;
}

// The same transfer once more with the calls that wait and tell. The library does not hold the master now.
Answer ask(const ScanOptions& options, const SdoTransfer& transfer) {
  StderrCapture capture; // the calls print that they failed, and not why
  ec_master_t* master = ecrt_request_master(options.master);
  if (!master) {
    std::fputs(capture.text().c_str(), stderr);
    throw Failure(busError, format("EtherCAT master %u cannot be reserved", unsigned{options.master}));
  }
  auto answer = callSlave(master, transfer);
  ecrt_release_master(master);
  return answer;
}

void throwRefusal(const SdoTransfer& transfer, const Answer& answer, double seconds) {
  const auto slave = format("slave %u ", transfer.slave);
  if (answer.result >= 0)
    return;
  if (answer.result == -EIO && answer.abortCode != 0)
    throw Failure(busError, slave + "refused " + transfer.object() + ": " + abortText(answer.abortCode) +
                                format(" (abort 0x%08X)", answer.abortCode));
  if (answer.result == -EIO || answer.result == -ETIMEDOUT)
    throw Failure(busError,
                  slave + "did not answer for " + transfer.object() + format(" within %.1f s", seconds));
  if (answer.result == -EOVERFLOW || answer.result == -ENOBUFS)
    throw Failure(busError, slave + "answered far more bytes for " + transfer.object() +
                                format(" than the %zu that were asked for", transfer.size()));
  throw Failure(busError, slave + transfer.object() + ": " + std::strerror(-answer.result));
}

// A short answer is a success for the library, and the rest of the buffer is zeros.
void checkLength(const SdoTransfer& transfer, const Answer& answer) {
  if (answer.bytes.size() != transfer.size())
    throw Failure(busError, format("slave %u answered %zu bytes for %s, asked for %zu: wrong %s?",
                                   transfer.slave, answer.bytes.size(), transfer.object().c_str(),
                                   transfer.size(), transfer.type ? "--type or --count" : "--count"));
}

} // namespace

std::string SdoTransfer::object() const {
  return complete ? format("0x%04X", unsigned{index})
                  : format("0x%04X:%02X", unsigned{index}, unsigned{subindex});
}

void runTransfer(const ScanOptions& options, double timeoutSeconds, SdoTransfer& transfer) {
  const auto start = Clock::now();
  const bool done = transferByLibrary(options, timeoutSeconds, transfer);
  if (done && (!transfer.read || transfer.complete))
    return;
  const auto answer = ask(options, transfer);
  if (done && answer.result < 0) { // a platform without these calls, for instance
    std::fprintf(stderr, "igh_bus: the length of the answer could not be checked: %s\n",
                 std::strerror(-answer.result));
    return;
  }
  throwRefusal(transfer, answer, secondsSince(start));
  if (!transfer.read)
    return; // written by now
  if (transfer.complete)
    throw Failure(busError,
                  format("slave %u did not give %s by complete access: it is longer than --count, or the "
                         "slave does not serve that",
                         transfer.slave, transfer.object().c_str()));
  checkLength(transfer, answer);
  if (!done && transfer.type)
    transfer.values = decode(*transfer.type, answer.bytes);
  else if (!done)
    transfer.bytes = answer.bytes;
}

} // namespace igh_bus
