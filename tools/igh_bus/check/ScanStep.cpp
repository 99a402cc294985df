#include "check/Steps.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <igh_master.h>

namespace igh_bus::check {
namespace {

// The library's scan without configuration and activation.
class LibraryScan {
public:
  explicit LibraryScan(const CheckOptions& options) : m_master(options.master) {
    igh_master_initialize_ex(m_master, options.periodNs, false, false);
    for (const auto& path : options.descriptions)
      igh_master_append_eni(m_master, path.c_str());
    igh_master_scan(m_master, &m_count);
  }
  ~LibraryScan() { igh_master_uninitialize(m_master); }
  LibraryScan(const LibraryScan&) = delete;
  LibraryScan& operator=(const LibraryScan&) = delete;

  std::uint32_t count() const { return m_count; }
  bool agrees(const ec_slave_info_t& info) const {
    std::uint32_t product = 0;
    std::uint32_t revision = 0;
    return igh_master_get_slave_product_code(m_master, info.position, &product) &&
           igh_master_get_slave_revision_code(m_master, info.position, &revision) &&
           product == info.product_code && revision == info.revision_number;
  }

private:
  StdoutSilencer m_silence;
  std::uint16_t m_master;
  std::uint32_t m_count = 0;
};

std::string identity(const ec_slave_info_t& info) {
  return format("vendor 0x%08X, product 0x%08X, revision 0x%08X, serial %u", info.vendor_id,
                info.product_code, info.revision_number, info.serial_number);
}

} // namespace

void checkScan(const CheckedBus& bus, Line& line) {
  const LibraryScan scan(bus.options);
  std::size_t described = 0;
  std::size_t wrong = scan.count() == bus.slaves.size() ? 0 : 1;
  for (const auto& [info, device] : bus.slaves) {
    described += device ? 1 : 0;
    const bool agrees = scan.agrees(info);
    wrong += agrees && info.alias == 0 ? 0 : 1;
    line.details.push_back(
        bus.name(info.position) + ": " + identity(info) + ", " +
        (device ? "description " + device->typeName : "no description") +
        (agrees ? "" : ", the library has another one here") +
        (info.alias == 0 ? ""
                         : format(", alias %u: stays offline on the real master", unsigned{info.alias})));
  }
  line.judge(wrong == 0 && described == bus.slaves.size(),
             format("%u slaves, the master lists %zu; %zu of them have a description", scan.count(),
                    bus.slaves.size(), described));
}

} // namespace igh_bus::check
