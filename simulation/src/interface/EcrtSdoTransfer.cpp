// ecrt_master_sdo_*: transfers that the caller waits for. They are served also while nobody cycles.
#include "interface/Invoke.h"

using namespace ethercat_simulation;

namespace {

std::string describe(std::uint16_t position, const SdoPlace& place) {
  return std::to_string(position) + ", " + place.text();
}

// Runs transfer(dictionary, fault) on the slave of this position, when it can answer at all.
template <class Transfer>
int blocking(Master& master, std::uint16_t position, const SdoPlace& place, std::uint32_t* abortCode,
             Transfer transfer) {
  *abortCode = 0;
  master.catchUp();
  const SlaveUnit* asked = master.topology().listed(position);
  if (asked == nullptr) {
    return -EINVAL;
  }
  if (!asked->identity().coe) {
    return -EPROTONOSUPPORT;
  }
  master.slaves().waitForBus(32 * MILLISECOND);
  master.catchUp();
  SlaveUnit* unit = master.topology().listed(position); // may be gone meanwhile
  if (unit == nullptr || !unit->responding() || !unit->hasMailbox() || !master.topology().line().link()) {
    return -EIO;
  }
  const SdoFault fault = unit->dictionary().fault(place);
  if (fault == SdoFault::timeOut || fault == SdoFault::busyForEver) {
    return -ETIMEDOUT;
  }
  const SdoAbort abort = fault == SdoFault::abort ? SdoAbort::general : transfer(unit->dictionary(), fault);
  *abortCode = static_cast<std::uint32_t>(abort);
  return abort == SdoAbort::none ? 0 : -EIO;
}

int download(Call call, ec_master_t* master, std::uint16_t position, const SdoPlace& place,
             const std::uint8_t* data, std::size_t size, std::uint32_t* abortCode) {
  const auto work = [&](Master& held) {
    return size == 0 ? -EINVAL
                     : blocking(held, position, place, abortCode, [&](ObjectDictionary& objects, SdoFault) {
                         return objects.download(place, data, size);
                       });
  };
  return invoke<Master>(call, master, BAD_HANDLE_RESULT, work,
                        [&](const Master&) { return describe(position, place); });
}

} // namespace

int ecrt_master_sdo_download(ec_master_t* master, uint16_t slave_position, uint16_t index, uint8_t subindex,
                             const uint8_t* data, size_t data_size, uint32_t* abort_code) {
  return download(Call::sdoDownload, master, slave_position, {index, subindex, false}, data, data_size,
                  abort_code);
}

int ecrt_master_sdo_download_complete(ec_master_t* master, uint16_t slave_position, uint16_t index,
                                      const uint8_t* data, size_t data_size, uint32_t* abort_code) {
  return download(Call::sdoDownloadComplete, master, slave_position, {index, 0, true}, data, data_size,
                  abort_code);
}

int ecrt_master_sdo_upload(ec_master_t* master, uint16_t slave_position, uint16_t index, uint8_t subindex,
                           uint8_t* target, size_t target_size, size_t* result_size, uint32_t* abort_code) {
  const SdoPlace place{index, subindex, false};
  const auto transfer = [&](ObjectDictionary& objects, SdoFault fault) {
    const SdoAbort abort = objects.upload(place, target, target_size, result_size);
    if (abort == SdoAbort::none && fault == SdoFault::longAnswer && ++*result_size <= target_size) {
      target[*result_size - 1] = 0;
    } else if (fault == SdoFault::shortAnswer && *result_size > 0) {
      --*result_size;
    }
    return abort;
  };
  const auto work = [&](Master& held) {
    *result_size = 0;
    const int result = blocking(held, slave_position, place, abort_code, transfer);
    return result == 0 && *result_size > target_size ? -EOVERFLOW : result;
  };
  return invoke<Master>(Call::sdoUpload, master, BAD_HANDLE_RESULT, work,
                        [&](const Master&) { return describe(slave_position, place); });
}
