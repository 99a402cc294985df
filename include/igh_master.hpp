// igh_master.hpp - igh_master.h for C++17: the ids as types that give back what they hold.
//
//   auto master = igh_master::Master::open(0, std::chrono::milliseconds(1));
//   if (!master || !master->load("servo_drive.xml") || !master->scan() || !master->configure())
//     return 1;
//   auto target = master->output<double>(5, "Target position");
//   auto actual = master->input<double>(5, "Position actual value");
//   if (!target || !actual || !master->activate())
//     return 1;
//   for (...) { target->set(x); master->exchange(); y = actual->get(); }
//
// Header only. Every call is one of igh_master.h, where arguments, units, threads ("Set-up", "Cycle") and
// results are described. Here is told what is added: owners, types, and callbacks without a void pointer.
//
// Owners can be moved and not copied. Each gives back what it holds when it ends, in any order: an Input, an
// Output or an SdoRequest may outlive its Master or the scan that it belongs to, and must not be used then
// any more. A debug build (without NDEBUG) checks that. What has been moved from may only be assigned to or
// destroyed. Making, moving and ending are set-up.
//
// Nothing here throws in the cycle. Set-up results are [[nodiscard]]: an optional without a value, or false,
// with the library's own line on standard output or error. Only std::bad_alloc passes through set-up, as it
// does through the library.
#ifndef IGH_MASTER_HPP
#define IGH_MASTER_HPP

#include <igh_master.h>

#include <array>
#include <cassert>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace igh_master {

// AL states, as Master::state() gives them for all slaves ORed.
enum AlState : std::uint32_t { NOBODY = 0, INIT = 1, PREOP = 2, SAFEOP = 4, OP = 8 };

namespace detail {

// Where the library writes an answer: it must neither move nor go while a transfer is pending.
struct Transfer {
  virtual ~Transfer() = default;
  bool readDone = true;
  bool writeDone = true;
  std::unique_ptr<Transfer> next;

  // Also in another thread than the one that cycles.
  bool done() const noexcept {
    return __atomic_load_n(&readDone, __ATOMIC_ACQUIRE) && __atomic_load_n(&writeDone, __ATOMIC_ACQUIRE);
  }
};

// What the owners of one master know of it in common.
struct Life {
  std::uint16_t id = 0;
  std::uint32_t scans = 0;
  bool open = true;
  // Left behind in the middle, while another request for the same object keeps the library at it.
  std::unique_ptr<Transfer> orphans;

  void adopt(std::unique_ptr<Transfer> transfer) noexcept {
    transfer->next = std::move(orphans);
    orphans = std::move(transfer);
  }
  // Once nobody writes there any more. Not by recursion: there may be many.
  void bury() noexcept {
    while (orphans) {
      orphans = std::move(orphans->next);
    }
  }
};

// A handle of the library with one user in one direction.
template <void (*DESTROY)(std::uint16_t, std::uint32_t, bool), bool READ> class Handle {
public:
  Handle(std::shared_ptr<Life> life, std::uint32_t id) noexcept
      : m_life(std::move(life)), m_id(id), m_scan(m_life->scans), m_master(m_life->id) {}
  Handle(Handle&& other) noexcept = default; // the shared pointer says who has it
  Handle& operator=(Handle&& other) noexcept {
    Handle ended(std::move(other));
    swap(ended);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (valid()) { // else the library has given the number to someone else, or will
      DESTROY(m_master, m_id, READ);
    }
  }

  std::uint16_t master() const noexcept { return m_master; }
  std::uint32_t id() const noexcept {
    assert(valid());
    return m_id;
  }
  bool valid() const noexcept { return m_life && m_life->open && m_life->scans == m_scan; }
  Life* life() const noexcept { return m_life.get(); }

private:
  void swap(Handle& other) noexcept {
    std::swap(m_life, other.m_life);
    std::swap(m_id, other.m_id);
    std::swap(m_scan, other.m_scan);
    std::swap(m_master, other.m_master);
  }

  std::shared_ptr<Life> m_life;
  std::uint32_t m_id;
  std::uint32_t m_scan;
  std::uint16_t m_master;
};
template <bool READ> using EntryHandle = Handle<igh_master_destroy_pdo_info, READ>;
template <bool READ> using RequestHandle = Handle<igh_master_destroy_sdo_request, READ>;

// A value of the library as T: what is beyond the range of an integer is held at its limits, NaN is 0.
template <class T> T convert(double value) noexcept {
  if constexpr (std::is_integral_v<T>) {
    using Limits = std::numeric_limits<T>;
    // Twice the middle: the maximum of 64 bits has no double of its own, the power of two above it has.
    constexpr double END = 2.0 * static_cast<double>(Limits::max() / 2 + 1);
    if (!(value > static_cast<double>(Limits::min()))) {
      return value < 0 ? Limits::min() : T{0};
    }
    return value < END ? static_cast<T>(value) : Limits::max();
  } else {
    return static_cast<T>(value);
  }
}

template <class T> constexpr bool IS_VALUE = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

} // namespace detail

// An entry that each exchange refreshes, as T. Cycle, but for its making and its end.
template <class T = double> class Input {
  static_assert(detail::IS_VALUE<T>, "the library's values are numbers");

public:
  // What the last exchange received.
  [[nodiscard]] T get() const noexcept {
    double value = 0;
    igh_master_pdo_recv(m_handle.master(), m_handle.id(), &value);
    return detail::convert<T>(value);
  }
  operator T() const noexcept { return get(); }
  [[nodiscard]] std::uint32_t id() const noexcept { return m_handle.id(); }
  // False once the bus was scanned again or the master is gone.
  [[nodiscard]] bool valid() const noexcept { return m_handle.valid(); }

private:
  friend class Master;
  explicit Input(detail::EntryHandle<true>&& handle) noexcept : m_handle(std::move(handle)) {}
  detail::EntryHandle<true> m_handle;
};

// An entry that each exchange sends, as T; 0 until it is set. Cycle, but for its making and its end.
template <class T = double> class Output {
  static_assert(detail::IS_VALUE<T>, "the library's values are numbers");

public:
  // Leaves with the next exchange; wraps to the width of the entry's type.
  void set(T value) noexcept {
    igh_master_pdo_send(m_handle.master(), m_handle.id(), static_cast<double>(value));
  }
  Output& operator=(T value) noexcept {
    set(value);
    return *this;
  }
  [[nodiscard]] std::uint32_t id() const noexcept { return m_handle.id(); }
  [[nodiscard]] bool valid() const noexcept { return m_handle.valid(); }

private:
  friend class Master;
  explicit Output(detail::EntryHandle<false>&& handle) noexcept : m_handle(std::move(handle)) {}
  detail::EntryHandle<false> m_handle;
};

// One object of a slave, to be read and written as often as one likes: arm by read() or write(), exchange
// until done(). T has the size of the object and no padding: an integer of any width, float, double,
// std::array of them. Bytes are those of the wire, which are this machine's.
template <class T> class SdoRequest {
  static_assert(std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>, "the object's bytes make a T");
#ifdef __BYTE_ORDER__
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "objects are little endian");
#endif

public:
  SdoRequest(SdoRequest&&) noexcept = default;
  SdoRequest& operator=(SdoRequest&& other) noexcept {
    SdoRequest ended(std::move(other));
    std::swap(m_transfer, ended.m_transfer);
    std::swap(m_reader, ended.m_reader);
    std::swap(m_writer, ended.m_writer);
    return *this;
  }
  ~SdoRequest() {
    if (m_reader.valid() && !m_transfer->done()) {
      m_reader.life()->adopt(std::move(m_transfer));
    }
  }
  // Arms a read. Cycle. False while one is pending, and for a request that is shared and has another size.
  [[nodiscard]] bool read() noexcept {
    return igh_master_raw_sdo_recv(m_reader.master(), m_reader.id(), &m_transfer->value, sizeof(T),
                                   &m_transfer->readDone);
  }
  // Arms a write. Cycle. False as for read(), and behind a short answer as igh_master_raw_sdo_send tells.
  [[nodiscard]] bool write(const T& value) noexcept {
    return igh_master_raw_sdo_send(m_writer.master(), m_writer.id(), &value, sizeof(T),
                                   &m_transfer->writeDone);
  }
  // Nothing is pending. Also in another thread than the one that cycles.
  [[nodiscard]] bool done() const noexcept {
    return m_transfer->done();
  }
  // What the last read brought; only when done.
  [[nodiscard]] const T& value() const noexcept {
    return m_transfer->value;
  }
  // Is served next.
  [[nodiscard]] bool hurry() noexcept {
    return igh_master_process_sdo_immediately(m_reader.master(), m_reader.id());
  }
  [[nodiscard]] bool valid() const noexcept {
    return m_reader.valid();
  }

private:
  friend class Master;
  struct Transfer : detail::Transfer {
    T value{};
  };
  SdoRequest(detail::RequestHandle<true>&& reader, detail::RequestHandle<false>&& writer)
      : m_transfer(std::make_unique<Transfer>()), m_reader(std::move(reader)), m_writer(std::move(writer)) {}

  std::unique_ptr<Transfer> m_transfer; // ends last
  detail::RequestHandle<true> m_reader;
  detail::RequestHandle<false> m_writer;
};

// How a master is opened; see igh_master_initialize_ex.
struct Options {
  bool distributedClocks = true;
  bool syncToReferenceClock = false;
  bool exchangeMode = false;
};

// What an error handler is told: the slave, or nothing for the master as a whole.
using ErrorSlave = std::optional<unsigned int>;

// A master; its end deactivates the bus and takes it away. The functions that are not described here are
// those of igh_master.h with the same name.
class Master {
public:
  // Empty for a period out of range, and for an id that is open already.
  [[nodiscard]] static std::optional<Master> open(std::uint16_t id, std::chrono::nanoseconds period,
                                                  const Options& options = {}) {
    std::uint32_t before = 0;
    const auto ns = period.count();
    const bool fits = ns >= 0 && ns <= std::numeric_limits<std::uint32_t>::max();
    if (igh_master_get_period(id, &before) ||
        !igh_master_initialize_ex(id, fits ? static_cast<std::uint32_t>(ns) : 0, options.distributedClocks,
                                  options.syncToReferenceClock)) {
      return std::nullopt;
    }
    igh_master_set_exchange_mode(id, options.exchangeMode);
    return Master(id);
  }
  Master(Master&&) noexcept = default;
  Master& operator=(Master&& other) noexcept {
    close();
    m_life = std::move(other.m_life);
    return *this;
  }
  Master(const Master&) = delete;
  Master& operator=(const Master&) = delete;
  ~Master() { close(); }

  [[nodiscard]] std::uint16_t id() const noexcept { return m_life->id; }

  // ---- Set-up
  [[nodiscard]] bool load(const std::string& path) { return igh_master_append_eni(id(), path.c_str()); }
  // The number of slaves. Inputs, outputs and requests of before are void.
  [[nodiscard]] std::optional<std::uint32_t> scan() {
    ++m_life->scans;
    const auto count = number([this](std::uint32_t* value) { return igh_master_scan(id(), value); });
    m_life->bury();
    return count;
  }
  [[nodiscard]] std::optional<std::uint32_t> productCode(std::uint32_t slave) const {
    return number(
        [this, slave](std::uint32_t* code) { return igh_master_get_slave_product_code(id(), slave, code); });
  }
  [[nodiscard]] std::optional<std::uint32_t> revision(std::uint32_t slave) const {
    return number(
        [this, slave](std::uint32_t* code) { return igh_master_get_slave_revision_code(id(), slave, code); });
  }
  [[nodiscard]] bool configure() { return igh_master_config_all_slave(id()); }
  [[nodiscard]] bool configure(std::uint32_t slave) { return igh_master_config_slave(id(), slave); }
  [[nodiscard]] bool activate() { return igh_master_active(id()); }

  // Empty for a name that the slave's description does not have.
  template <class T = double>
  [[nodiscard]] std::optional<Input<T>> input(std::uint32_t slave, const std::string& name) {
    auto handle = entry<true>(slave, name);
    return handle ? std::optional(Input<T>(std::move(*handle))) : std::nullopt;
  }
  template <class T = double>
  [[nodiscard]] std::optional<Output<T>> output(std::uint32_t slave, const std::string& name) {
    auto handle = entry<false>(slave, name);
    return handle ? std::optional(Output<T>(std::move(*handle))) : std::nullopt;
  }
  // Before activate(), as the IgH master wants it. Empty when it refuses. All users of one object must name
  // types of one size. `timeout` is the longest wait in the slave's queue, 0 for no limit.
  template <class T>
  [[nodiscard]] std::optional<SdoRequest<T>>
  sdoRequest(std::uint32_t slave, std::uint16_t index, std::uint8_t subindex,
             std::chrono::milliseconds timeout = std::chrono::milliseconds(0)) {
    auto reader = request<true>(slave, index, subindex, sizeof(T), timeout);
    auto writer = request<false>(slave, index, subindex, sizeof(T), timeout);
    return reader && writer ? std::optional(SdoRequest<T>(std::move(*reader), std::move(*writer)))
                            : std::nullopt;
  }

  // `handler(ErrorSlave slave, ETHERCAT_ERROR_CODE code)` is called from inside exchanges and must live as
  // long as they do.
  template <class HANDLER> void onError(HANDLER& handler) {
    igh_master_set_error_callback(
        id(),
        [](unsigned int, unsigned int slave, int code, void* data) noexcept {
          (*static_cast<HANDLER*>(data))(slave == ETHERCAT_ERROR_WHOLE_MASTER ? ErrorSlave() : slave,
                                         static_cast<ETHERCAT_ERROR_CODE>(code));
        },
        address(handler));
  }
  template <class HANDLER> void onError(const HANDLER&& handler) = delete; // it would be gone
  void setDcDebug(bool enable) { igh_master_set_dc_debug_enable(id(), enable); }
  void printTiming(const char* label, COMM_DIAG_INDEX index) const {
    _ETHERCAT_COMM_DIAG_INFO info = timing(index);
    igh_master_output_comm_diag_info(id(), label, &info);
  }

  // ---- Cycle
  void exchange() noexcept { igh_master_exchange(id(), nullptr, nullptr); }
  // With `callback()` between inputs and outputs; an exception that leaves it ends the program.
  template <class CALLBACK> void exchange(CALLBACK&& callback) noexcept {
    using Function = std::remove_reference_t<CALLBACK>;
    static_assert(std::is_object_v<Function>, "a function has to be called by a lambda");
    igh_master_exchange(
        id(), [](void* data) noexcept { (*static_cast<Function*>(data))(); }, address(callback));
  }
  [[nodiscard]] std::uint32_t state() const noexcept { // of AlState, ORed
    std::uint32_t state = 0;
    igh_master_get_state(id(), &state);
    return state;
  }
  [[nodiscard]] ETHERCAT_ERROR_CODE lastError() const noexcept {
    std::int32_t code = 0;
    igh_master_get_last_error(id(), &code);
    return static_cast<ETHERCAT_ERROR_CODE>(code);
  }
  void clearError() noexcept { igh_master_clear_error(id()); }
  [[nodiscard]] std::chrono::nanoseconds period() const noexcept {
    std::uint32_t period = 0;
    igh_master_get_period(id(), &period);
    return std::chrono::nanoseconds(period);
  }
  [[nodiscard]] std::chrono::nanoseconds systemBaseOffset() const noexcept {
    std::uint64_t offset = 0;
    igh_master_get_system_base_offset(id(), &offset);
    return std::chrono::nanoseconds(static_cast<std::int64_t>(offset));
  }
  [[nodiscard]] _ETHERCAT_COMM_DIAG_INFO timing(COMM_DIAG_INDEX index) const noexcept {
    _ETHERCAT_COMM_DIAG_INFO info{};
    igh_master_get_comm_diag_info(id(), index, &info);
    return info;
  }
  // From any thread, and from a signal handler.
  void requestTerminate() const noexcept { igh_master_request_terminate(id()); }
  [[nodiscard]] bool isRequestTerminate() const noexcept { return igh_master_is_request_terminate(id()); }

  // ---- ESC registers: these block until others have cycled
  // A failed access tells on standard error alone, and reads as zeros.
  template <class T> [[nodiscard]] T readRegister(std::uint16_t slave, std::uint16_t address) const {
    static_assert(std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>);
    std::array<std::uint8_t, sizeof(T)> bytes{};
    T value{};
    igh_master_read_esc_reg(id(), slave, address, bytes.data(), sizeof(T));
    std::memcpy(&value, bytes.data(), sizeof(T));
    return value;
  }
  [[nodiscard]] bool clearErrorCounters(std::uint16_t slave) const {
    return igh_master_clear_esc_error_regs(id(), slave);
  }
  [[nodiscard]] bool requestState(std::uint16_t slave, AlState state) const {
    return igh_master_request_esc_state(id(), slave, static_cast<std::uint8_t>(state));
  }

private:
  explicit Master(std::uint16_t id) : m_life(std::make_shared<detail::Life>()) { m_life->id = id; }

  void close() noexcept {
    if (m_life) {
      m_life->open = false;
      igh_master_uninitialize(m_life->id);
      m_life->bury();
      m_life.reset();
    }
  }
  template <class GETTER> static std::optional<std::uint32_t> number(GETTER getter) {
    std::uint32_t value = 0;
    return getter(&value) ? std::optional(value) : std::nullopt;
  }
  template <class OBJECT> static void* address(OBJECT& object) noexcept {
    return const_cast<void*>(static_cast<const volatile void*>(std::addressof(object)));
  }
  template <bool READ>
  std::optional<detail::EntryHandle<READ>> entry(std::uint32_t slave, const std::string& name) const {
    return owned<detail::EntryHandle<READ>>([&](std::uint32_t* handle) {
      return igh_master_create_pdo_info(id(), slave, name.c_str(), READ, handle);
    });
  }
  template <bool READ>
  std::optional<detail::RequestHandle<READ>> request(std::uint32_t slave, std::uint16_t index,
                                                     std::uint8_t subindex, std::uint32_t size,
                                                     std::chrono::milliseconds timeout) const {
    return owned<detail::RequestHandle<READ>>([&](std::uint32_t* handle) {
      return igh_master_create_raw_sdo_request(id(), slave, index, subindex, size,
                                               static_cast<std::int32_t>(timeout.count()), READ, handle);
    });
  }
  template <class HANDLE, class CREATOR> std::optional<HANDLE> owned(CREATOR create) const {
    const auto handle = number(create);
    return handle ? std::optional<HANDLE>(std::in_place, m_life, *handle) : std::nullopt;
  }

  std::shared_ptr<detail::Life> m_life;
};

} // namespace igh_master

#endif
