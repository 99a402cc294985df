// What doctor makes of machines: trees of files made up here, one ready for a bus, the others each with
// something changed.
#include "Program.h"
#include "host/Doctor.h"

#include <cerrno>
#include <filesystem>
#include <nlohmann/json.hpp>

using namespace igh_bus;

namespace {

constexpr const char* CPU = "/sys/devices/system/cpu/";
const std::string cardFolder = "/sys/class/net/eth1/";
const std::string devicesFile = "/sys/module/ec_master/parameters/main_devices";

const std::map<std::string, std::string> readyFiles{
    {"/proc/sys/kernel/osrelease", "6.1.0-rt"},
    {"/proc/sys/kernel/version", "#1 SMP PREEMPT_RT"},
    {"/sys/devices/system/clocksource/clocksource0/current_clocksource", "tsc"},
    {"/proc/sys/kernel/sched_rt_runtime_us", "-1"},
    {"/proc/self/limits", "Limit  Soft Limit\nMax locked memory   unlimited  unlimited  bytes\n"
                          "Max realtime priority   98   98  \n"},
    {"/sys/kernel/mm/transparent_hugepage/enabled", "always [madvise] never"},
    {"/proc/swaps", "Filename  Type\n"},
    {"/proc/cmdline", "quiet isolcpus=2-3 rcu_nocbs=2-N"},
    {"online", "0-3"},
    {"isolated", "2-3"},
    {"nohz_full", "2-3"},
    {"smt/active", "1"},
    {"cpu2/topology/thread_siblings_list", "2-3"},
    {"cpu3/topology/thread_siblings_list", "2-3"},
    {"cpu0/cpufreq/scaling_governor", "performance"},
    {"cpu3/cpufreq/scaling_governor", "performance"},
    {"cpu3/cpuidle/state1/name", "C1"},
    {"cpu3/cpuidle/state1/latency", "2"},
    {"cpu3/cpuidle/state2/name", "C6"},
    {"cpu3/cpuidle/state2/latency", "133"},
    {"cpu3/cpuidle/state2/disable", "1"},
    {"/dev/cpu_dma_latency", ""},
    {"/dev/EtherCAT0", ""},
    {"/sys/module/ec_master/version", "1.5.2 4c3a"},
    {"/sys/module/ec_generic/refcnt", "1"},
    {devicesFile, "00:11:22:aa:bb:cc,00:11:22:aa:bb:dd"},
    {"/sys/class/net/bonding_masters", ""},
    {"/sys/class/net/eth0/address", "00:11:22:aa:bb:dd"},
    {cardFolder + "address", "00:11:22:AA:BB:CC"},
    {cardFolder + "carrier", "1"},
    {cardFolder + "speed", "100"},
    {cardFolder + "duplex", "full"},
    {cardFolder + "ifindex", "3"},
    {cardFolder + "device/driver", "->../drivers/virtio_net"},
    {cardFolder + "device/msi_irqs/24", "msi"},
    {"/proc/irq/24/smp_affinity_list", "2"},
    {"/ethtool/eth1", "Adaptive RX: off  TX: off\nrx-usecs: 0\ntx-usecs: n/a\ngeneric-receive-offload: off\n"
                      "large-receive-offload: off [fixed]\n"},
    {"/proc/700/comm", "NetworkManager"},
    {"/run/NetworkManager/devices/3", "[device]\nmanaged=false\n"},
    {"/proc/701/comm", "plc"},
    {"/proc/701/fd/3", "->/dev/null"}};

// Answers of the device node, which no file can give.
class MadeUp : public Machine {
public:
  using Machine::Machine;
  NodeAnswer askNode(const std::string&) const override { return node; }
  NodeAnswer node{0, 36};
};

class Doctor : public testing::Test {
protected:
  Doctor() : m_root(scratch("machine")) { std::filesystem::remove(m_root); }
  ~Doctor() override { std::filesystem::remove_all(m_root); }

  void put(const std::string& name, const std::string& content) {
    const auto path = m_root + (name[0] == '/' ? "" : CPU) + name;
    std::filesystem::create_directories(path.substr(0, path.rfind('/')));
    std::filesystem::remove_all(path);
    if (content == "-")
      return;
    if (content.rfind("->", 0) == 0)
      return std::filesystem::create_symlink(content.substr(2), path);
    std::ofstream(path) << content << '\n';
    std::filesystem::permissions(path, std::filesystem::perms{content == "root only" ? 0600U : 0666U});
  }
  // What was changed, as it was.
  void restore(const std::string& name) {
    put(name, "-");
    for (auto at = readyFiles.lower_bound(name); at != readyFiles.end() && at->first.rfind(name, 0) == 0;
         ++at)
      put(at->first, at->second);
  }
  void putAll() {
    std::filesystem::remove_all(m_root);
    for (const auto& [name, content] : readyFiles)
      put(name, content);
  }

  std::string m_root;
};

// What is not ok: "!id" for a failure, "?id" for a warning, "~id" for what is unknown.
std::string complaints(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    EXPECT_TRUE(finding.level != Finding::ok || finding.command.empty()) << finding.topic.id;
    EXPECT_TRUE(finding.level < Finding::warning || !finding.command.empty()) << finding.topic.id;
    if (finding.level != Finding::ok)
      text += std::string(finding.level == Finding::failure   ? "!"
                          : finding.level == Finding::warning ? "?"
                                                              : "~") +
              finding.topic.id;
  }
  return text;
}

std::string everythingIn(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings)
    text += finding.is + "\n" + finding.command + "\n";
  return text;
}

TEST_F(Doctor, FindsWhatKeepsAMachineFromRunningABus) {
  struct Case {
    std::vector<std::pair<std::string, std::string>> changes;
    const char* complaints;
    const char* said; // among what is, and the commands
  };
  const Case cases[] = {
      {{}, "", "eth1, 00:11:22:aa:bb:cc\n"},
      {{{"/proc/sys/kernel/version", "#1 SMP PREEMPT"}}, "?kernel", "preemption: full"},
      {{{"/sys/devices/system/clocksource/clocksource0/current_clocksource", "hpet"}},
       "?clock_source",
       "hpet"},
      {{{"/proc/self/limits", "Max locked memory 8192 8192\nMax realtime priority 0 0"}},
       "?rt_priority?locked_memory",
       "limit of 8 kB"},
      {{{"/proc/self/limits", "-"}, {"/proc/self/status", "CapEff:\t0000000000804000"}}, "", "no limit"},
      {{{"/proc/sys/kernel/sched_rt_runtime_us", "950000"}}, "?rt_throttling", "950000 us of every 1000000"},
      {{{"/sys/kernel/mm/transparent_hugepage/enabled", "[always] madvise never"}}, "?huge_pages", "always"},
      {{{"/proc/swaps", "Filename\n/dev/sda2  partition"}}, "?swap", "/dev/sda2\n"},
      // Without an isolated processor the last one is meant; without a tick there are no callbacks either.
      {{{"isolated", ""}},
       "?isolated_processors?smt",
       "&isolcpus=3 nohz_full=3 rcu_nocbs=3 irqaffinity=0-2 /"},
      {{{"nohz_full", "3"}, {"/proc/cmdline", "quiet"}}, "?nohz_full?rcu_nocbs", "3, without 2\n"},
      {{{"nohz_full", "all"}, {"/proc/cmdline", "rcu_nocbs=0-1:1/2"}},
       "?nohz_full~rcu_nocbs",
       "rcu_nocbs=0-1:1/2"},
      {{{"/proc/cmdline", "quiet"}}, "", "2-3\n"},
      {{{"nohz_full", "0-4294967295"}}, "~nohz_full", "cannot make sense"},
      {{{"smt/active", "0"}, {"cpu3/topology/thread_siblings_list", "1,3"}}, "", "off"},
      {{{"nohz_full", "(null)"}, {"/proc/cmdline", "nohz_full=2-3 rcu_nocbs=0 rcu_nocbs=2-N"}},
       "?nohz_full",
       "not built into"},
      {{{"online", "0"}, {"isolated", ""}, {"nohz_full", "-"}}, "?isolated_processors", "none, of one"},
      {{{"cpu0/cpufreq/scaling_governor", "powersave"}}, "?governor", "performance on 3, powersave on 0"},
      {{{"cpu3/topology/thread_siblings_list", "1,3"}}, "?smt", "processor 2-3 shares a core with 1\n"},
      {{{"/proc/702/comm", "irqbalance"}}, "?irqbalance", "irqbalance (702)"},
      {{{"cpu3/cpuidle/state2/disable", "0"}}, "?c_states", "C6, 133 us"},
      {{{"/dev/cpu_dma_latency", "-"}}, "~dma_latency", "not there"},
      {{{"/dev/cpu_dma_latency", "root only"}}, "?dma_latency", "KERNEL==\"cpu_dma_latency\""},
      {{{"/proc/701/fd/4", "->/dev/EtherCAT0"}}, "?master_holder", "plc (701)\n"},
      {{{"/proc/701/fd/4", "->/dev/rtdm/EtherCAT0"}}, "?master_holder", "plc (701)\n"},
      {{{devicesFile, "00:00:00:00:00:01"}}, "?network_card", "there is no 00:00:00:00:00:01"},
      {{{devicesFile, "-"}}, "~network_card", "--nic NAME"},
      {{{devicesFile, "-"}, {"/etc/ethercat.conf", "#MASTER0_DEVICE=\"x\"\nMASTER0_DEVICE=\"eth1\""}},
       "",
       "eth1, eth1"},
      {{{devicesFile, "00:00:00:00:00:01"}, {"/sys/module/ec_igb/refcnt", "1"}}, "", "native"},
      {{{cardFolder + "device/driver", "->../drivers/igb"}}, "?card_driver", "DEVICE_MODULES=\"igb\""},
      {{{cardFolder + "carrier", "0"}}, "?card_link", "no link"},
      {{{cardFolder + "carrier", "-"}}, "?card_link", "sudo ip link set eth1 up"},
      {{{cardFolder + "speed", "1000"}}, "?card_link", "1000 Mbit/s, full"},
      {{{"/ethtool/eth1", "rx-usecs: 3\nAdaptive RX: on  TX: off\ntcp-segmentation-offload: on"}},
       "?card_coalescing?card_offloads",
       "ethtool -C eth1 adaptive-rx off rx-usecs 0\n"},
      {{{"/ethtool/eth1", "-"}}, "~card_coalescing~card_offloads", "unknown"},
      {{{"/run/NetworkManager/devices/3", "managed=true"}},
       "?network_manager",
       "NetworkManager (700), manages eth1"},
      {{{"/proc/irq/24/smp_affinity_list", "0-3"}},
       "?card_interrupt",
       "echo 3 | sudo tee /proc/irq/24/smp_aff"},
      {{{cardFolder + "device/msi_irqs", "-"}, {cardFolder + "device/irq", "24"}}, "", "24 on 2"},
  };
  MadeUp machine(m_root);
  putAll();
  for (const auto& [changes, expected, said] : cases) {
    for (const auto& [name, content] : changes)
      put(name, content);
    const auto findings = diagnose({machine, {false, 0x01050A, 0x01050A}});
    EXPECT_EQ(complaints(findings), expected);
    EXPECT_NE(everythingIn(findings).find(said), std::string::npos) << expected << ": " << said;
    for (const auto& [name, content] : changes)
      restore(name);
  }
}

TEST_F(Doctor, ComparesTheMastersReleasesAndItsNode) {
  constexpr std::uint32_t PATCHED = 0x01050A;
  constexpr std::uint32_t STOCK = 0x0105;
  struct Case {
    Build build;
    NodeAnswer node;
    const char* version; // of the kernel module
    unsigned int mode;   // of the node
    const char* complaints;
    const char* said = "";
  };
  const Case cases[] = {
      {{false, PATCHED, PATCHED},
       {0, 36},
       "1.5.2 4c3a",
       0666,
       "",
       "word 1.5.10 (1.5.2 with the patchset), as the header"},
      {{false, PATCHED, STOCK}, {0, 27}, "1.5.2", 0666, "!library_release"},
      {{false, STOCK, STOCK}, {0, 27}, "1.5.2", 0666, ""},
      {{false, PATCHED, PATCHED},
       {0, 27},
       "1.5.2",
       0666,
       "!kernel_module",
       "1.5.2, ioctl magic 27, known of version word 1.5; the library has 1.5.10 ("},
      {{false, PATCHED, PATCHED}, {0, 99}, "2.0", 0666, "?kernel_module"},
      {{false, PATCHED, PATCHED}, {EACCES, {}}, "1.6.2", 0600, "!kernel_module!device_node?device_rights"},
      {{false, PATCHED, PATCHED}, {ENOENT, {}}, "-", 0666, "!kernel_module!device_node"},
      {{true, PATCHED, PATCHED}, {ENOENT, {}}, "-", 0666, "?platform"},
  };
  for (const auto& [build, node, version, mode, expected, said] : cases) {
    MadeUp machine(m_root);
    machine.node = node;
    putAll();
    put("/sys/module/ec_master", "-");
    if (std::string(version) != "-")
      put("/sys/module/ec_master/version", version);
    put(devicesFile, readyFiles.at(devicesFile));
    std::filesystem::permissions(m_root + "/dev/EtherCAT0", std::filesystem::perms{mode});
    if (std::string(version) == "-")
      put("/sys/module/ec_master", "-");
    put("/etc/ethercat.conf", "MASTER0_DEVICE=eth1");
    const auto findings = diagnose({machine, build});
    EXPECT_EQ(complaints(findings), expected);
    EXPECT_THAT(everythingIn(findings), testing::HasSubstr(said));
  }
}

TEST_F(Doctor, EndsWithTheThreeThingsThatMatterMostAndSurvivesAnyTree) {
  putAll();
  const auto ready = ighBus("doctor --json --root " + m_root);
  const auto data = nlohmann::json::parse(ready.out);
  EXPECT_EQ(data["most_important"], nlohmann::json({"platform"})) << ready.out; // of this build
  EXPECT_EQ(data["findings"][0]["command"], "cmake --preset release -DIGH_MASTER_PLATFORM=ethercat "
                                            "-DETHERCAT_ROOT=PREFIX");
  put("/proc/swaps", "Filename\n/dev/sda2");
  put("/proc/sys/kernel/version", "none");
  put(cardFolder + "carrier", "0");
  EXPECT_THAT(
      ighBus("doctor --root " + m_root).out,
      testing::HasSubstr("\nNot ready. Of 4 things these matter most: platform (this build runs on the "
                         "simulated master and drives nothing); kernel (6.1.0-rt, preemption: none or "
                         "voluntary); link (no link).\n"));
  EXPECT_EQ(ighBus("doctor --nic eth9 --root " + m_root).status, 0);
  // Each file missing, a folder, a pipe, a loop of links, noise; then no file at all.
  constexpr char NOISE[] = "\xff\x1b[2J-99999999999999999999,0-4294967295\0\n[\n]=: 7-";
  for (const auto& [name, content] : readyFiles) {
    const auto path = m_root + (name[0] == '/' ? "" : CPU) + name;
    put(name, std::string(NOISE, sizeof NOISE));
    const auto findings = diagnose({Machine(m_root), thisBuild()});
    EXPECT_EQ(everythingIn(findings).find('\x1b'), std::string::npos) << name;
    put(name, "->" + path);
    EXPECT_FALSE(diagnose({Machine(m_root), thisBuild()}).empty());
    put(name, "-");
    put(name + "/folder", "");
    EXPECT_FALSE(diagnose({Machine(m_root), thisBuild()}).empty());
    put(name, "-");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(diagnose({Machine(m_root), thisBuild()}).empty());
    put(name, content);
  }
  std::filesystem::remove_all(m_root);
  std::filesystem::create_directory(m_root);
  EXPECT_EQ(ighBus("doctor --root " + m_root).status, 0);
}

} // namespace
