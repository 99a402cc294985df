// ethercat_simulation.h: slaves and master.
#include "control/FlatFace.h"

using namespace ethercat_simulation;

namespace {

// At the end of the address space.
constexpr std::size_t END_OF_REGISTERS = 0x10000;

std::vector<std::uint8_t> bytesOf(const uint8_t* bytes, std::size_t size) {
  expect(bytes != nullptr || size == 0, "the bytes are missing");
  return {bytes, bytes + size};
}

void expectRegisters(uint16_t address, std::size_t size) {
  expect(size <= END_OF_REGISTERS - address, "registers end at 0xFFFF");
}

} // namespace

int ethercat_simulation_slave_count(unsigned int master) {
  return guarded([&] { return static_cast<int>(busOf(master).slaveCount()); });
}

int ethercat_simulation_al_state(unsigned int master, unsigned int position) {
  return guarded([&] { return int{slaveOf(master, position).alState(position)}; });
}

int ethercat_simulation_outputs(unsigned int master, unsigned int position, uint8_t* bytes, size_t size) {
  return guarded([&] { return give(slaveOf(master, position).outputs(position), bytes, size); });
}

int ethercat_simulation_output_value(unsigned int master, unsigned int position, uint16_t index,
                                     uint8_t subindex, uint64_t* value) {
  return done([&] {
    expectPlace(value, sizeof *value);
    expect(slaveOf(master, position).outputValue(position, index, subindex, *value),
           "the slave has no such output entry in use");
  });
}

int ethercat_simulation_inputs(unsigned int master, unsigned int position, uint8_t* bytes, size_t size) {
  return guarded([&] { return give(slaveOf(master, position).inputs(position), bytes, size); });
}

int ethercat_simulation_set_inputs(unsigned int master, unsigned int position, const uint8_t* bytes,
                                   size_t size) {
  return done([&] { slaveOf(master, position).setInputs(position, bytesOf(bytes, size)); });
}

int ethercat_simulation_set_input_value(unsigned int master, unsigned int position, uint16_t index,
                                        uint8_t subindex, uint64_t value) {
  return done([&] { slaveOf(master, position).setInputValue(position, index, subindex, value); });
}

int ethercat_simulation_object(unsigned int master, unsigned int position, uint16_t index, uint8_t subindex,
                               uint8_t* bytes, size_t size) {
  return guarded([&] {
    const std::vector<std::uint8_t> value = slaveOf(master, position).objectValue(position, index, subindex);
    expect(!value.empty(), "the slave has no such object, or it is empty");
    return give(value, bytes, size);
  });
}

int ethercat_simulation_set_object(unsigned int master, unsigned int position, uint16_t index,
                                   uint8_t subindex, const uint8_t* bytes, size_t size) {
  return done([&] {
    expect(slaveOf(master, position).setObjectValue(position, index, subindex, bytesOf(bytes, size)),
           "the slave has no such object, or a drive needs it in its length");
  });
}

int ethercat_simulation_registers(unsigned int master, unsigned int position, uint16_t address,
                                  uint8_t* bytes, size_t size) {
  return guarded([&] {
    expectRegisters(address, size);
    return give(slaveOf(master, position).registers(position, address, size), bytes, size);
  });
}

int ethercat_simulation_set_registers(unsigned int master, unsigned int position, uint16_t address,
                                      const uint8_t* bytes, size_t size) {
  return done([&] {
    expectRegisters(address, size);
    slaveOf(master, position).setRegisters(position, address, bytesOf(bytes, size));
  });
}

int ethercat_simulation_is_reserved(unsigned int master) {
  return guarded([&] { return busOf(master).reserved() ? 1 : 0; });
}

int ethercat_simulation_is_active(unsigned int master) {
  return guarded([&] { return busOf(master).active() ? 1 : 0; });
}

int ethercat_simulation_open_device_files(unsigned int master) {
  return guarded([&] { return busOf(master).openDeviceFiles(); });
}

int64_t ethercat_simulation_frames_sent(unsigned int master) {
  return guarded([&] { return static_cast<int64_t>(busOf(master).framesSent()); });
}

int64_t ethercat_simulation_call_count(unsigned int master, const char* call) {
  return guarded([&] { return static_cast<int64_t>(busOf(master).callCount(callOf(call))); });
}

int ethercat_simulation_reference_time(unsigned int master, uint64_t* time) {
  return done([&] {
    expectPlace(time, sizeof *time);
    *time = busOf(master).referenceTime();
  });
}

int64_t ethercat_simulation_misuse(unsigned int master) {
  return guarded([&] { return static_cast<int64_t>(busOf(master).misuse().total()); });
}

int ethercat_simulation_misuse_text(unsigned int master, char* text, size_t size) {
  return guarded([&] {
    std::string lines;
    for (const std::string& line : busOf(master).misuse().lines) {
      lines += line + "\n";
    }
    return give(lines, text, size);
  });
}

int ethercat_simulation_set_tracing(unsigned int master, int on) {
  return done([&] {
    busOf(master).setTracing(on != 0);
    if (on == 0) {
      busOf(master).clearTrace();
    }
  });
}

int ethercat_simulation_trace_text(unsigned int master, char* text, size_t size) {
  return guarded([&] {
    std::string lines;
    for (const TraceEntry& entry : busOf(master).trace()) {
      lines += entry.text + "\n";
    }
    return give(lines, text, size);
  });
}
