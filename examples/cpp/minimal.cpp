// The whole order for one servo drive: description file in, position out and back, 2000 cycles of 1 ms.
#include <igh_master.hpp>

#include <cstdio>
#include <thread>

namespace {

constexpr std::uint32_t DRIVE_PRODUCT_CODE = 0x500;
constexpr int CYCLES = 2000;
constexpr std::chrono::milliseconds PERIOD(1);

int failed(const char* what) {
  std::fprintf(stderr, "minimal: %s\n", what);
  return 1;
}

// Scan order is bus order: looks for the first drive.
std::optional<std::uint32_t> findDrive(const igh_master::Master& master, std::uint32_t slaves) {
  for (std::uint32_t slave = 0; slave < slaves; ++slave) {
    if (master.productCode(slave) == DRIVE_PRODUCT_CODE) {
      return slave;
    }
  }
  return std::nullopt;
}

int run(igh_master::Master& master, const char* description) {
  if (!master.load(description)) {
    return failed("the description file was not loaded");
  }
  const auto slaves = master.scan();
  const auto drive = findDrive(master, slaves.value_or(0));
  if (!drive) {
    return failed("no drive on the bus");
  }
  auto target = master.output(*drive, "Target position");
  auto actual = master.input(*drive, "Position actual value");
  if (!target || !actual) {
    return failed("the drive's description lacks an entry");
  }
  if (!master.configure() || !master.activate()) {
    return failed("the master was not activated");
  }
  auto wake = std::chrono::steady_clock::now();
  for (int cycle = 0; cycle < CYCLES; ++cycle) {
    std::this_thread::sleep_until(wake += PERIOD);
    target->set(cycle); // leaves with this exchange
    master.exchange();
  }
  std::printf("Position actual value: %.0f\nAL state: %u\n", actual->get(), unsigned{master.state()});
  return master.state() == igh_master::OP ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    return std::fprintf(stderr, "usage: %s DESCRIPTION.xml\n", argv[0]), 2;
  }
  auto master = igh_master::Master::open(0, PERIOD);
  return master ? run(*master, argv[1]) : failed("no master");
}
