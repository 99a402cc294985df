// The input as calls of the exported functions in any order, with valid and invalid arguments, on a bus that
// changes and a platform whose calls fail. However it went, the library ends with nothing in its hands and
// has misused no handle.
#include "Support.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <ethercat_simulation/Simulation.h>
#include <igh_master.h>
#include <iterator>

// Nobody sleeps here: exchange mode counts its waits.
extern "C" int clock_nanosleep(clockid_t /*clock*/, int /*flags*/, const timespec* /*time*/,
                               timespec* /*left*/) {
  return 0;
}

namespace {

namespace sim = ethercat_simulation;
using fuzz::Input;
using sim::Call;

constexpr std::uint16_t masters[] = {0, 0, 0, 0, 0, 1, 9};
constexpr std::uint32_t none = 0xFFFFFFFF;
constexpr std::size_t largestTransfer = 512;

// What a transfer writes to must live as long as it does.
double values[largestTransfer];
bool done[4];
std::uint32_t number;

std::uint16_t id(Input& input) {
  return input.any(masters);
}
std::uint32_t slave(Input& input) {
  static constexpr std::uint32_t slaves[] = {0, 1, 2, 3, 254, 255, none};
  return input.any(slaves);
}
std::uint32_t handle(Input& input) {
  static constexpr std::uint32_t handles[] = {0, 1, 2, 3, 4, 5, 6, none};
  return input.any(handles);
}
std::uint32_t size(Input& input) {
  static constexpr std::uint32_t sizes[] = {1, 2, 4, 8, 3, 0, 64, 0x80000000};
  return input.any(sizes);
}
std::uint32_t bytes(Input& input) {
  return size(input) % (largestTransfer + 1);
}
std::uint32_t* out(Input& input) {
  return input.below(8) == 7 ? nullptr : &number;
}
double* destination(Input& input) {
  return input.below(8) == 7 ? nullptr : values;
}
bool* flag(Input& input) {
  return input.below(8) == 7 ? nullptr : &done[input.below(4)];
}
double value(Input& input) {
  static constexpr double all[] = {0, 1, -1, 255.5, -1e300, 1e19, 0.0 / 1e-300, 1e308 * 10};
  return input.any(all);
}
std::uint16_t index(Input& input) {
  static constexpr std::uint16_t indexes[] = {0x2000, 0x2001, 0x6060, 0x6041, 0};
  return input.any(indexes);
}
ETHERCAT_DATA_TYPE type(Input& input) {
  return static_cast<ETHERCAT_DATA_TYPE>(static_cast<int>(input.below(13)) - 1);
}
sim::Bus& bus(Input& input) {
  return sim::bus(input.below(2));
}
unsigned int position(Input& input) {
  return input.below(4);
}

const char* const description = R"(<EtherCATInfo><Vendor><Id>2</Id></Vendor><Descriptions>
<Modules><Module><Type ModuleIdent="7"/><Name LcId="1033">M</Name><TxPdo Sm="3" Fixed="1"><Index DependOnSlot="1">#x1A10</Index>
<Entry><Index DependOnSlot="1">#x6010</Index><SubIndex>1</SubIndex><BitLen>16</BitLen><Name>In</Name><DataType>UINT</DataType></Entry></TxPdo></Module></Modules>
<Devices><Device><Type ProductCode="1" RevisionNo="1">A</Type>
<RxPdo Sm="2" Fixed="1"><Index>#x1600</Index><Entry><Index>#x7000</Index><SubIndex>1</SubIndex><BitLen>8</BitLen><Name>Out</Name><DataType>USINT</DataType></Entry>
<Entry><Index>0</Index><BitLen>8</BitLen></Entry><Entry><Index>#x7000</Index><SubIndex>2</SubIndex><BitLen>64</BitLen><Name>Long</Name><DataType>LREAL</DataType></Entry></RxPdo>
<TxPdo Sm="3" Fixed="1"><Index>#x1A00</Index><Entry><Index>#x6000</Index><SubIndex>1</SubIndex><BitLen>16</BitLen><Name>In</Name><DataType>INT</DataType></Entry>
<Entry><Index>#x6000</Index><SubIndex>2</SubIndex><BitLen>1</BitLen><Name>Bit</Name><DataType>BOOL</DataType></Entry></TxPdo>
<Dc><OpMode><Name>DC</Name><AssignActivate>#x300</AssignActivate></OpMode></Dc></Device>
<Device><Type ProductCode="2" RevisionNo="1">B</Type><Slots SlotIndexIncrement="16" SlotPdoIncrement="1"><Slot><ModuleIdent>7</ModuleIdent></Slot><Slot><ModuleIdent>7</ModuleIdent></Slot></Slots></Device>
</Devices></Descriptions></EtherCATInfo>)";

const char* path(Input& input) {
  static fuzz::MemoryFile good;
  static fuzz::MemoryFile bad;
  good.fill(description, std::strlen(description));
  bad.fill(description, std::strlen(description) / 2);
  const char* const paths[] = {good.path(), bad.path(), "/nonexistent", "/", nullptr};
  return input.any(paths);
}

sim::Slave newSlave(Input& input) {
  sim::Slave slave;
  slave.vendorId = 2;
  slave.productCode = input.below(3) + 1; // 3 has no description
  slave.revisionNumber = 1;
  slave.model = static_cast<sim::SlaveModel>(input.below(3));
  slave.objects = {{0x2000, 1, {1, 2}}, {0x2000, 2, {3, 4, 5, 6}}, {0x2001, 0, {7}, true}};
  return slave;
}

void cyclic(void* input);
void onError(unsigned int /*master*/, unsigned int /*slave*/, int /*code*/, void* input) {
  cyclic(input);
}
void exchange(Input& input) {
  static constexpr int counts[] = {1, 10, 100, 2};
  const std::uint16_t master = id(input);
  const bool withCallback = input.flag();
  for (int left = input.any(counts); left > 0; --left) {
    igh_master_exchange(master, withCallback ? cyclic : nullptr, &input);
  }
}
void failNext(Input& input) {
  // Not those whose failure nobody is told of, although it leaves the master held, active or open.
  static constexpr Call calls[] = {Call::requestMaster,
                                   Call::getSlave,
                                   Call::slaveConfig,
                                   Call::configPdos,
                                   Call::createDomain,
                                   Call::regPdoEntryList,
                                   Call::domainData,
                                   Call::domainSize,
                                   Call::domainState,
                                   Call::activate,
                                   Call::masterState,
                                   Call::linkState,
                                   Call::configState,
                                   Call::referenceClockTime,
                                   Call::selectReferenceClock,
                                   Call::createSdoRequest,
                                   Call::createSdoRequestComplete,
                                   Call::sdoState,
                                   Call::sdoData,
                                   Call::sdoDataSize,
                                   Call::deviceOpen,
                                   Call::deviceIoctl,
                                   Call::receive,
                                   Call::send,
                                   Call::domainProcess,
                                   Call::domainQueue,
                                   Call::configDc,
                                   Call::sdoRead,
                                   Call::sdoWrite};
  static constexpr int results[] = {-1, -ENOENT, -EAGAIN, -ENOMEM, 0};
  const Call call = input.any(calls);
  bus(input).failNext(call, input.any(results), input.below(8));
}
void addFault(Input& input) {
  sim::Fault fault;
  fault.kind = static_cast<sim::FaultKind>(input.below(11));
  fault.at = input.below(200) + 1;
  fault.duration = input.below(50) + 1;
  fault.slave = position(input);
  fault.index = 0x2000;
  fault.subindex = 1;
  bus(input).addFault(fault);
}

using Step = void (*)(Input& input);
// The first ones may be taken in the cycle, also from the callbacks.
const Step steps[] = {
    [](Input& i) { igh_master_get_period(id(i), out(i)); },
    [](Input& i) { igh_master_pdo_recv(id(i), handle(i), destination(i)); },
    [](Input& i) { igh_master_pdo_send(id(i), handle(i), value(i)); },
    [](Input& i) { igh_master_raw_sdo_recv(id(i), handle(i), destination(i), size(i), flag(i)); },
    [](Input& i) { igh_master_sdo_recv_ex(id(i), handle(i), destination(i), size(i), flag(i)); },
    [](Input& i) { igh_master_sdo_recv(id(i), handle(i), destination(i), flag(i)); },
    [](Input& i) { igh_master_raw_sdo_send(id(i), handle(i), destination(i), size(i), flag(i)); },
    [](Input& i) { igh_master_sdo_send_ex(id(i), handle(i), destination(i), size(i), flag(i)); },
    [](Input& i) { igh_master_sdo_send(id(i), handle(i), value(i), flag(i)); },
    [](Input& i) { igh_master_process_sdo_immediately(id(i), handle(i)); },
    [](Input& i) { igh_master_get_state(id(i), &number); },
    [](Input& i) { igh_master_request_terminate(id(i)); },
    [](Input& i) { igh_master_is_request_terminate(id(i)); },
    [](Input& i) { igh_master_clear_error(id(i)); },
    [](Input& i) {
      std::int32_t error = 0;
      igh_master_get_last_error(id(i), &error);
    },
    [](Input& i) {
      std::uint64_t offset = 0;
      igh_master_get_system_base_offset(id(i), i.flag() ? nullptr : &offset);
    },
    [](Input& i) {
      _ETHERCAT_COMM_DIAG_INFO info{};
      igh_master_get_comm_diag_info(id(i), size(i), i.flag() ? nullptr : &info);
    },
    exchange, // set-up from here on
    exchange,
    [](Input& i) {
      static constexpr std::uint32_t periods[] = {1000000, 100000, 99999, 4000000001U};
      const std::uint32_t period = i.any(periods);
      const bool clocks = i.flag();
      igh_master_initialize_ex(id(i), period, clocks, i.flag());
    },
    [](Input& i) { igh_master_initialize(id(i), 1000000, i.flag()); },
    [](Input& i) { igh_master_uninitialize(id(i)); },
    [](Input& i) { igh_master_set_exchange_mode(id(i), i.flag()); },
    [](Input& i) { igh_master_set_error_callback(id(i), i.flag() ? nullptr : onError, &i); },
    [](Input& i) { igh_master_append_eni(id(i), path(i)); },
    [](Input& i) { igh_master_enable_eoe_function(id(i), slave(i), true); },
    [](Input& i) { igh_master_scan(id(i), out(i)); },
    [](Input& i) { igh_master_get_slave_product_code(id(i), slave(i), out(i)); },
    [](Input& i) { igh_master_get_slave_revision_code(id(i), slave(i), out(i)); },
    [](Input& i) { igh_master_config_slave(id(i), slave(i)); },
    [](Input& i) { igh_master_config_all_slave(id(i)); },
    [](Input& i) { igh_master_get_slot_number(id(i), slave(i), out(i)); },
    [](Input& i) { igh_master_get_slot_index_increment(id(i), slave(i), out(i)); },
    [](Input& i) { igh_master_get_slot_pdo_increment(id(i), slave(i), out(i)); },
    [](Input& i) { igh_master_active(id(i)); },
    [](Input& i) {
      static const char* const names[] = {"Out", "In", "Long", "Bit", "1st M.In", "", "none", nullptr};
      const char* const name = i.any(names);
      const bool read = i.flag();
      igh_master_create_pdo_info(id(i), slave(i), name, read, out(i));
    },
    [](Input& i) { igh_master_destroy_pdo_info(id(i), handle(i), i.flag()); },
    [](Input& i) {
      const std::uint16_t object = index(i);
      const auto subindex = static_cast<std::uint8_t>(i.below(3));
      const bool read = i.flag();
      igh_master_create_raw_sdo_request(id(i), slave(i), object, subindex, bytes(i), 0, read, out(i));
    },
    [](Input& i) {
      const bool read = i.flag();
      igh_master_create_raw_sdo_request_complete(id(i), slave(i), index(i), bytes(i), 5, read, out(i));
    },
    [](Input& i) {
      const std::uint16_t object = index(i);
      const ETHERCAT_DATA_TYPE kind = type(i);
      const std::uint32_t count = kind > DATA_TYPE_USINT ? size(i) : bytes(i); // 0x80000000: beyond 32 bits
      igh_master_create_sdo_request_ex(id(i), slave(i), object, 1, kind, count, -1, i.flag(), out(i));
    },
    [](Input& i) {
      const std::uint16_t object = index(i);
      const ETHERCAT_DATA_TYPE kind = type(i);
      const bool read = i.flag();
      igh_master_create_sdo_request(id(i), slave(i), object, 1, kind, 0, read, out(i));
    },
    [](Input& i) { igh_master_destroy_sdo_request(id(i), handle(i), i.flag()); },
    [](Input& i) {
      auto* const data = reinterpret_cast<std::uint8_t*>(destination(i));
      const auto address = static_cast<std::uint16_t>(i.byte() * 16);
      igh_master_read_esc_reg(id(i), static_cast<std::uint16_t>(slave(i)), address, data, bytes(i));
    },
    [](Input& i) {
      auto* const data = reinterpret_cast<std::uint8_t*>(destination(i));
      const auto address = static_cast<std::uint16_t>(i.byte() * 16);
      igh_master_write_esc_reg(id(i), static_cast<std::uint16_t>(slave(i)), address, data, bytes(i));
    },
    [](Input& i) { igh_master_clear_esc_error_regs(id(i), static_cast<std::uint16_t>(slave(i))); },
    [](Input& i) { igh_master_clear_all_esc_error_regs(id(i)); },
    [](Input& i) { igh_master_request_esc_state(id(i), static_cast<std::uint16_t>(slave(i)), i.byte()); },
    [](Input& i) {
      _ETHERCAT_COMM_DIAG_INFO info{};
      igh_master_output_comm_diag_info(id(i), i.flag() ? nullptr : "", i.flag() ? nullptr : &info);
    },
    [](Input& i) { igh_master_set_dc_debug_enable(id(i), i.flag()); },
    failNext, // the platform from here on
    failNext,
    addFault,
    [](Input& i) { bus(i).dropFrames(i.below(20)); },
    [](Input& i) { bus(i).delayFrames(i.below(20)); },
    [](Input& i) { bus(i).setLinkUp(i.flag()); },
    [](Input& i) { bus(i).setWireBroken(position(i), i.flag()); },
    [](Input& i) { bus(i).setPowered(position(i), i.flag()); },
    [](Input& i) { bus(i).setAlError(position(i), 2, static_cast<std::uint16_t>(i.below(2))); },
    [](Input& i) { bus(i).setErrorFlag(position(i), i.flag()); },
    [](Input& i) { bus(i).setResponding(position(i), i.flag()); },
    [](Input& i) { bus(i).setMaximumState(position(i), i.flag() ? 8 : 2); },
    [](Input& i) {
      const auto fault = static_cast<sim::SdoFault>(i.below(5));
      bus(i).setSdoFault(position(i), 0x2000, 1, fault);
    },
    [](Input& i) { bus(i).removeSlave(position(i)); },
    [](Input& i) { bus(i).insertSlave(position(i), newSlave(i)); },
    [](Input& i) { bus(i).setReactivationUnmapped(i.flag()); },
};
constexpr std::size_t cyclicSteps = 17;

void cyclic(void* input) {
  Input& choices = *static_cast<Input*>(input);
  steps[choices.below(cyclicSteps)](choices);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t length) {
  Input input(data, length);
  for (const unsigned int master : {0U, 1U}) {
    sim::bus(master).setTiming(input.flag() ? sim::Timing::real : sim::Timing::fast);
    sim::bus(master).setCycleTime(std::chrono::milliseconds(10)); // 100 cycles pass all its states
  }
  for (unsigned int slaves = input.below(5); slaves > 0; --slaves) {
    sim::bus(0).addSlave(newSlave(input));
  }
  sim::bus(1).addSlave(newSlave(input));
  while (!input.empty()) {
    steps[input.below(std::size(steps))](input);
  }
  for (const std::uint16_t master : masters) {
    igh_master_uninitialize(master);
    const sim::Bus& platform = sim::bus(master);
    REQUIRE(platform.misuse().deadHandle == 0 && platform.misuse().foreignHandle == 0);
    // Out of order are an exchange before the activation and set-up after it, which the caller answers for.
    for (const std::string& line : platform.misuse().lines) {
      REQUIRE(line.find("while the master was") != std::string::npos);
    }
    REQUIRE(!platform.reserved() && platform.openDeviceFiles() == 0);
  }
  sim::reset();
  return 0;
}
