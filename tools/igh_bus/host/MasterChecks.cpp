// The IgH master: library, kernel module, device node, and who holds it.
#include "host/Checks.h"
#include "host/Processes.h"
#include "text/Text.h"

#include <cerrno>
#include <cstring>

namespace igh_bus {
namespace {

constexpr Topic PLATFORM{"platform", "platform", "a build for the IgH EtherCAT Master", 95};
constexpr Topic LIBRARY{"library_release", "library release", "that of the header", 100};
constexpr Topic NODE{"device_node", "device node", "there, and open to this user", 99};
constexpr Topic MODULE{"kernel_module", "kernel module", "of the same release as the library", 98};
constexpr Topic RIGHTS{"device_rights", "device rights", "a group that may read and write the node", 30};
constexpr Topic HOLDER{"master_holder", "master held by", "nobody, or the application that is meant to", 85};

// Ioctl magics of modules, and the version words of the libraries that they are known to come with. 27 and 33
// are stock 1.5.2 and 1.5.3, whose word has two numbers. The text of a package says less: that of the
// patched 1.5.2, whose word is 1.5.10, is "1.5.2". Another source tree may have the same magic and another
// word.
struct Release {
  std::uint32_t magic;
  std::uint32_t version;
};
constexpr std::uint32_t PATCHED = 0x01050A;
constexpr Release RELEASES[] = {{27, 0x0105}, {33, 0x0105}, {36, PATCHED}, {37, 0x0106}};

// Stock releases leave the third number out of the word.
std::string release(std::uint32_t version) {
  if (version <= 0xFFFFU)
    return format("%u.%u", version >> 8, version & 0xFFU);
  return format(version == PATCHED ? "%u.%u.%u (1.5.2 with the patchset)" : "%u.%u.%u", version >> 16,
                version >> 8 & 0xFFU, version & 0xFFU);
}

std::string firstTwoNumbers(const std::string& text) {
  const auto end = text.find_first_not_of("0123456789", text.find('.') + 1);
  return text.substr(0, end);
}

Finding platform(const Build& build) {
  if (build.simulated)
    return amiss(PLATFORM, "this build runs on the simulated master and drives nothing",
                 "cmake --preset release -DIGH_MASTER_PLATFORM=ethercat -DETHERCAT_ROOT=PREFIX");
  return good(PLATFORM, "IgH EtherCAT Master");
}

Finding library(const Build& build) {
  if (build.headerVersion == build.libraryVersion)
    return good(LIBRARY, "version word " + release(build.libraryVersion) + ", as the header");
  return broken(
      LIBRARY, "library " + release(build.libraryVersion) + ", header " + release(build.headerVersion),
      "build against the header of the installed library (ETHERCAT_ROOT), or check LD_LIBRARY_PATH");
}

Finding moduleByMagic(std::uint32_t magic, const std::string& version, std::uint32_t library) {
  const auto is = (version.empty() ? "" : version + ", ") + format("ioctl magic %u", magic);
  for (const auto& known : RELEASES) {
    if (known.magic != magic)
      continue;
    if (known.version == library)
      return good(MODULE, is);
    return broken(MODULE,
                  is + ", known of version word " + release(known.version) + "; the library has " +
                      release(library),
                  "install module and library from one source tree, then: sudo systemctl restart ethercat");
  }
  return amiss(MODULE, is + ", of no release that this program knows",
               "registers and state requests may not work; use one of the releases in the README");
}

// Without an answer of the module, the text that it was built with: of the patched 1.5.2 only the first two
// numbers are those of the library.
Finding module(const Patient& patient, const NodeAnswer& node) {
  const auto& build = patient.build;
  const auto version = patient.machine.line("/sys/module/ec_master/version");
  if (node.magic)
    return moduleByMagic(*node.magic, version.value_or(""), build.libraryVersion);
  if (!version && patient.machine.exists("/sys/module/ec_master"))
    return unseen(MODULE, "loaded, of unknown release");
  if (!version && build.simulated)
    return good(MODULE, "not needed by the simulated master");
  if (!version)
    return broken(MODULE, "not loaded", "sudo systemctl enable --now ethercat");
  const auto library = release(build.libraryVersion);
  if (build.simulated || firstTwoNumbers(*version) == firstTwoNumbers(library))
    return good(MODULE, *version);
  return broken(MODULE, *version + ", library " + library,
                "install module and library from one source tree, then: sudo systemctl restart ethercat");
}

std::string udevRule(const std::string& node) {
  return "echo 'KERNEL==\"EtherCAT[0-9]*\", GROUP=\"realtime\", MODE=\"0660\"' | "
         "sudo tee /etc/udev/rules.d/99-EtherCAT.rules && sudo groupadd -f realtime && "
         "sudo udevadm control --reload && sudo udevadm trigger --name-match=" +
         node;
}

Finding node(const Patient& patient, const std::string& path, const NodeAnswer& answer) {
  if (patient.build.simulated && answer.error != 0)
    return good(NODE, "not needed by the simulated master");
  if (answer.error == EACCES)
    return broken(NODE, path + ": " + std::strerror(answer.error), udevRule(path));
  if (answer.error != 0)
    return broken(NODE, path + ": " + std::strerror(answer.error),
                  "set MASTER0_DEVICE in /etc/ethercat.conf, then: sudo systemctl enable --now ethercat");
  const auto status = patient.machine.status(path);
  if (status && S_ISCHR(status->st_mode) && !answer.magic)
    return broken(NODE, path + " is no device of the master", "sudo rm " + path);
  return good(NODE, path);
}

// Opened by root, the node may still be closed to everybody else.
Finding rights(const std::string& path, const struct stat& status) {
  const bool forGroup = (status.st_mode & 0060U) == 0060U && status.st_gid != 0;
  const bool forAll = (status.st_mode & 0006U) == 0006U;
  const auto is = format("mode %04o, group %u", status.st_mode & 07777U, status.st_gid);
  return forGroup || forAll ? good(RIGHTS, is) : amiss(RIGHTS, is + ": root only", udevRule(path));
}

Finding holder(const Machine& machine, const std::string& path) {
  auto holders = holdersOf(machine, path);
  const auto cobalt = holdersOf(machine, "/dev/rtdm/" + path.substr(path.rfind('/') + 1));
  holders.text += (holders.text.empty() || cobalt.text.empty() ? "" : ", ") + cobalt.text;
  if (!holders.text.empty())
    return amiss(HOLDER, holders.text,
                 "sudo fuser -v " + path + "; end that program, if it is not the one meant");
  if (!holders.complete)
    return unseen(HOLDER, "nobody of this user; others cannot be looked at", "sudo igh_bus doctor");
  return good(HOLDER, "nobody");
}

} // namespace

void checkMaster(const Patient& patient, Findings& findings) {
  const auto path = format("/dev/EtherCAT%u", patient.master);
  const auto answer = patient.machine.askNode(path);
  findings.push_back(platform(patient.build));
  findings.push_back(library(patient.build));
  findings.push_back(module(patient, answer));
  findings.push_back(node(patient, path, answer));
  if (const auto status = patient.machine.status(path))
    findings.push_back(rights(path, *status));
  findings.push_back(holder(patient.machine, path));
}

} // namespace igh_bus
