/* Control side of the simulated EtherCAT master in C: what a test bench says to the bus.
 *
 * The application under test calls igh_master.h or ecrt.h as ever; the test builds the bus, sets faults, and
 * looks at what the slaves received and sent. The same in C++ is ethercat_simulation/Simulation.h, in Python
 * igh_master.simulation. Link with ethercat_simulation; both sides must be in one process.
 *
 * Arguments. `master` is the index of the master, 0 to 65535; its bus is made, empty, when it is first named
 * here, and the bus file of the environment is not read for it any more. `position` is that of a slave on the
 * line, from 0; also slaves that no frame reaches have one. `index` and `subindex` name an object or a mapped
 * entry. Values and bytes are little endian, as on the wire. Texts in JSON have the keys of a bus file
 * (docs/simulated-master.md). Switches (on, up, broken ...) are 0 or not 0.
 *
 * Results. -1: not done, and ethercat_simulation_last_error() tells why; otherwise at least 0, and 0 where
 * nothing else is said. Functions that give bytes or text put as much of it as fits into `size` bytes, text
 * always with its end, and give the whole length, of text without the end; with size 0 the pointer may be
 * null.
 *
 * Threads. Any, also beside the cycle: one lock serves every call of either side. Times pass and states move
 * only while the application cycles. */
#ifndef ETHERCAT_SIMULATION_H
#define ETHERCAT_SIMULATION_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define ETHERCAT_SIMULATION_API __attribute__((visibility("default")))
#else
#define ETHERCAT_SIMULATION_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* JSON without backslashes: ETHERCAT_SIMULATION_JSON({"kind": "lost_frame", "at": 200}) */
#define ETHERCAT_SIMULATION_JSON(...) #__VA_ARGS__

/* Why the last call of this thread gave -1; empty when it did not. Valid until the next call of the thread.
 */
ETHERCAT_SIMULATION_API const char* ethercat_simulation_last_error(void);

/* ---- Building. None of these three from inside an observer. */

/* Ends every master: buses, observers, records and counts are gone, handles of the application are dead, and
 * the environment is read again. The beginning of every test. */
ETHERCAT_SIMULATION_API int ethercat_simulation_reset(void);

/* Builds the buses of a bus file. Fails when a master in it has slaves already or is held by the application.
 */
ETHERCAT_SIMULATION_API int ethercat_simulation_load(const char* path);

/* The same from the text of a bus file. */
ETHERCAT_SIMULATION_API int ethercat_simulation_build(const char* json);

/* Sets and adds what a text says, which has any of a master's keys in a bus file: times are set, "slaves" are
 * appended to the line, "faults" to the schedule, "record" begins. Nothing is done when anything in it is
 * wrong. */
ETHERCAT_SIMULATION_API int ethercat_simulation_configure(unsigned int master, const char* json);

/* Plugs in one slave, described as in "slaves"; those from `position` on move down the line. At most behind
 * the last. */
ETHERCAT_SIMULATION_API int ethercat_simulation_insert_slave(unsigned int master, unsigned int position,
                                                             const char* json);

/* Unplugs a slave; later ones move up. */
ETHERCAT_SIMULATION_API int ethercat_simulation_remove_slave(unsigned int master, unsigned int position);

/* ---- Times that no bus file has. */

/* Lets `nanoseconds` pass on a bus with virtual time ("cycle_us"). */
ETHERCAT_SIMULATION_API int ethercat_simulation_pass_time(unsigned int master, uint64_t nanoseconds);

/* A receive later than this after the send gives up a frame that is not back yet; 4 000 000 at first. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_frame_timeout(unsigned int master, uint64_t nanoseconds);

/* Receives after activation until the reference time is known; 0 at first. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_clock_offset_cycles(unsigned int master,
                                                                        unsigned int cycles);

/* ---- Faults. Each lasts until the same function takes it back. For those of a schedule: "faults" in
 * configure(). */

/* Ends what lasts of the schedule, and empties it. */
ETHERCAT_SIMULATION_API int ethercat_simulation_clear_faults(unsigned int master);

/* The next `count` frames never come back; slaves see nothing of them. 0: no more. */
ETHERCAT_SIMULATION_API int ethercat_simulation_drop_frames(unsigned int master, unsigned int count);

/* The next `count` frames reach the slaves, and come back too late. 0: no more. */
ETHERCAT_SIMULATION_API int ethercat_simulation_delay_frames(unsigned int master, unsigned int count);

/* The link at the master. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_link(unsigned int master, int up);

/* The wire behind a slave. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_wire_broken(unsigned int master, unsigned int position,
                                                                int broken);

/* Off: the slave and all behind it are gone. On: to be configured anew. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_powered(unsigned int master, unsigned int position,
                                                            int on);

/* The slave falls to `al_state` (1 INIT, 2 PREOP, 4 SAFEOP) with this AL status code, and stays there until
 * code 0, with which the master brings it back. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_al_error(unsigned int master, unsigned int position,
                                                             uint8_t al_state, uint16_t code);

/* The error flag that the master keeps of a slave. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_error_flag(unsigned int master, unsigned int position,
                                                               int set);

/* Not responding: silent, its share of the working counter is missing; still listed. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_responding(unsigned int master, unsigned int position,
                                                               int responding);

/* The slave climbs no further than this AL state, and falls back to it; 8: no limit. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_maximum_state(unsigned int master, unsigned int position,
                                                                  uint8_t al_state);

/* What becomes of the transfers of one object: "none" (they work), "abort", "time_out", "short_answer",
 * "long_answer", "busy_for_ever". Fails when the slave has no such object. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_sdo_fault(unsigned int master, unsigned int position,
                                                              uint16_t index, uint8_t subindex,
                                                              const char* fault);

/* Of a drive, by the names of the schedule: "drive_fault" (with this error code, as 0x603F shows it, not 0),
 * "blocked_axis", "positive_limit", "negative_limit", "quick_stop", "safe_torque_off". Fails when the slave
 * is none. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_drive_trouble(unsigned int master, unsigned int position,
                                                                  const char* trouble, int on,
                                                                  uint16_t error_code);

/* Adds to an error counter, registers 0x0300 to 0x0313, up to 255. */
ETHERCAT_SIMULATION_API int ethercat_simulation_add_error_count(unsigned int master, unsigned int position,
                                                                uint16_t address, unsigned int count);

/* Moves the reference time once. */
ETHERCAT_SIMULATION_API int ethercat_simulation_step_clock(unsigned int master, int64_t nanoseconds);

/* Activations leave the process image unmapped. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_image_never_mapped(unsigned int master, int never);

/* The next call of this name ("ecrt_master_activate", or "open", "close", "ioctl" of the device file) fails
 * once, behind `after` more that pass: pointers are null, numbers are `result`; device calls give -1 and the
 * error number -result. */
ETHERCAT_SIMULATION_API int ethercat_simulation_fail_next(unsigned int master, const char* call, int result,
                                                          unsigned int after);

/* ---- Slaves. */

/* How many are on the line. */
ETHERCAT_SIMULATION_API int ethercat_simulation_slave_count(unsigned int master);

/* 1 INIT, 2 PREOP, 3 BOOT, 4 SAFEOP, 8 OP. */
ETHERCAT_SIMULATION_API int ethercat_simulation_al_state(unsigned int master, unsigned int position);

/* The output bytes that the slave received last, all output sync managers in order. */
ETHERCAT_SIMULATION_API int ethercat_simulation_outputs(unsigned int master, unsigned int position,
                                                        uint8_t* bytes, size_t size);

/* The lower 64 bits of one mapped output entry, as the slave received it last. Fails when none is mapped. */
ETHERCAT_SIMULATION_API int ethercat_simulation_output_value(unsigned int master, unsigned int position,
                                                             uint16_t index, uint8_t subindex,
                                                             uint64_t* value);

/* The input bytes that the slave put into its last frame, all input sync managers in order. */
ETHERCAT_SIMULATION_API int ethercat_simulation_inputs(unsigned int master, unsigned int position,
                                                       uint8_t* bytes, size_t size);

/* Pins the slave's input bytes in place of what its model makes; size 0: the model again, entries too. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_inputs(unsigned int master, unsigned int position,
                                                           const uint8_t* bytes, size_t size);

/* Pins one entry, wherever it is mapped as an input; until the next set_inputs. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_input_value(unsigned int master, unsigned int position,
                                                                uint16_t index, uint8_t subindex,
                                                                uint64_t value);

/* The value of an object; of a drive also of what it maps. */
ETHERCAT_SIMULATION_API int ethercat_simulation_object(unsigned int master, unsigned int position,
                                                       uint16_t index, uint8_t subindex, uint8_t* bytes,
                                                       size_t size);

/* Sets the value of an object that is there, read-only ones too; its length may change, but not in a drive.
 */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_object(unsigned int master, unsigned int position,
                                                           uint16_t index, uint8_t subindex,
                                                           const uint8_t* bytes, size_t size);

/* `size` bytes of the registers from `address` on. */
ETHERCAT_SIMULATION_API int ethercat_simulation_registers(unsigned int master, unsigned int position,
                                                          uint16_t address, uint8_t* bytes, size_t size);

/* Sets registers; those that show the state of the slave go on doing so. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_registers(unsigned int master, unsigned int position,
                                                              uint16_t address, const uint8_t* bytes,
                                                              size_t size);

/* ---- Master. */

/* Whether the application holds it, 0 or 1; whether it is activated. */
ETHERCAT_SIMULATION_API int ethercat_simulation_is_reserved(unsigned int master);
ETHERCAT_SIMULATION_API int ethercat_simulation_is_active(unsigned int master);

/* Device files of it that are open. */
ETHERCAT_SIMULATION_API int ethercat_simulation_open_device_files(unsigned int master);

/* Frames sent since it was made. */
ETHERCAT_SIMULATION_API int64_t ethercat_simulation_frames_sent(unsigned int master);

/* Calls of this name, see fail_next. */
ETHERCAT_SIMULATION_API int64_t ethercat_simulation_call_count(unsigned int master, const char* call);

/* What the reference clock shows, ns since 2000-01-01. */
ETHERCAT_SIMULATION_API int ethercat_simulation_reference_time(unsigned int master, uint64_t* time);

/* Calls with dead or foreign handles and calls out of order: 0 at the end of every test. */
ETHERCAT_SIMULATION_API int64_t ethercat_simulation_misuse(unsigned int master);

/* The first 100 of them, one sentence a line. */
ETHERCAT_SIMULATION_API int ethercat_simulation_misuse_text(unsigned int master, char* text, size_t size);

/* Remembers every call with its arguments; allocates in the cycle, and is off at first. Off: forgets them. */
ETHERCAT_SIMULATION_API int ethercat_simulation_set_tracing(unsigned int master, int on);

/* What was remembered, one call a line. */
ETHERCAT_SIMULATION_API int ethercat_simulation_trace_text(unsigned int master, char* text, size_t size);

/* ---- Each cycle. */

/* Writes each cycle to a CSV file from the next one on (docs/simulated-master.md); null: no more. A path that
 * cannot be written is told on standard error by the first cycle. */
ETHERCAT_SIMULATION_API int ethercat_simulation_record(unsigned int master, const char* path);

/* `cycle` counts sends since activation from 1, as the fault schedule does. */
typedef void (*ethercat_simulation_observer)(unsigned int master, uint64_t cycle, void* context);

/* Calls `observer` at the end of each ecrt_master_send on the active master, in the thread of that call: the
 * frame has gone round or is lost, slaves have taken its outputs and given it their inputs, drives have
 * moved. What the observer changes concerns the next frame. It may use what is here, but for reset, load and
 * build, and must call neither ecrt.h nor what does. Gives its number, at least 1. Lasts until it is removed,
 * or reset. */
ETHERCAT_SIMULATION_API int
ethercat_simulation_add_observer(unsigned int master, ethercat_simulation_observer observer, void* context);

/* From inside an observer as well, also itself. Fails when there is none with this number. */
ETHERCAT_SIMULATION_API int ethercat_simulation_remove_observer(unsigned int master, int number);

#ifdef __cplusplus
}
#endif

#endif
