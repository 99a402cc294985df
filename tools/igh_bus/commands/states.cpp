// igh_bus states: asks slaves for an AL state.
#include "arguments/Arguments.h"
#include "bus/BusChoice.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "scan/StateRequest.h"
#include "text/Redirection.h"

#include <igh_master.h>

namespace igh_bus {
namespace {

struct StatesOptions : ScanOptions {
  std::vector<std::string> words; // slaves, then the state
  bool throughLibrary = false;
  double timeoutSeconds = 10;
};

std::vector<std::uint16_t> parseSlaves(const StatesOptions& options, const std::vector<FoundSlave>& found) {
  std::vector<std::uint16_t> slaves;
  for (auto word = options.words.begin(); word + 1 != options.words.end(); ++word) {
    const bool all = *word == "all";
    const auto first = all ? 0 : parseNumber(*word, UINT16_MAX, "slave");
    checkSlave(first, found);
    for (auto slave = first; slave < (all ? found.size() : first + 1); ++slave)
      slaves.push_back(static_cast<std::uint16_t>(slave));
  }
  return slaves;
}

// The library's master for as long as it is looked at what became of the requests.
class LibraryMaster {
public:
  explicit LibraryMaster(std::uint16_t id) : m_id(id) {
    constexpr std::uint32_t ANY_PERIOD_NS = 1000000; // nothing is cycled
    igh_master_initialize_ex(id, ANY_PERIOD_NS, false, false);
  }
  ~LibraryMaster() {
    const StdoutSilencer silence; // it names the calls that it makes
    igh_master_uninitialize(m_id);
  }
  LibraryMaster(const LibraryMaster&) = delete;
  LibraryMaster& operator=(const LibraryMaster&) = delete;
  void request(std::uint16_t slave, std::uint8_t state) const {
    if (!igh_master_request_esc_state(m_id, slave, state))
      throw Failure(busError, "the library could not ask for the state");
  }

private:
  std::uint16_t m_id;
};

Status states(const StatesOptions& options) {
  const auto wanted = parseState(options.words.back());
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const OpenedMaster master(options.master);
  const DeviceFile device(options.master);
  const auto slaves = parseSlaves(options, master.slaves(devices));
  std::optional<LibraryMaster> library;
  if (options.throughLibrary)
    library.emplace(options.master);
  for (const auto slave : slaves)
    library ? library->request(slave, wanted) : device.requestState(slave, wanted);
  StateRequest(master, device, wanted).await(slaves, options.timeoutSeconds);
  return success;
}

} // namespace

void addStatesCommand(CLI::App& app, Action& action) {
  constexpr double LONGEST_TIMEOUT = 3600; // seconds
  constexpr int MOST_WORDS = 65536;
  auto* command =
      addCommand(app, "states",
                 "Ask slaves for an AL state, and tell what became of it. Without reservation: the "
                 "state outlasts this program, and beside a running application the slaves leave "
                 "its exchange");
  const auto options = std::make_shared<StatesOptions>();
  command
      ->add_option("SLAVE... STATE", options->words,
                   "The slaves' numbers in scan order, or all; then INIT, PREOP, BOOT, SAFEOP or OP")
      ->expected(2, MOST_WORDS)
      ->required();
  command->add_flag(
      "--through-library", options->throughLibrary,
      "By igh_master_request_esc_state, as an application asks. The library reserves the master "
      "where it is free; the IgH master asks all slaves for PREOP when it is given back");
  command->add_option("--timeout", options->timeoutSeconds, "Longest time in seconds (10)")
      ->check(CLI::Range(0.001, LONGEST_TIMEOUT))
      ->type_name("S");
  addBusOptions(*command, *options, false);
  command->callback([options, &action] { action = [options] { return states(*options); }; });
}

} // namespace igh_bus
