#include "Fixture.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <unistd.h>

namespace scenario {

namespace {

std::string pdoXml(const char* element, int sync, int pdo, int object, const std::vector<Field>& fields) {
  static const std::map<std::string, unsigned int> widths{{"BOOL", 1},   {"SINT", 8},  {"USINT", 8},
                                                          {"INT", 16},   {"UINT", 16}, {"DINT", 32},
                                                          {"UDINT", 32}, {"REAL", 32}, {"LREAL", 64}};
  std::ostringstream xml;
  xml << "<" << element << " Sm='" << sync << "' Fixed='true'><Index>" << pdo << "</Index>";
  int subindex = 0;
  for (const Field& field : fields) {
    const int entry = field.name.rfind("gap", 0) == 0 ? 0 : 1;
    xml << "<Entry><Index>" << entry * object << "</Index><SubIndex>" << entry * ++subindex
        << "</SubIndex><BitLen>" << (field.bits != 0 ? field.bits : widths.at(field.type))
        << "</BitLen><Name>" << field.name << "</Name><DataType>" << field.type << "</DataType></Entry>";
  }
  xml << "</" << element << ">";
  return fields.empty() ? "" : xml.str();
}

void recordError(unsigned int device, unsigned int slave, int code, void* text) {
  auto& all = *static_cast<std::string*>(text);
  all += (all.empty() ? "" : " ") + std::to_string(device) + "/" +
         (slave == ETHERCAT_ERROR_WHOLE_MASTER ? "*" : std::to_string(slave)) + "/" + std::to_string(code);
  int last = 0;
  igh_master_get_last_error(static_cast<std::uint16_t>(device), &last);
  EXPECT_EQ(last, code) << "the callback sees the error as the last one";
}

} // namespace

ethercat_simulation::Slave slaveOf(const Device& device) {
  ethercat_simulation::Slave slave;
  slave.vendorId = 2;
  slave.productCode = device.productCode;
  slave.revisionNumber = 1;
  slave.name = "device";
  slave.objects = device.objects;
  slave.alias = device.alias;
  return slave;
}

std::string descriptionOf(const std::vector<Device>& devices) {
  std::ostringstream file;
  file << "<EtherCATInfo><Vendor><Id>2</Id></Vendor><Descriptions><Devices>";
  std::set<std::uint32_t> written;
  for (const Device& device : devices) {
    if (device.described && written.insert(device.productCode).second) {
      file << "<Device><Type ProductCode='" << device.productCode << "' RevisionNo='1'>T</Type>"
           << device.extra << pdoXml("RxPdo", 2, 0x1600, 0x7000, device.outputs)
           << pdoXml("TxPdo", 3, 0x1A00, 0x6000, device.inputs) << "</Device>";
    }
  }
  file << "</Devices></Descriptions></EtherCATInfo>";
  return file.str();
}

Printed capture(const std::function<void()>& run) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  run();
  std::string err = testing::internal::GetCapturedStderr();
  return {testing::internal::GetCapturedStdout(), std::move(err)};
}

void expectPrint(const std::string& out, const std::string& err, const std::function<void()>& run) {
  const Printed printed = capture(run);
  EXPECT_EQ(printed.err, err);
  EXPECT_EQ(printed.out, out);
}

void quietly(const std::function<void()>& run) {
  testing::internal::CaptureStdout();
  run();
  testing::internal::GetCapturedStdout();
}

Scenario::Scenario() {
  unsetenv("ETHERCAT_SIMULATION_BUS");
  ethercat_simulation::reset();
}

void Scenario::startOver() {
  for (const std::uint16_t id : masters) {
    quietly([&] { igh_master_uninitialize(id); });
    const ethercat_simulation::Misuse& misuse = bus(id).misuse();
    EXPECT_EQ(misuse.total(), outOfOrderExpected) << testing::PrintToString(misuse.lines);
    EXPECT_EQ(bus(id).openDeviceFiles(), 0);
    EXPECT_FALSE(bus(id).reserved());
  }
  ethercat_simulation::reset();
}

bool Scenario::describe(const std::vector<Device>& devices, std::uint16_t id) {
  const std::string path = testing::TempDir() + "/scenario." + std::to_string(getpid()) + ".xml";
  std::ofstream(path) << descriptionOf(devices);
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
  igh_master_set_exchange_mode(options.id, options.exchangeMode);
  igh_master_set_error_callback(options.id, recordError, &errors);
  EXPECT_TRUE(describe(devices, options.id));
}

std::string Scenario::calls(Bus& of) {
  std::string names;
  for (const ethercat_simulation::TraceEntry& entry : of.trace()) {
    const std::string name = entry.text.substr(0, entry.text.find('('));
    names += (names.empty() ? "" : " ") + name.substr(name.rfind("ecrt_", 0) == 0 ? 5 : 0);
  }
  return names;
}

std::string Scenario::callTexts(Call call, Bus& of) {
  std::string texts;
  for (const ethercat_simulation::TraceEntry& entry : of.trace()) {
    texts += entry.call == call ? entry.text + "\n" : "";
  }
  return texts;
}

} // namespace scenario
