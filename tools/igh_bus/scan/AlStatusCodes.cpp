#include "scan/AlStatusCodes.h"

#include <utility>

namespace igh_bus {

const char* alStatusText(std::uint16_t code) {
  static constexpr std::pair<std::uint16_t, const char*> TEXTS[] = {
      {0x0000, "no error"},
      {0x0001, "unspecified error"},
      {0x0002, "no memory"},
      {0x0003, "the device is not set up"},
      {0x0006, "the SII does not fit the firmware"},
      {0x0007, "the firmware update failed, the old firmware still runs"},
      {0x000E, "license error"},
      {0x0011, "state change that is not possible"},
      {0x0012, "unknown state"},
      {0x0013, "bootstrap is not supported"},
      {0x0014, "no valid firmware"},
      {0x0015, "mailbox settings are wrong, bootstrap"},
      {0x0016, "mailbox settings are wrong, PREOP"},
      {0x0017, "settings of a sync manager are wrong"},
      {0x0018, "no valid inputs"},
      {0x0019, "no valid outputs"},
      {0x001A, "synchronization error"},
      {0x001B, "process-data watchdog: no frames in time"},
      {0x001C, "types of sync managers are wrong"},
      {0x001D, "output configuration is wrong: PDOs and their length"},
      {0x001E, "input configuration is wrong: PDOs and their length"},
      {0x001F, "watchdog settings are wrong"},
      {0x0020, "needs a cold start"},
      {0x0021, "needs INIT"},
      {0x0022, "needs PREOP"},
      {0x0023, "needs SAFEOP"},
      {0x0024, "input mapping is wrong"},
      {0x0025, "output mapping is wrong"},
      {0x0026, "settings contradict each other"},
      {0x0027, "free run is not supported"},
      {0x0028, "this synchronization is not supported"},
      {0x0029, "free run needs three buffers"},
      {0x002A, "background watchdog"},
      {0x002B, "no valid inputs and outputs"},
      {0x002C, "fatal synchronization error"},
      {0x002D, "no SYNC signal was received"},
      {0x002E, "cycle time is too short"},
      {0x0030, "DC settings are wrong"},
      {0x0031, "DC latch settings are wrong"},
      {0x0032, "the clock cannot follow (PLL)"},
      {0x0033, "DC synchronization: I/O error"},
      {0x0034, "DC synchronization: timeout"},
      {0x0035, "DC cycle time is not valid"},
      {0x0036, "DC cycle time of SYNC0 is not valid"},
      {0x0037, "DC cycle time of SYNC1 is not valid"},
      {0x0041, "mailbox, AoE"},
      {0x0042, "mailbox, EoE"},
      {0x0043, "mailbox, CoE"},
      {0x0044, "mailbox, FoE"},
      {0x0045, "mailbox, SoE"},
      {0x004F, "mailbox, VoE"},
      {0x0050, "no access to the SII"},
      {0x0051, "error in the SII"},
      {0x0052, "hardware outside the controller is not ready"},
      {0x0060, "restarted by itself"},
      {0x0061, "the identification value was changed"},
      {0x0070, "the modules found are not those of the configured list"},
      {0x0080, "supply voltage is too low"},
      {0x0081, "supply voltage is too high"},
      {0x0082, "temperature is too low"},
      {0x0083, "temperature is too high"},
      {0x00F0, "a controller of the application is there"},
  };
  for (const auto& [known, text] : TEXTS) {
    if (known == code)
      return text;
  }
  constexpr std::uint16_t OF_THE_MAKER = 0x8000;
  return code >= OF_THE_MAKER ? "the maker's manual knows this code" : "not a standard code";
}

} // namespace igh_bus
