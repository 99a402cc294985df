// ethercat_simulation.h: faults.
#include "control/FlatFace.h"
#include "faults/FaultSchedule.h"

#include <cstring>
#include <iterator>

using namespace ethercat_simulation;

namespace {

template <class Value> struct Named {
  const char* name;
  Value value;
};

constexpr Named<SdoFault> SDO_FAULTS[] = {
    {"none", SdoFault::none},
    {"abort", SdoFault::abort},
    {"time_out", SdoFault::timeOut},
    {"short_answer", SdoFault::shortAnswer},
    {"long_answer", SdoFault::longAnswer},
    {"busy_for_ever", SdoFault::busyForEver},
};

constexpr Named<DriveTrouble> DRIVE_TROUBLES[] = {
    {"drive_fault", DriveTrouble::fault},
    {"blocked_axis", DriveTrouble::blockedAxis},
    {"positive_limit", DriveTrouble::positiveLimit},
    {"negative_limit", DriveTrouble::negativeLimit},
    {"quick_stop", DriveTrouble::quickStop},
    {"safe_torque_off", DriveTrouble::safeTorqueOff},
};
static_assert(std::size(DRIVE_TROUBLES) == static_cast<std::size_t>(DriveTrouble::count), "a name for each");

template <class Value, std::size_t COUNT>
Value valueOf(const Named<Value> (&table)[COUNT], const char* name) {
  for (const auto& row : table) {
    if (std::strcmp(textOf(name), row.name) == 0) {
      return row.value;
    }
  }
  throw Refusal{std::string("there is no fault ") + name};
}

} // namespace

int ethercat_simulation_clear_faults(unsigned int master) {
  return done([&] { busOf(master).clearFaults(); });
}

int ethercat_simulation_drop_frames(unsigned int master, unsigned int count) {
  return done([&] { busOf(master).dropFrames(count); });
}

int ethercat_simulation_delay_frames(unsigned int master, unsigned int count) {
  return done([&] { busOf(master).delayFrames(count); });
}

int ethercat_simulation_set_link(unsigned int master, int up) {
  return done([&] { busOf(master).setLinkUp(up != 0); });
}

int ethercat_simulation_set_wire_broken(unsigned int master, unsigned int position, int broken) {
  return done([&] { slaveOf(master, position).setWireBroken(position, broken != 0); });
}

int ethercat_simulation_set_powered(unsigned int master, unsigned int position, int on) {
  return done([&] { slaveOf(master, position).setPowered(position, on != 0); });
}

int ethercat_simulation_set_al_error(unsigned int master, unsigned int position, uint8_t al_state,
                                     uint16_t code) {
  return done([&] {
    expect(al_state == 1 || al_state == 2 || al_state == 4, "a slave falls to AL state 1, 2 or 4");
    slaveOf(master, position).setAlError(position, al_state, code);
  });
}

int ethercat_simulation_set_error_flag(unsigned int master, unsigned int position, int set) {
  return done([&] { slaveOf(master, position).setErrorFlag(position, set != 0); });
}

int ethercat_simulation_set_responding(unsigned int master, unsigned int position, int responding) {
  return done([&] { slaveOf(master, position).setResponding(position, responding != 0); });
}

int ethercat_simulation_set_maximum_state(unsigned int master, unsigned int position, uint8_t al_state) {
  return done([&] {
    expect(al_state == 1 || al_state == 2 || al_state == 4 || al_state == 8, "an AL state is 1, 2, 4 or 8");
    slaveOf(master, position).setMaximumState(position, al_state);
  });
}

int ethercat_simulation_set_sdo_fault(unsigned int master, unsigned int position, uint16_t index,
                                      uint8_t subindex, const char* fault) {
  return done([&] {
    expect(slaveOf(master, position).setSdoFault(position, index, subindex, valueOf(SDO_FAULTS, fault)),
           "the slave has no such object");
  });
}

int ethercat_simulation_set_drive_trouble(unsigned int master, unsigned int position, const char* trouble,
                                          int on, uint16_t error_code) {
  return done([&] {
    const DriveTrouble which = valueOf(DRIVE_TROUBLES, trouble);
    const bool isFault = which == DriveTrouble::fault;
    expect(error_code != 0 || !isFault, "a drive fault has an error code");
    expect(slaveOf(master, position)
               .setDriveTrouble(position, which, on != 0, isFault ? error_code : std::uint16_t{1}),
           "the slave is no drive");
  });
}

int ethercat_simulation_add_error_count(unsigned int master, unsigned int position, uint16_t address,
                                        unsigned int count) {
  return done([&] {
    expect(address >= FIRST_ERROR_COUNTER && address <= LAST_ERROR_COUNTER,
           "error counters are the registers 0x0300 to 0x0313");
    slaveOf(master, position).addErrorCount(position, address, count);
  });
}

int ethercat_simulation_step_clock(unsigned int master, int64_t nanoseconds) {
  return done([&] { busOf(master).stepReferenceClock(nanoseconds); });
}

int ethercat_simulation_set_image_never_mapped(unsigned int master, int never) {
  return done([&] { busOf(master).setImageNeverMapped(never != 0); });
}

int ethercat_simulation_fail_next(unsigned int master, const char* call, int result, unsigned int after) {
  return done([&] { busOf(master).failNext(callOf(call), result, after); });
}
