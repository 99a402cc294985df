// The calls that wait for the slave.
#include "bus/Patience.h"
#include "sdo/SdoAborts.h"
#include "sdo/SdoTransfer.h"
#include "text/Failure.h"
#include "text/Redirection.h"
#include "text/Text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace igh_bus {
namespace {

constexpr std::size_t LONGEST = std::size_t{1} << 20; // bytes of an answer

// Most objects are far shorter than the first buffer, so the slave is asked once.
SdoAnswer upload(ec_master_t* master, const SdoTransfer& transfer) {
  constexpr std::size_t FIRST = 4096;
  constexpr std::size_t GROWTH = 16;
  SdoAnswer answer;
  for (std::size_t room = FIRST; room <= LONGEST; room *= GROWTH) {
    std::size_t size = 0;
    answer.bytes.resize(room);
    answer.result =
        ecrt_master_sdo_upload(master, static_cast<std::uint16_t>(transfer.slave), transfer.index,
                               transfer.subindex, answer.bytes.data(), room, &size, &answer.abortCode);
    answer.bytes.resize(answer.result < 0 ? 0 : std::min(size, room));
    if (answer.result != -EOVERFLOW && answer.result != -ENOBUFS)
      break;
  }
  return answer;
}

SdoAnswer download(ec_master_t* master, const SdoTransfer& transfer) {
  SdoAnswer answer;
  const auto& bytes = transfer.bytes;
  const auto slave = static_cast<std::uint16_t>(transfer.slave);
  answer.result = transfer.complete
                      ? ecrt_master_sdo_download_complete(master, slave, transfer.index, bytes.data(),
                                                          bytes.size(), &answer.abortCode)
                      : ecrt_master_sdo_download(master, slave, transfer.index, transfer.subindex,
                                                 bytes.data(), bytes.size(), &answer.abortCode);
  return answer;
}

} // namespace

std::string SdoTransfer::object() const {
  return complete ? format("0x%04X", unsigned{index})
                  : format("0x%04X:%02X", unsigned{index}, unsigned{subindex});
}

SdoAnswer callSlave(const OpenedMaster& master, const SdoTransfer& transfer) {
  const StderrCapture capture; // the calls print that they failed, and not why
  return transfer.read ? upload(master.handle(), transfer) : download(master.handle(), transfer);
}

std::string refusalText(const SdoTransfer& transfer, const SdoAnswer& answer, double seconds) {
  const auto slave = format("slave %u ", transfer.slave);
  switch (-answer.result) {
  case 0:
    return "";
  case EPROTONOSUPPORT:
    return slave + "has no objects: its mailbox does not speak CoE";
  case EOVERFLOW:
  case ENOBUFS:
    return slave + "answered more than " + std::to_string(LONGEST) + " bytes for " + transfer.object();
  case EINTR:
    return slave +
           format("was not asked within %.1f s: an application holds the master and does not cycle", seconds);
  case EIO:
    if (answer.abortCode != 0)
      return slave + "refused " + transfer.object() + ": " + abortText(answer.abortCode) +
             format(" (abort 0x%08X)", answer.abortCode);
    [[fallthrough]];
  case ETIMEDOUT:
    return slave + "did not answer for " + transfer.object() + format(" within %.1f s", seconds);
  default:
    return slave + transfer.object() + ": " + std::strerror(-answer.result);
  }
}

void checkLength(const SdoTransfer& transfer, const Bytes& bytes) {
  const auto whole = transfer.type && transfer.type->size != 0 ? transfer.type->size : 1;
  const bool fits = transfer.size ? bytes.size() == *transfer.size : bytes.size() % whole == 0;
  if (fits && (!bytes.empty() || !transfer.type))
    return;
  const auto wanted = transfer.size ? format("asked for %u", *transfer.size)
                                    : format("%s has %u", transfer.type ? transfer.type->name : "", whole);
  throw Failure(busError, format("slave %u answered %zu bytes for %s, %s: wrong %s?", transfer.slave,
                                 bytes.size(), transfer.object().c_str(), wanted.c_str(),
                                 !transfer.type  ? "--count"
                                 : transfer.size ? "--type or --count"
                                                 : "--type"));
}

void transferByCall(const OpenedMaster& master, double timeoutSeconds, SdoTransfer& transfer) {
  const Patience patience(timeoutSeconds);
  auto answer = callSlave(master, transfer);
  const auto refusal = refusalText(transfer, answer, patience.seconds());
  if (!refusal.empty())
    throw Failure(busError, refusal);
  if (!transfer.read)
    return;
  checkLength(transfer, answer.bytes);
  transfer.bytes = std::move(answer.bytes);
}

} // namespace igh_bus
