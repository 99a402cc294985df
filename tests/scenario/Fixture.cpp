#include "Fixture.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <unistd.h>

namespace scenario {

namespace {

unsigned int bitsOf(const Field& field) {
  static const std::map<std::string, unsigned int> widths{{"BOOL", 1},   {"SINT", 8},  {"USINT", 8},
                                                          {"INT", 16},   {"UINT", 16}, {"DINT", 32},
                                                          {"UDINT", 32}, {"REAL", 32}, {"LREAL", 64}};
  return field.bits != 0 ? field.bits : widths.at(field.type);
}

std::string pdoXml(const char* element, int sync, int pdo, int object, const std::vector<Field>& fields) {
  std::ostringstream xml;
  xml << "<" << element << " Sm='" << sync << "' Fixed='true'><Index>" << pdo << "</Index>";
  int subindex = 0;
  for (const Field& field : fields) {
    ++subindex;
    xml << "<Entry><Index>" << (field.type.empty() ? 0 : object) << "</Index><SubIndex>"
        << (field.type.empty() ? 0 : subindex) << "</SubIndex><BitLen>" << bitsOf(field) << "</BitLen><Name>"
        << field.name << "</Name><DataType>" << field.type << "</DataType></Entry>";
  }
  xml << "</" << element << ">";
  return fields.empty() ? "" : xml.str();
}

std::string deviceXml(const Device& device) {
  return "<Device><Type ProductCode='" + std::to_string(device.productCode) + "' RevisionNo='1'>T</Type>" +
         device.extra + pdoXml("RxPdo", 2, 0x1600, 0x7000, device.outputs) +
         pdoXml("TxPdo", 3, 0x1A00, 0x6000, device.inputs) + "</Device>";
}

class Redirection {
public:
  Redirection(int descriptor, FILE* stream)
      : m_descriptor(descriptor), m_stream(stream), m_file(std::tmpfile()), m_saved(dup(descriptor)) {
    std::fflush(m_stream);
    dup2(fileno(m_file), m_descriptor);
  }
  std::string end() {
    std::fflush(m_stream);
    dup2(m_saved, m_descriptor);
    close(m_saved);
    std::rewind(m_file);
    std::string text;
    for (int letter = 0; (letter = std::fgetc(m_file)) != EOF;) {
      text += static_cast<char>(letter);
    }
    std::fclose(m_file);
    return text;
  }

private:
  int m_descriptor;
  FILE* m_stream;
  FILE* m_file;
  int m_saved;
};

} // namespace

ethercat_simulation::Slave slaveOf(const Device& device) {
  ethercat_simulation::Slave slave;
  slave.vendorId = 2;
  slave.productCode = device.productCode;
  slave.revisionNumber = 1;
  slave.name = "device";
  return slave;
}

Printed capture(const std::function<void()>& run) {
  Redirection out(STDOUT_FILENO, stdout);
  Redirection err(STDERR_FILENO, stderr);
  run();
  return {out.end(), err.end()};
}

void Errors::record(unsigned int device, unsigned int slave, int code, void* errors) {
  Errors& self = *static_cast<Errors*>(errors);
  self.m_list[self.m_count++ % self.m_list.size()] = {device, slave, static_cast<unsigned int>(code)};
}

std::string Errors::take() {
  std::string text;
  for (std::size_t i = 0; i < m_count; ++i) {
    const auto& [device, slave, code] = m_list.at(i);
    text += (i == 0 ? "" : " ") + std::to_string(device) + "/" +
            (slave == ETHERCAT_ERROR_WHOLE_MASTER ? "*" : std::to_string(slave)) + "/" + std::to_string(code);
  }
  m_count = 0;
  return text;
}

Scenario::Scenario() {
  unsetenv("ETHERCAT_SIMULATION_BUS");
  ethercat_simulation::reset();
}

Scenario::~Scenario() {
  for (const std::uint16_t id : masters) {
    capture([&] { igh_master_uninitialize(id); });
    const ethercat_simulation::Misuse& misuse = bus(id).misuse();
    EXPECT_EQ(misuse.total(), outOfOrderExpected ? misuse.outOfOrder : 0U)
        << testing::PrintToString(misuse.lines);
    EXPECT_EQ(bus(id).openDeviceFiles(), 0);
    EXPECT_FALSE(bus(id).reserved());
  }
}

bool Scenario::describe(const std::vector<Device>& devices, std::uint16_t id) {
  std::string xml = "<EtherCATInfo><Vendor><Id>2</Id></Vendor><Descriptions><Devices>";
  std::set<std::uint32_t> written;
  for (const Device& device : devices) {
    xml += device.described && written.insert(device.productCode).second ? deviceXml(device) : "";
  }
  const std::string path = testing::TempDir() + "/scenario." + std::to_string(getpid()) + ".xml";
  std::ofstream(path) << xml << "</Devices></Descriptions></EtherCATInfo>";
  const bool appended = igh_master_append_eni(id, path.c_str());
  unlink(path.c_str());
  return appended;
}

void Scenario::build(const std::vector<Device>& devices, const MasterOptions& options) {
  for (const Device& device : devices) {
    bus(options.id).addSlave(slaveOf(device));
  }
  masters.insert(options.id);
  EXPECT_TRUE(
      igh_master_initialize_ex(options.id, options.period, options.enableDc, options.syncToReferenceClock));
  igh_master_set_error_callback(options.id, Errors::record, &errors);
  EXPECT_TRUE(describe(devices, options.id));
}

Printed Scenario::bringUp(std::uint16_t id) {
  return capture([&] {
    EXPECT_TRUE(igh_master_scan(id, nullptr));
    EXPECT_TRUE(igh_master_config_all_slave(id));
    EXPECT_TRUE(igh_master_active(id));
  });
}

void Scenario::start(const std::vector<Device>& devices, const MasterOptions& options) {
  build(devices, options);
  bringUp(options.id);
}

void Scenario::cycle(unsigned int count, std::uint16_t id) {
  while (count-- > 0) {
    EXPECT_TRUE(igh_master_exchange(id, nullptr, nullptr));
  }
}

void Scenario::cycleWith(const std::function<void()>& callback, std::uint16_t id) {
  std::function<void()> copy = callback;
  igh_master_exchange(
      id, [](void* function) { (*static_cast<std::function<void()>*>(function))(); }, &copy);
}

void Scenario::cycleUntil(std::uint32_t state, std::uint16_t id) {
  std::uint32_t seen = 0;
  for (int left = 200; left > 0 && seen != state; --left) {
    cycle(1, id);
    igh_master_get_state(id, &seen);
  }
  ASSERT_EQ(seen, state);
  cycle(2, id); // until inputs and working counter are those of this state
}

std::string Scenario::errorsOf(unsigned int cycles) {
  errors.take();
  cycle(cycles);
  return errors.take();
}

std::uint32_t Scenario::handle(std::uint32_t slave, const std::string& name, bool read, std::uint16_t id) {
  std::uint32_t handle = 0xFFFFFFFE;
  EXPECT_TRUE(igh_master_create_pdo_info(id, slave, name.c_str(), read, &handle)) << name;
  return handle;
}

double Scenario::value(std::uint32_t handle, std::uint16_t id) {
  double value = -1e9;
  EXPECT_TRUE(igh_master_pdo_recv(id, handle, &value));
  return value;
}

std::string Scenario::calls(Bus& of) {
  std::string names;
  for (const ethercat_simulation::TraceEntry& entry : of.trace()) {
    const std::string name = entry.text.substr(0, entry.text.find('('));
    names += (names.empty() ? "" : " ") + name.substr(name.rfind("ecrt_", 0) == 0 ? 5 : 0);
  }
  return names;
}

std::string Scenario::callText(Call call, Bus& of) {
  for (const ethercat_simulation::TraceEntry& entry : of.trace()) {
    if (entry.call == call) {
      return entry.text;
    }
  }
  return "";
}

} // namespace scenario
