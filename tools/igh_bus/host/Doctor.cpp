#include "host/Doctor.h"

#include "text/Text.h"

#include <cerrno>
#include <cstring>
#include <ecrt.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace igh_bus {
namespace {

// Register and state requests of the module have the layout that this build uses. The module of stock 1.5.2,
// 27, has a layout of its own, which only a build with that header has.
bool isKnownMagic(std::uint32_t magic, std::uint32_t headerVersion) {
  constexpr std::uint32_t STOCK15 = 0x0105;
  return magic == 36 || magic == 37 || magic == 33 || (magic == 27 && headerVersion == STOCK15);
}

std::uint64_t softLimit(decltype(RLIMIT_MEMLOCK) resource) {
  rlimit limit{};
  getrlimit(resource, &limit);
  return limit.rlim_cur == RLIM_INFINITY ? ~std::uint64_t{0} : limit.rlim_cur;
}

void lookAtDevice(Facts& facts) {
  const int device = open(facts.device.c_str(), O_RDWR | O_CLOEXEC);
  if (device < 0) {
    facts.deviceError = errno;
    return;
  }
  std::uint32_t module[2] = {}; // ioctl magic, number of masters
  if (ioctl(device, 0x8008A400UL, module) == 0)
    facts.ioctlMagic = module[0];
  close(device);
}

// Stock releases leave the third number out of the word.
std::string release(std::uint32_t magic) {
  if (magic <= 0xFFFFU)
    return format("%u.%u", magic >> 8, magic & 0xFFU);
  return format("%u.%u.%u", magic >> 16, magic >> 8 & 0xFFU, magic & 0xFFU);
}

Finding build(const Facts& facts) {
  if (facts.simulated)
    return {Finding::warning, "platform", "this build runs on the simulated master and drives nothing",
            "for a real bus configure with -DIGH_MASTER_PLATFORM=ethercat"};
  return {Finding::ok, "platform", "IgH EtherCAT Master", ""};
}

Finding releases(const Facts& facts) {
  if (facts.headerVersion == facts.libraryVersion)
    return {Finding::ok, "library release", release(facts.libraryVersion) + ", as the header", ""};
  return {Finding::failure, "library release",
          "library " + release(facts.libraryVersion) + ", header " + release(facts.headerVersion),
          "build against the header of the installed library (ETHERCAT_ROOT), or check LD_LIBRARY_PATH"};
}

Finding device(const Facts& facts) {
  if (facts.simulated)
    return {Finding::ok, "device node", "not needed by the simulated master", ""};
  if (facts.deviceError != 0)
    return {Finding::failure, "device node", facts.device + ": " + std::strerror(facts.deviceError),
            facts.deviceError == EACCES
                ? "let a udev rule give your group the node: KERNEL==\"EtherCAT[0-9]*\", MODE=\"0660\""
                : "start the master: systemctl start ethercat; is MASTER0_DEVICE set in its configuration?"};
  if (!facts.ioctlMagic)
    return {Finding::failure, "device node", facts.device + " is no device of the master", "remove the file"};
  if (isKnownMagic(*facts.ioctlMagic, facts.headerVersion))
    return {Finding::ok, "device node", facts.device + format(", ioctl magic %u", *facts.ioctlMagic), ""};
  return {Finding::warning, "device node",
          facts.device + format(", unknown ioctl magic %u", *facts.ioctlMagic),
          "registers and state requests may not work with this release of the kernel module"};
}

Finding preemption(const Facts& facts) {
  if (facts.host.preemption == "PREEMPT_RT")
    return {Finding::ok, "kernel", facts.host.kernel + ", PREEMPT_RT", ""};
  return {Finding::warning, "kernel", facts.host.kernel + ", preemption: " + facts.host.preemption,
          "expect late wake-ups; install a PREEMPT_RT kernel (linux-image-rt-amd64)"};
}

Finding memory(const Facts& facts) {
  if (facts.lockableBytes == ~std::uint64_t{0})
    return {Finding::ok, "locked memory", "no limit", ""};
  return {Finding::warning, "locked memory",
          format("limit of %llu kB", static_cast<unsigned long long>(facts.lockableBytes / 1024)),
          "page faults can delay the cycle; @realtime - memlock unlimited in /etc/security/limits.d"};
}

Finding priority(const Facts& facts) {
  constexpr std::uint64_t ENOUGH = 80;
  if (facts.rtPriority >= ENOUGH)
    return {Finding::ok, "real-time priority",
            format("up to %llu", static_cast<unsigned long long>(facts.rtPriority)), ""};
  return {Finding::warning, "real-time priority",
          format("limit of %llu", static_cast<unsigned long long>(facts.rtPriority)),
          "@realtime - rtprio 98 in /etc/security/limits.d, then log in again"};
}

Finding wanted(const char* subject, const std::string& found, const char* good, const char* remedy) {
  const bool isGood = found == good;
  return {isGood ? Finding::ok : Finding::warning, subject, found, isGood ? "" : remedy};
}

Finding isolation(const Facts& facts) {
  if (facts.host.isolated != "none")
    return {Finding::ok, "isolated processors", facts.host.isolated, ""};
  return {Finding::warning, "isolated processors", "none",
          "boot with isolcpus=N nohz_full=N rcu_nocbs=N and run there (--cpu N)"};
}

} // namespace

Facts collectFacts(unsigned int master) {
  Facts facts;
  facts.simulated = IGH_BUS_SIMULATED;
  facts.headerVersion = ECRT_VERSION_MAGIC;
  facts.libraryVersion = ecrt_version_magic();
  facts.device = format("/dev/EtherCAT%u", master);
  if (!facts.simulated)
    lookAtDevice(facts);
  constexpr std::uint64_t HIGHEST = 99;
  const bool root = geteuid() == 0;
  facts.lockableBytes = root ? ~std::uint64_t{0} : softLimit(RLIMIT_MEMLOCK);
  facts.rtPriority = root ? HIGHEST : softLimit(RLIMIT_RTPRIO);
  facts.host = inspectHost();
  return facts;
}

std::vector<Finding> diagnose(const Facts& facts) {
  return {build(facts),
          releases(facts),
          device(facts),
          preemption(facts),
          memory(facts),
          priority(facts),
          isolation(facts),
          wanted("frequency governor", facts.host.governor, "performance",
                 "cpupower frequency-set -g performance; a virtual machine shows none"),
          wanted("clock source", facts.host.clockSource, "tsc",
                 "others take microseconds to read; look for \"tsc\" in the kernel log")};
}

} // namespace igh_bus
