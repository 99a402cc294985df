/* igh_master.h - EtherCAT buses for real-time applications on the IgH EtherCAT Master.
 *
 * Order of use:
 *
 *   igh_master_initialize        one master per id; the id is the index of the IgH master
 *   igh_master_append_eni        once per device-description file
 *   igh_master_scan              finds the slaves, matches them to descriptions
 *   igh_master_config_all_slave  hands the process-data layout to the master
 *   igh_master_create_pdo_info   one handle per entry and direction
 *   igh_master_active            the bus starts climbing to OP as soon as it is cycled
 *   igh_master_exchange          once per period
 *   igh_master_uninitialize      deactivates and frees everything
 *
 * Threads: nothing is locked and no thread is created. "Set-up" functions belong to one ordinary thread and
 * must not run while igh_master_exchange runs on the same master; they may allocate, block and print. "Cycle"
 * functions may be called from the real-time task between or, from the callback, inside exchanges: they
 * neither allocate nor block. igh_master_initialize and igh_master_uninitialize must not overlap any call for
 * any master. Beside the exchanges of a master other threads may only ask for its termination, which a signal
 * handler may do too, use its ESC registers, and arm SDO transfers, one thread at a time. Such a thread waits
 * for `done` with an acquiring load (__atomic_load_n(&done, __ATOMIC_ACQUIRE)). Each master may have a thread
 * of its own.
 *
 * Memory: where an allocation fails, a set-up function lets std::bad_alloc through to the caller (a C program
 * ends with it). igh_master_append_eni gives 0 instead when it fails while the file is read. The call has
 * then changed nothing, and may be made again.
 *
 * Results: truth values are one byte, 0 or 1. Every function but the two initialisers and
 * igh_master_uninitialize gives 0 (a void function does nothing) when no master has this id; this is not
 * repeated below. Pointers are owned by the caller; what they point to is copied unless stated otherwise.
 *
 * Slaves are addressed by their 0-based index in scan order. Process-data values cross as double; the entry's
 * type in the description decides the conversion, and out-of-range values wrap to the type's width.
 */
#ifndef IGH_MASTER_H
#define IGH_MASTER_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define IGH_MASTER_API __attribute__((visibility("default")))
#else
#define IGH_MASTER_API
#endif

/* Value types of process-data entries and SDO objects. Types 0, 7 and 8 have a size but no conversion. */
typedef enum {
  DATA_TYPE_INVALID = -1, /* a type name that is not supported, 0 bytes */
  DATA_TYPE_RAW = 0,      /* bytes */
  DATA_TYPE_SINT = 1,     /* signed 8 bits */
  DATA_TYPE_USINT = 2,    /* unsigned 8 bits */
  DATA_TYPE_INT = 3,      /* signed 16 bits */
  DATA_TYPE_UINT = 4,     /* unsigned 16 bits */
  DATA_TYPE_DINT = 5,     /* signed 32 bits */
  DATA_TYPE_UDINT = 6,    /* unsigned 32 bits */
  DATA_TYPE_LINT = 7,     /* signed 64 bits, not converted */
  DATA_TYPE_ULINT = 8,    /* unsigned 64 bits, not converted */
  DATA_TYPE_REAL = 9,     /* IEEE 754 single */
  DATA_TYPE_LREAL = 10    /* IEEE 754 double */
} ETHERCAT_DATA_TYPE;

/* Last error and errorCode of the error callback. None of them stops the cycle. */
typedef enum {
  ETHERCAT_ERROR_NONE = 0,
  ETHERCAT_ERROR_WORKING_COUNTER = 1, /* a frame came back incomplete or not at all, in SAFEOP or OP */
  ETHERCAT_ERROR_LINK_DOWN = 2,       /* no link on the master's first device */
  ETHERCAT_ERROR_SLAVE_STATE = 3,     /* a slave refused a state change or stopped answering */
  ETHERCAT_ERROR_SLAVE_ADDED = 4,     /* a rescan of the bus found more slaves than igh_master_scan */
  ETHERCAT_ERROR_SLAVE_LOST = 5       /* a rescan of the bus found fewer slaves than igh_master_scan */
} ETHERCAT_ERROR_CODE;

/* The slave argument of an error that concerns the master as a whole. */
#define ETHERCAT_ERROR_WHOLE_MASTER 0xFFFFFFFFu

/* Timing of one exchange. Costs are in microseconds, from CLOCK_MONOTONIC; a phase that did not run is 0. */
typedef struct _ETHERCAT_COMM_DIAG_INFO {
  uint64_t time;               /* cycle number, 0 for the first cycle after activation */
  int32_t txPdoReceivedCostUs; /* receive and process; in exchange mode the whole wait for the frame */
  int32_t sdoCostUs;           /* SDO service */
  int32_t rxPdoSentCostUs;     /* queue, clock synchronisation, send */
  int32_t userCallbackCostUs;  /* the application's callback */
  int32_t totalExchangeCostUs; /* entry to end of igh_master_exchange */
} _ETHERCAT_COMM_DIAG_INFO;

typedef enum {
  COMM_DIAG_MIN = 0,  /* the cycle with the smallest total since activation */
  COMM_DIAG_LAST = 1, /* the most recent cycle */
  COMM_DIAG_MAX = 2   /* the cycle with the largest total since activation */
} COMM_DIAG_INDEX;

/* Called from inside igh_master_exchange, in its thread, once per problem found. deviceId is the master id;
 * slave a slave index or ETHERCAT_ERROR_WHOLE_MASTER; errorCode one of ETHERCAT_ERROR_CODE. It must obey the
 * rules of the cycle: no blocking, no allocation, no set-up function. */
typedef void (*igh_master_error_callback)(unsigned int deviceId, unsigned int slave, int errorCode,
                                          void* userData);

/* Called once inside each exchange in SAFEOP or OP, between the copy of the inputs and that of the outputs.
 */
typedef void (*igh_master_exchange_callback)(void* userData);

/* ---- Life cycle -------------------------------------------------------------------------------- */

/* Creates the master `id`. Set-up.
 *   exchangePeriod        time between two exchanges in ns, 100000 to 4000000000
 *   enableDc              use distributed clocks where a description has an operation mode named "DC" with an
 *                         assign-activate word other than 0. A slave gets the five values of the mode, but a
 *                         SYNC0 cycle of 0 becomes exchangePeriod, and then a SYNC0 shift of 0 becomes half
 *                         of the SYNC0 cycle
 *   syncToReferenceClock  true: the master's time follows the reference clock; false: the reference clock is
 *                         steered to the master's time
 * Following goes at one nanosecond per exchange in SAFEOP or OP, and at a rate that is learnt from the drift,
 * at most 1000 ns per exchange. A master that is ahead of the reference comes to rest at the nearest whole
 * period. A master that is behind does not: negative differences do not wrap to the nearest period, the whole
 * difference is walked off at one nanosecond per exchange (10 ms in ten million exchanges, with every phase
 * of the period crossed ten times on the way). A reading of the reference clock that fails counts as time 0:
 * 10 s of them at 1 ms move the master's time by up to 10 ms.
 * Result 1 when the period is in range, also when the id exists already (it keeps its period and flags) and
 * also when no IgH master of this index could be reserved: then igh_master_scan and igh_master_active fail.
 * 0, with a line on standard output, for a period out of range. */
IGH_MASTER_API bool igh_master_initialize_ex(uint16_t id, uint32_t exchangePeriod, bool enableDc,
                                             bool syncToReferenceClock);

/* igh_master_initialize_ex with distributed clocks enabled. Set-up. */
IGH_MASTER_API bool igh_master_initialize(uint16_t id, uint32_t exchangePeriod, bool syncToReferenceClock);

/* Deactivates and destroys the master; every handle of it is void. While an SDO transfer is under way, the
 * bus is first cycled on inside this call, once per period and for at most 6 s, with the outputs as they
 * stand: the kernel does not survive a deactivation in the middle of one. A line on standard error when that
 * was not enough. Set-up, with no exchange running. Always 1, also for an unknown id. */
IGH_MASTER_API bool igh_master_uninitialize(uint16_t id);

/* false (default): an exchange first takes the frame sent by the previous one; inputs are one period old and
 * outputs of the callback leave at once. true: an exchange sends first and polls for the frame inside the
 * call; inputs are fresh, outputs of the callback leave with the next exchange. Set-up. Result 0, nothing
 * changed, while the master is active. */
IGH_MASTER_API bool igh_master_set_exchange_mode(uint16_t id, bool exchangeMode);

/* Sets the error callback; null switches it off. userData is handed back as it is. Set-up. Result 1. */
IGH_MASTER_API bool igh_master_set_error_callback(uint16_t id, igh_master_error_callback callback,
                                                  void* userData);

/* Writes the exchange period in ns. Cycle. Result 0 for a null pointer. */
IGH_MASTER_API bool igh_master_get_period(uint16_t id, uint32_t* period);

/* Writes by how many ns the master's time has been moved to follow the reference clock (a signed value in an
 * unsigned variable). Cycle. Result 0 for a null pointer. */
IGH_MASTER_API bool igh_master_get_system_base_offset(uint16_t id, uint64_t* offset);

/* Loads one description file (XML, root EtherCATInfo) into the master's store; what is already there stays.
 * Set-up, before igh_master_scan. The first description of a vendor, product and revision wins. A revision
 * that any HideType of the file names for its product gets none, and no line says so. Of a device whose slots
 * expand too far the rest is left out, with a line on standard output. `path` is that of a plain file, also
 * when it looks like an address. Result 0, with a line on standard output and nothing changed, when the file
 * cannot be read, is no EtherCATInfo document or names no vendor; 0 for a null path. */
IGH_MASTER_API bool igh_master_append_eni(uint16_t id, const char* path);

/* Writes the AL states of all slaves as seen by the last exchange, ORed: 1 INIT, 2 PREOP, 4 SAFEOP, 8 OP; 0
 * before a scan, and on a bus that nobody answers on: no error tells of that, the silence with state 0 does.
 * The states are up to 0.4 s old. After an activation on slaves that were in OP a moment before (a
 * re-activation, a program started again) the first 0.15 s still say OP; then the bus climbs. After a slave
 * has been plugged in, the bus is not in OP again before scan, configuration and activation. `state` must not
 * be null: it is not checked. Cycle. Result 1. */
IGH_MASTER_API bool igh_master_get_state(uint16_t id, uint32_t* state);

/* Makes every further exchange print one line and do nothing, until the next activation. Cycle, and at any
 * time from another thread or from a signal handler, unless igh_master_initialize or igh_master_uninitialize
 * is running: block the signal around them. Result 1. */
IGH_MASTER_API bool igh_master_request_terminate(uint16_t id);

/* 1 once igh_master_request_terminate was called since the last activation. Callers as for that. */
IGH_MASTER_API bool igh_master_is_request_terminate(uint16_t id);

/* Sets the last error to 0. Cycle. Result 1. */
IGH_MASTER_API bool igh_master_clear_error(uint16_t id);

/* Writes the code of the last error (ETHERCAT_ERROR_CODE), 0 for none. `error` must not be null: it is not
 * checked. Cycle. Result 1. */
IGH_MASTER_API bool igh_master_get_last_error(uint16_t id, int32_t* error);

/* Ethernet over EtherCAT is not supported: does nothing. Result 0. */
IGH_MASTER_API bool igh_master_enable_eoe_function(uint16_t id, uint32_t slave, bool enable);

/* ---- Bus --------------------------------------------------------------------------------------- */

/* Reads the slaves on the bus (at most 255), matches each to a loaded description by vendor, product code and
 * exact revision, and prints the resulting configuration as source-like tables to standard output. A slave
 * without description is kept and takes no process data. All handles and configurations of an earlier scan
 * are void. `count` may be null; it receives the number of slaves. Set-up. Result 0 when there is no slave or
 * no IgH master. Scan an active master only after ETHERCAT_ERROR_SLAVE_ADDED or ETHERCAT_ERROR_SLAVE_LOST and
 * with the link up: when the result is 0, no exchange sends anything any more; uninitialize and start over.
 */
IGH_MASTER_API bool igh_master_scan(uint16_t id, uint32_t* count);

/* Write the product code and the revision of a slave. Set-up. Result 0 for an index out of range; a null
 * pointer is skipped. */
IGH_MASTER_API bool igh_master_get_slave_product_code(uint16_t id, uint32_t slave, uint32_t* productCode);
IGH_MASTER_API bool igh_master_get_slave_revision_code(uint16_t id, uint32_t slave, uint32_t* revisionCode);

/* Configures one slave, or all of them in scan order: hands their sync managers and PDOs to the master. A
 * refused layout prints one line on standard error and is no failure of the call. Set-up, before
 * igh_master_active. igh_master_config_slave gives 0 for an index out of range, else both give 1. */
IGH_MASTER_API bool igh_master_config_slave(uint16_t id, uint32_t slave);
IGH_MASTER_API bool igh_master_config_all_slave(uint16_t id);

/* Write what the slave's description says of its module slots: how many there are, and by how much the object
 * index and the PDO index grow from slot to slot. Set-up. Result 0 for an index out of range or a slave
 * without description; a null pointer is skipped. */
IGH_MASTER_API bool igh_master_get_slot_number(uint16_t id, uint32_t slave, uint32_t* slotNumber);
IGH_MASTER_API bool igh_master_get_slot_index_increment(uint16_t id, uint32_t slave, uint32_t* increment);
IGH_MASTER_API bool igh_master_get_slot_pdo_increment(uint16_t id, uint32_t slave, uint32_t* increment);

/* Registers the process data, sets up distributed clocks and activates the master. Every slave must have been
 * configured. On an active master it starts afresh, once SDO transfers are over as for
 * igh_master_uninitialize. Set-up. Result 1 when the master is active; otherwise 0,
 * with a line on standard output or error when a slave was not configured, the registration failed or the
 * process image could not be mapped, and without a word when there is no IgH master, when there was no scan
 * or the last one gave 0; a refusal by the IgH master is told by its own library. A failed activation
 * leaves its process data registered with the IgH master; after some, the slaves have no room left and every
 * further one fails: uninitialize between tries. */
IGH_MASTER_API bool igh_master_active(uint16_t id);

/* One communication cycle: receive, checks with error callbacks, inputs, callback, outputs, send. To be
 * called once per period from the real-time task; `callback` may be null. Inputs, outputs and callback need
 * all slaves that the IgH master sees to be in SAFEOP, or all of them in OP: one slave in another state
 * suspends all three and the working-counter check, while the bus goes on being cycled. A bus without process
 * data reports error 1 in every cycle in OP, and in exchange mode never calls back. Creating or destroying
 * handles while active makes the next exchange rearrange its copies once, without allocation. Result 1,
 * whatever happened on the bus. */
IGH_MASTER_API bool igh_master_exchange(uint16_t id, igh_master_exchange_callback callback, void* userData);

/* ---- Process data ------------------------------------------------------------------------------ */

/* Makes a handle for the entry `name` of a slave, as its description spells it. Names must be unique in a
 * slave to be reached: of a repeated name the last entry is meant. read true: an input, refreshed by each
 * exchange; false: an output, sent by each exchange, 0 until written. The same entry gives the same handle
 * again, with one more user of that direction. An entry whose type has no conversion (BOOL, for instance)
 * gets a handle that moves no data. Set-up. Result 0, and 0xFFFFFFFF in `handle`, for an unknown name; 0 for
 * null pointers or a slave out of range. */
IGH_MASTER_API bool igh_master_create_pdo_info(uint16_t id, uint32_t slave, const char* name, bool read,
                                               uint32_t* handle);

/* Takes one user of the given direction away; the handle dies with its last user. Set-up. */
IGH_MASTER_API void igh_master_destroy_pdo_info(uint16_t id, uint32_t handle, bool read);

/* Writes the value that the last exchange received. Cycle. Result 0 for a handle that is unknown or not
 * readable, or a null pointer; 1 otherwise, with `value` untouched if the type has no conversion. */
IGH_MASTER_API bool igh_master_pdo_recv(uint16_t id, uint32_t handle, double* value);

/* Sets the value that the next exchange sends, rounded half away from zero for integers. Cycle. Result 0 for
 * a handle that is unknown or not writable. */
IGH_MASTER_API bool igh_master_pdo_send(uint16_t id, uint32_t handle, double value);

/* ---- SDO requests ------------------------------------------------------------------------------ */

/* SDO transfers run beside the process data, one step of one request per exchange, from PREOP on. A request
 * is created once, then armed for each transfer; `done` turns true in the exchange that ends it. A transfer
 * that fails is retried in every cycle, without limit, while the other requests wait: keep a deadline of your
 * own, and destroy the request's users of that direction to withdraw it. Requests are lost with the next
 * scan; activating again renews them. */

/* Create a request, or share the one that exists for the same slave, index, sub-index and access; type, size
 * and time-out are those of the first creation. Set-up.
 *
 *   slave      0 to 254
 *   size       bytes (raw forms), at least 1
 *   count      elements of `type` (typed forms)
 *   timeoutMs  longest wait in the slave's queue, 0 for no limit; a running transfer has the master's own
 *              limit of 1 s
 *   read       true: a user that reads; false: a user that writes
 *   handle     receives the handle; 0xFFFFFFFF when the master refuses the request
 *
 * The _complete form transfers a whole object by complete access, sub-index 0 first. Result 0 for a null
 * pointer, a slave out of range, a size of 0, an unknown type or a count whose bytes exceed 32 bits (with
 * "Unexpected Sdo size." on standard error), or a refused request, for instance of a slave that was not
 * configured (with a line there). */
IGH_MASTER_API bool igh_master_create_raw_sdo_request(uint16_t id, uint32_t slave, uint16_t index,
                                                      uint8_t subindex, uint32_t size, int32_t timeoutMs,
                                                      bool read, uint32_t* handle);
IGH_MASTER_API bool igh_master_create_raw_sdo_request_complete(uint16_t id, uint32_t slave, uint16_t index,
                                                               uint32_t size, int32_t timeoutMs, bool read,
                                                               uint32_t* handle);
IGH_MASTER_API bool igh_master_create_sdo_request_ex(uint16_t id, uint32_t slave, uint16_t index,
                                                     uint8_t subindex, ETHERCAT_DATA_TYPE type,
                                                     uint32_t count, int32_t timeoutMs, bool read,
                                                     uint32_t* handle);
/* igh_master_create_sdo_request_ex with a count of 1. */
IGH_MASTER_API bool igh_master_create_sdo_request(uint16_t id, uint32_t slave, uint16_t index,
                                                  uint8_t subindex, ETHERCAT_DATA_TYPE type,
                                                  int32_t timeoutMs, bool read, uint32_t* handle);

/* Takes one user of the given direction away. With its last user a direction's armed transfer is withdrawn;
 * the handle dies with the last user of both. A transfer that is under way goes on at the slave all the same.
 * Set-up. */
IGH_MASTER_API void igh_master_destroy_sdo_request(uint16_t id, uint32_t handle, bool read);

/* Arm a read. `data` or `values` receives the result, and must stay valid, like `done`, until *done is true
 * or the direction's last user is destroyed. `done` may be null; it is cleared first. The size (count) must
 * be the request's. The raw form delivers bytes and needs a raw request: of a typed one it delivers nothing,
 * although *done turns true. The _ex form delivers doubles; elements of a type without conversion read as 0.
 * Of an answer that is shorter than the request, the missing bytes are delivered as 0 (an element that is
 * answered in part is converted from its low bytes).
 * Cycle. Result 0 for an unknown handle, a null buffer, a transfer that is pending already, or, with a line
 * on standard output, a handle without readers or a size that does not match. */
IGH_MASTER_API bool igh_master_raw_sdo_recv(uint16_t id, uint32_t handle, void* data, uint32_t size,
                                            bool* done);
IGH_MASTER_API bool igh_master_sdo_recv_ex(uint16_t id, uint32_t handle, double* values, uint32_t count,
                                           bool* done);
/* igh_master_sdo_recv_ex with a count of 1. */
IGH_MASTER_API bool igh_master_sdo_recv(uint16_t id, uint32_t handle, double* value, bool* done);

/* Arm a write of data that is copied at once; `done` must stay valid as above. Cycle. Results as for reads;
 * also 0 for a type without conversion (with the elements before it already taken over). After a short answer
 * to a read of the same request the master would write no more bytes than that answer had: until a read is
 * answered in full, or the master is activated again, a write counts as one whose size does not match. One
 * that was armed before such an answer waits as long, while other requests are served. */
IGH_MASTER_API bool igh_master_raw_sdo_send(uint16_t id, uint32_t handle, const void* data, uint32_t size,
                                            bool* done);
IGH_MASTER_API bool igh_master_sdo_send_ex(uint16_t id, uint32_t handle, const double* values, uint32_t count,
                                           bool* done);
/* igh_master_sdo_send_ex with a count of 1. */
IGH_MASTER_API bool igh_master_sdo_send(uint16_t id, uint32_t handle, double value, bool* done);

/* Lets this request be served next, as soon as the transfer in service is done. Cycle. Result 0 for a handle
 * beyond the table or while another request is waiting to be served next. */
IGH_MASTER_API bool igh_master_process_sdo_immediately(uint16_t id, uint32_t handle);

/* ---- ESC registers ----------------------------------------------------------------------------- */

/* These calls go to the master's device file and block until the slave's state machine has served them: while
 * the master is active that needs exchanges to go on in another thread. Never call them from the cycle; a
 * call that waits while cycling has stopped waits for ever. `slave` is the ring position. */

/* Reads `size` bytes from register `address` into `data`, which is zeroed first. Result 1, also when the
 * access failed: then a line on standard error tells. Does nothing when the device file is not open or for a
 * null buffer with a size. */
IGH_MASTER_API bool igh_master_read_esc_reg(uint16_t id, uint16_t slave, uint16_t address, uint8_t* data,
                                            uint32_t size);

/* Writes `size` ZERO bytes to register `address`, whatever `data` holds, and zeroes `data`: this function can
 * clear registers and nothing else. A line on standard output or error tells the outcome. Result 1, as above.
 */
IGH_MASTER_API bool igh_master_write_esc_reg(uint16_t id, uint16_t slave, uint16_t address, uint8_t* data,
                                             uint32_t size);

/* Clears the error counters 0x0300 to 0x0313 of one slave, or of every slave of the scan. A line for each
 * tells the outcome. The first gives 0 when the write failed, the second always 1. */
IGH_MASTER_API bool igh_master_clear_esc_error_regs(uint16_t id, uint16_t slave);
IGH_MASTER_API bool igh_master_clear_all_esc_error_regs(uint16_t id);

/* Asks for an AL state of one slave: 1 INIT, 2 PREOP, 3 BOOT, 4 SAFEOP, 8 OP; the value is not checked.
 * Returns before the slave has changed; its error flag is cleared. Result 0, with a line on standard error,
 * when refused. */
IGH_MASTER_API bool igh_master_request_esc_state(uint16_t id, uint16_t slave, uint8_t state);

/* ---- Diagnostics ------------------------------------------------------------------------------- */

/* Prints a timing record to standard output under `label` (null: "Communication detail"). Set-up; `info` null
 * prints nothing. Result 1. */
IGH_MASTER_API bool igh_master_output_comm_diag_info(uint16_t id, const char* label,
                                                     _ETHERCAT_COMM_DIAG_INFO* info);

/* Copies the timing record chosen by `index` (COMM_DIAG_INDEX) to `info`; an index above 2 or a null pointer
 * copies nothing. Cycle. Result 1. */
IGH_MASTER_API bool igh_master_get_comm_diag_info(uint16_t id, uint32_t index,
                                                  _ETHERCAT_COMM_DIAG_INFO* info);

/* Prints what the clock controller does, at its start, once per 1024 cycles and on deactivation. Set-up; the
 * printing happens in the cycle. Result 1. */
IGH_MASTER_API bool igh_master_set_dc_debug_enable(uint16_t id, bool enable);

#ifdef __cplusplus
}
#endif

/* ---- Version ----------------------------------------------------------------------------------- */

/* The version of this header. A library of the same major version and of this or a later minor one has all
 * that stands here. */
#define IGH_MASTER_VERSION_MAJOR 1
#define IGH_MASTER_VERSION_MINOR 0
#define IGH_MASTER_VERSION_PATCH 0

/* True where this header is of the given version or of a later one; also in #if. */
#define IGH_MASTER_VERSION_AT_LEAST(major, minor, patch)                                                     \
  (IGH_MASTER_VERSION_MAJOR > (major) ||                                                                     \
   (IGH_MASTER_VERSION_MAJOR == (major) &&                                                                   \
    (IGH_MASTER_VERSION_MINOR > (minor) ||                                                                   \
     (IGH_MASTER_VERSION_MINOR == (minor) && IGH_MASTER_VERSION_PATCH >= (patch)))))

#endif
