// ecrt_slave_config_*.
#include "interface/Invoke.h"

#include <new>

using namespace ethercat_simulation;

namespace {

std::string pdoText(const ec_pdo_info_t& pdo) {
  std::string text = " " + hexText(pdo.index, 4);
  if (pdo.n_entries == 0 || pdo.entries == nullptr) {
    return text + "(default)";
  }
  text += "(";
  for (unsigned int i = 0; i < pdo.n_entries; ++i) {
    const ec_pdo_entry_info_t& entry = pdo.entries[i];
    text += (i > 0 ? " " : "") + hexText(entry.index, 4) + ":" + hexText(entry.subindex, 2).substr(2) + "/" +
            std::to_string(entry.bit_length);
  }
  return text + ")";
}

// "2 output 0x1600(0x7000:01/8 0x0000:00/4), 3 input": what is listed, up to the end of the list.
std::string syncsText(unsigned int count, const ec_sync_info_t* syncs) {
  if (syncs == nullptr) {
    return "NULL";
  }
  std::string text = "[";
  for (unsigned int i = 0; i < count && syncs[i].index != 0xFF; ++i) {
    const ec_sync_info_t& sync = syncs[i];
    text += (i > 0 ? ", " : "") + std::to_string(sync.index);
    text += sync.dir == EC_DIR_OUTPUT  ? " output"
            : sync.dir == EC_DIR_INPUT ? " input"
                                       : " direction " + std::to_string(static_cast<int>(sync.dir));
    for (unsigned int j = 0; sync.pdos != nullptr && j < sync.n_pdos; ++j) {
      text += pdoText(sync.pdos[j]);
    }
  }
  return text + "]";
}

// Null when there is no memory for a buffer of that size, as the real library has it.
ec_sdo_request_t* createRequest(Master& master, SlaveConfiguration& configuration, const SdoPlace& place,
                                std::size_t size) {
  try {
    SdoRequest& request = master.setup().createSdoRequest(configuration, place, size);
    return static_cast<ec_sdo_request_t*>(Handles::instance().create(request, master));
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

} // namespace

int ecrt_slave_config_pdos(ec_slave_config_t* sc, unsigned int n_syncs, const ec_sync_info_t syncs[]) {
  return invoke<SlaveConfiguration>(
      Call::configPdos, sc, BAD_HANDLE_RESULT,
      [&](SlaveConfiguration& configuration) { return configuration.configurePdos(n_syncs, syncs); },
      [&](const SlaveConfiguration& configuration) {
        return configuration.place() + ", " + (n_syncs == EC_END ? "EC_END" : std::to_string(n_syncs)) +
               ", " + syncsText(n_syncs, syncs);
      });
}

// The clocks of the simulated slaves need no setting; the call is there to be traced.
void ecrt_slave_config_dc(ec_slave_config_t* sc, uint16_t assign_activate, uint32_t sync0_cycle,
                          int32_t sync0_shift, uint32_t sync1_cycle, int32_t sync1_shift) {
  invoke<SlaveConfiguration>(
      Call::configDc, sc, Nothing{}, [](const SlaveConfiguration&) { return Nothing{}; },
      [&](const SlaveConfiguration& configuration) {
        return configuration.place() + ", " + hexText(assign_activate, 4) + ", " +
               std::to_string(sync0_cycle) + ", " + std::to_string(sync0_shift) + ", " +
               std::to_string(sync1_cycle) + ", " + std::to_string(sync1_shift);
      });
}

ec_sdo_request_t* ecrt_slave_config_create_sdo_request(ec_slave_config_t* sc, uint16_t index,
                                                       uint8_t subindex, size_t size) {
  const SdoPlace place{index, subindex, false};
  return invoke<SlaveConfiguration, ec_sdo_request_t*>(
      Call::createSdoRequest, sc, nullptr,
      [&](Master& master, SlaveConfiguration& configuration) {
        return createRequest(master, configuration, place, size);
      },
      [&](const SlaveConfiguration& configuration) {
        return configuration.place() + ", " + hexText(index, 4) + ":" + hexText(subindex, 2).substr(2) +
               ", " + std::to_string(size);
      });
}

ec_sdo_request_t* ecrt_slave_config_create_sdo_request_complete(ec_slave_config_t* sc, uint16_t index,
                                                                size_t size) {
  const SdoPlace place{index, 0, true};
  return invoke<SlaveConfiguration, ec_sdo_request_t*>(
      Call::createSdoRequestComplete, sc, nullptr,
      [&](Master& master, SlaveConfiguration& configuration) {
        return createRequest(master, configuration, place, size);
      },
      [&](const SlaveConfiguration& configuration) {
        return configuration.place() + ", " + hexText(index, 4) + ", " + std::to_string(size);
      });
}

void ecrt_slave_config_state(const ec_slave_config_t* sc, ec_slave_config_state_t* state) {
  const auto work = [&](const SlaveConfiguration& configuration) {
    configuration.state(*state);
    return Nothing{};
  };
  invoke<SlaveConfiguration>(Call::configState, sc, Nothing{}, work, NoArguments());
}
