// The input as calls of the exported functions in any order, with valid and invalid arguments, on a bus that
// changes and a platform whose calls fail. However it went, the library ends with nothing in its hands and
// has misused no handle.
#include "Support.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <ethercat_simulation/Simulation.h>
#include <igh_master.h>
#include <sys/syscall.h>

// Nobody sleeps here: the monotonic clock is moved on instead. They stand before those of the C library, for
// every library of the process.
static std::int64_t sleptNs = 0;
#pragma GCC visibility push(default)
extern "C" {
int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  const std::int64_t nanoseconds = time->tv_nsec + (clock == CLOCK_MONOTONIC ? sleptNs : 0);
  time->tv_sec += nanoseconds / 1000000000;
  time->tv_nsec = nanoseconds % 1000000000;
  return result;
}
int clock_nanosleep(clockid_t clock, int /*flags*/, const timespec* until, timespec* /*left*/) {
  timespec now{};
  clock_gettime(clock, &now);
  const std::int64_t left = (until->tv_sec - now.tv_sec) * 1000000000 + until->tv_nsec - now.tv_nsec;
  sleptNs += left > 0 ? left : 0;
  return 0;
}
}
#pragma GCC visibility pop

namespace {

namespace sim = ethercat_simulation;
using fuzz::Input;
using sim::Call;
using std::int32_t;
using std::uint16_t;
using std::uint32_t;
using std::uint8_t;

constexpr uint16_t masters[] = {0, 0, 0, 0, 0, 1, 9};

// What a pointer may point to: outlives every transfer and is longer than any that can be asked for.
double memory[1024];
bool done[4];

// An argument of each type. Those of 32 bits are slaves, handles, bytes and counts alike.
template <class Type> Type argument(Input& input) {
  if constexpr (std::is_same_v<Type, uint16_t>) {
    return input.any<uint16_t>({0, 1, 2, 3, 0x2000, 0x2001, 0x6041, 0x0300, 0xFFFF});
  } else if constexpr (std::is_same_v<Type, uint32_t>) {
    return input.any<uint32_t>({0, 1, 2, 3, 4, 5, 6, 8, 64, 254, 255, 300});
  } else if constexpr (std::is_same_v<Type, uint8_t>) {
    return static_cast<uint8_t>(input.below(10));
  } else if constexpr (std::is_same_v<Type, int32_t>) {
    return input.any<int32_t>({0, 5, -1, -ENOENT, -EAGAIN});
  } else if constexpr (std::is_same_v<Type, std::int64_t>) {
    return input.any<std::int64_t>({0, 1000, -1000, 10000000000, -10000000000});
  } else if constexpr (std::is_same_v<Type, double>) {
    return input.any<double>({0, 1, -1, 255.5, -1e300, 1e19, 1 / 1e-310, -(0 * 1e308 * 10)});
  } else if constexpr (std::is_same_v<Type, ETHERCAT_DATA_TYPE>) {
    return static_cast<ETHERCAT_DATA_TYPE>(static_cast<int>(input.below(13)) - 1);
  } else if constexpr (std::is_same_v<Type, const char*>) {
    return input.any<const char*>({"Out", "In", "Long", "Bit", "1st In", "", "none", nullptr});
  } else if constexpr (std::is_same_v<Type, bool>) {
    return input.below(2) == 1;
  } else if constexpr (std::is_same_v<Type, bool*>) {
    return input.any<bool*>({done, done + 1, done + 2, done + 3, nullptr});
  } else if constexpr (std::is_pointer_v<Type>) {
    return static_cast<Type>(input.below(8) == 7 ? nullptr : static_cast<void*>(memory));
  } else if constexpr (std::is_same_v<Type, sim::SdoFault>) {
    return static_cast<sim::SdoFault>(input.below(5)); // a request that is busy for ever holds up its end
  } else if constexpr (std::is_same_v<Type, sim::Slave>) {
    sim::Slave slave;
    slave.vendorId = 2;
    slave.productCode = input.below(3) + 1; // 3 has no description
    slave.revisionNumber = 1;
    slave.model = static_cast<sim::SlaveModel>(input.below(3));
    slave.objects = {{0x2000, 1, {1, 2}}, {0x2000, 2, {3, 4, 5, 6}}, {0x2001, 0, {7}, true}};
    return slave;
  } else if constexpr (std::is_same_v<Type, sim::Fault>) {
    sim::Fault fault;
    fault.kind = static_cast<sim::FaultKind>(input.below(11));
    fault.at = input.byte() + 1U;
    fault.duration = input.below(50) + 1;
    fault.slave = input.below(4);
    fault.index = 0x2000;
    fault.subindex = 1;
    return fault;
  } else {
    static_assert(std::is_same_v<Type, Call>);
    // Not those whose failure nobody is told of, although it leaves the master held, active or open; nor the
    // state of a request, which is no error number.
    const auto any = static_cast<Call>(input.below(static_cast<std::size_t>(Call::count)));
    return any == Call::releaseMaster || any == Call::deactivate || any == Call::deviceClose ||
                   any == Call::sdoState
               ? Call::getSlave
               : any;
  }
}

template <class Type> using Plain = std::remove_const_t<std::remove_reference_t<Type>>;

template <class Result, class... Types> void call(Result (*function)(uint16_t, Types...), Input& input) {
  const uint16_t id = input.any(masters);
  function(id, argument<Types>(input)...);
}
template <class Result, class... Types> void call(Result (sim::Bus::*order)(Types...), Input& input) {
  sim::Bus& bus = sim::bus(input.below(2));
  (bus.*order)(argument<Plain<Types>>(input)...);
}
void call(void (*own)(Input&), Input& input) {
  own(input);
}
template <auto... functions> struct Steps {
  static void take(unsigned int step, Input& input) {
    constexpr void (*steps[])(Input&) = {[](Input& choices) { call(functions, choices); }...};
    steps[step](input);
  }
  static constexpr unsigned int count = sizeof...(functions);
};

void cyclic(void* input);
void onError(unsigned int /*master*/, unsigned int /*slave*/, int /*code*/, void* input) {
  cyclic(input);
}

const char* const description = R"(<EtherCATInfo><Vendor><Id>2</Id></Vendor><Descriptions>
<Modules><Module><Type ModuleIdent="7"/><Name LcId="1">M</Name><TxPdo Sm="3" Fixed="1"><Index DependOnSlot="1">#x1A10</Index>
<Entry><Index DependOnSlot="1">#x6010</Index><BitLen>16</BitLen><Name>In</Name><DataType>UINT</DataType></Entry></TxPdo></Module></Modules>
<Devices><Device><Type ProductCode="1" RevisionNo="1">A</Type><RxPdo Sm="2" Fixed="1"><Index>#x1600</Index>
<Entry><Index>#x7000</Index><BitLen>8</BitLen><Name>Out</Name><DataType>USINT</DataType></Entry><Entry><Index>0</Index><BitLen>8</BitLen></Entry>
<Entry><Index>#x7001</Index><BitLen>64</BitLen><Name>Long</Name><DataType>LREAL</DataType></Entry></RxPdo><TxPdo Sm="3" Fixed="1"><Index>#x1A00</Index>
<Entry><Index>#x6000</Index><BitLen>16</BitLen><Name>In</Name><DataType>INT</DataType></Entry>
<Entry><Index>#x6001</Index><BitLen>1</BitLen><Name>Bit</Name><DataType>BOOL</DataType></Entry></TxPdo>
<Dc><OpMode><Name>DC</Name><AssignActivate>#x300</AssignActivate></OpMode></Dc></Device>
<Device><Type ProductCode="2" RevisionNo="1">A</Type><Slots SlotIndexIncrement="16" SlotPdoIncrement="1"><Slot><ModuleIdent>7</ModuleIdent></Slot>
<Slot><ModuleIdent>7</ModuleIdent></Slot></Slots></Device></Devices></Descriptions></EtherCATInfo>)";

void appendEni(Input& input) {
  static fuzz::MemoryFile file;
  const bool damaged = input.below(8) == 7;
  file.fill(description, std::strlen(description) / (damaged ? 2 : 1));
  igh_master_append_eni(input.any(masters), input.any<const char*>({file.path(), "/none", "/", nullptr}));
}
void exchange(Input& input) {
  const uint16_t id = input.any(masters);
  const bool withCallback = input.below(2) == 1;
  for (int left = input.any<int>({1, 10, 100, 2}); left > 0; --left) {
    igh_master_exchange(id, withCallback ? cyclic : nullptr, &input);
  }
}
void initialize(Input& input) {
  const uint32_t period = input.any<uint32_t>({1000000, 100000, 99999, 4000000001U});
  const bool clocks = argument<bool>(input);
  igh_master_initialize_ex(input.any(masters), period, clocks, argument<bool>(input));
}

void getState(Input& input) {
  igh_master_get_state(input.any(masters), reinterpret_cast<uint32_t*>(memory));
}
void getLastError(Input& input) {
  igh_master_get_last_error(input.any(masters), reinterpret_cast<int32_t*>(memory));
}
void setErrorCallback(Input& input) {
  igh_master_set_error_callback(input.any(masters), onError, &input);
}

// Those in front may be taken in the cycle, also from the callbacks; then comes set-up, then the platform.
constexpr unsigned int cyclicSteps = 17;
using AllSteps =
    Steps<igh_master_get_period, igh_master_pdo_recv, igh_master_pdo_send, igh_master_raw_sdo_recv,
          igh_master_sdo_recv_ex, igh_master_sdo_recv, igh_master_raw_sdo_send, igh_master_sdo_send_ex,
          igh_master_sdo_send, igh_master_process_sdo_immediately, igh_master_request_terminate,
          igh_master_is_request_terminate, igh_master_clear_error, igh_master_get_system_base_offset,
          igh_master_get_comm_diag_info, getState, getLastError, exchange, exchange, initialize, appendEni,
          setErrorCallback, igh_master_initialize, igh_master_uninitialize, igh_master_set_exchange_mode,
          igh_master_enable_eoe_function, igh_master_scan, igh_master_get_slave_product_code,
          igh_master_get_slave_revision_code, igh_master_config_slave, igh_master_config_all_slave,
          igh_master_get_slot_number, igh_master_get_slot_index_increment, igh_master_get_slot_pdo_increment,
          igh_master_active, igh_master_create_pdo_info, igh_master_destroy_pdo_info,
          igh_master_create_raw_sdo_request, igh_master_create_raw_sdo_request_complete,
          igh_master_create_sdo_request_ex, igh_master_create_sdo_request, igh_master_destroy_sdo_request,
          igh_master_read_esc_reg, igh_master_write_esc_reg, igh_master_clear_esc_error_regs,
          igh_master_clear_all_esc_error_regs, igh_master_request_esc_state, igh_master_output_comm_diag_info,
          igh_master_set_dc_debug_enable, &sim::Bus::failNext, &sim::Bus::failNext, &sim::Bus::addFault,
          &sim::Bus::dropFrames, &sim::Bus::delayFrames, &sim::Bus::setLinkUp, &sim::Bus::setWireBroken,
          &sim::Bus::setPowered, &sim::Bus::setAlError, &sim::Bus::setErrorFlag, &sim::Bus::setResponding,
          &sim::Bus::setMaximumState, &sim::Bus::setSdoFault, &sim::Bus::removeSlave, &sim::Bus::insertSlave,
          &sim::Bus::stepReferenceClock, &sim::Bus::setReactivationUnmapped, &sim::Bus::setImageNeverMapped>;

void cyclic(void* input) {
  Input& choices = *static_cast<Input*>(input);
  AllSteps::take(choices.below(cyclicSteps), choices);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Input input(data, size);
  sim::reset();
  for (const unsigned int master : {1U, 0U}) {
    sim::bus(master).setTiming(input.below(2) == 1 ? sim::Timing::real : sim::Timing::fast);
    sim::bus(master).setCycleTime(std::chrono::milliseconds(10)); // 100 cycles pass all its states
    for (unsigned int slaves = input.below(5); slaves > 0; --slaves) {
      sim::bus(master).addSlave(argument<sim::Slave>(input));
    }
  }
  while (!input.empty()) {
    AllSteps::take(input.below(AllSteps::count), input);
  }
  for (const uint16_t master : masters) {
    igh_master_uninitialize(master);
    const sim::Bus& bus = sim::bus(master);
    REQUIRE(!bus.reserved() && bus.openDeviceFiles() == 0);
    REQUIRE(bus.misuse().deadHandle == 0 && bus.misuse().foreignHandle == 0);
    // The caller answers for set-up after the activation, an exchange before it, and a transfer begun by
    // that.
    for (const std::string& line : bus.misuse().lines) {
      REQUIRE(line.find("while the master was") != std::string::npos || line.rfind("ecrt_release", 0) == 0);
    }
  }
  return 0;
}
