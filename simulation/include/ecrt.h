/* Application interface of the simulated EtherCAT master.
 *
 * The subset of the IgH EtherCAT Master's interface 1.5.2 (patched releases, version word 0x01050A) that a
 * bus application needs: same names, values and record layouts, so that a program built against this header
 * runs on the real library. Written for LP64 Linux; simulation/src/interface/Layout.cpp holds every size and
 * offset.
 *
 * Context of a call: "set-up" means after the request and before activation, from an ordinary thread;
 * "cycle" means after activation, once per period; "any" means while the master is held.
 */
#ifndef ECRT_H
#define ECRT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ECRT_VER_MAJOR 1
#define ECRT_VER_MINOR 5
#define ECRT_VER_PATCH 10
#define EC_HAVE_SYNC_TO
#define ECRT_VERSION(a, b, c) (((a) << 16) + ((b) << 8) + (c))
#define ECRT_VERSION_MAGIC ECRT_VERSION(ECRT_VER_MAJOR, ECRT_VER_MINOR, ECRT_VER_PATCH)

/* Ends a sync-manager list: its low 8 bits as index, or the whole word as "no count given". */
#define EC_END ~0U
#define EC_MAX_SYNC_MANAGERS 16
#define EC_MAX_STRING_LENGTH 64
#define EC_MAX_PORTS 4

typedef struct ec_master ec_master_t;
typedef struct ec_slave_config ec_slave_config_t;
typedef struct ec_domain ec_domain_t;
typedef struct ec_sdo_request ec_sdo_request_t;

typedef enum { EC_DIR_INVALID, EC_DIR_OUTPUT, EC_DIR_INPUT, EC_DIR_BOTH, EC_DIR_COUNT } ec_direction_t;
typedef enum { EC_WD_DEFAULT, EC_WD_ENABLE, EC_WD_DISABLE } ec_watchdog_mode_t;
typedef enum { EC_WC_ZERO = 0, EC_WC_INCOMPLETE, EC_WC_COMPLETE } ec_wc_state_t;
typedef enum { EC_REQUEST_UNUSED, EC_REQUEST_BUSY, EC_REQUEST_SUCCESS, EC_REQUEST_ERROR } ec_request_state_t;
typedef enum {
  EC_AL_STATE_INIT = 1,
  EC_AL_STATE_PREOP = 2,
  EC_AL_STATE_SAFEOP = 4,
  EC_AL_STATE_OP = 8
} ec_al_state_t;
typedef enum {
  EC_PORT_NOT_IMPLEMENTED,
  EC_PORT_NOT_CONFIGURED,
  EC_PORT_EBUS,
  EC_PORT_MII
} ec_slave_port_desc_t;

typedef struct {
  unsigned int slaves_responding; /* working counter of the last broadcast read */
  unsigned int al_states : 4;     /* OR of all slaves' AL states */
  unsigned int link_up : 1;
  unsigned int scan_busy : 1;
} ec_master_state_t;

typedef struct {
  unsigned int slaves_responding;
  unsigned int al_states : 4;
  unsigned int link_up : 1;
} ec_master_link_state_t;

typedef struct {
  unsigned int online : 1;      /* attached to a slave on the bus */
  unsigned int operational : 1; /* OP with this configuration */
  unsigned int al_state : 4;    /* 0 while offline */
  unsigned int error_flag : 1;  /* last state change refused, or the slave stopped answering */
  unsigned int ready : 1;       /* the slave's state machine is idle */
  uint16_t position;            /* ring position, 0xFFFF while offline */
} ec_slave_config_state_t;

typedef struct {
  uint8_t link_up;
  uint8_t loop_closed;
  uint8_t signal_detected;
  uint8_t bypassed;
} ec_slave_port_link_t;

typedef struct {
  uint16_t position;
  uint32_t vendor_id;
  uint32_t product_code;
  uint32_t revision_number;
  uint32_t serial_number;
  uint16_t alias;
  int16_t current_on_ebus; /* mA */
  struct {
    ec_slave_port_desc_t desc;
    ec_slave_port_link_t link;
    uint32_t receive_time;
    uint16_t next_slave; /* 0xFFFF for none */
    uint32_t delay_to_next_dc;
  } ports[EC_MAX_PORTS];
  uint8_t upstream_port;
  uint8_t al_state;
  uint8_t error_flag;
  uint8_t scan_required;
  uint8_t ready;
  uint8_t sync_count;
  uint16_t sdo_count;
  char name[EC_MAX_STRING_LENGTH];
} ec_slave_info_t;

typedef struct {
  uint32_t working_counter;
  ec_wc_state_t wc_state;
  unsigned int redundancy_active;
} ec_domain_state_t;

typedef struct {
  uint16_t index; /* 0: a gap that only counts bits */
  uint8_t subindex;
  uint8_t bit_length;
} ec_pdo_entry_info_t;

typedef struct {
  uint16_t index;
  unsigned int n_entries; /* 0: the slave's default mapping of this PDO */
  const ec_pdo_entry_info_t* entries;
} ec_pdo_info_t;

typedef struct {
  uint8_t index; /* 0xFF ends a list */
  ec_direction_t dir;
  unsigned int n_pdos;
  const ec_pdo_info_t* pdos;
  ec_watchdog_mode_t watchdog_mode;
} ec_sync_info_t;

typedef struct {
  uint16_t alias;
  uint16_t position;
  uint32_t vendor_id;
  uint32_t product_code;
  uint16_t index; /* 0 ends a list */
  uint8_t subindex;
  unsigned int* offset;       /* written: byte offset in the domain */
  unsigned int* bit_position; /* written: bit inside that byte; null demands 0 */
} ec_pdo_entry_reg_t;

/* The interface version the library was built with; compare with ECRT_VERSION_MAGIC. */
unsigned int ecrt_version_magic(void);

/* First call: reserves a master. Null when there is none of this index or it is reserved already. */
ec_master_t* ecrt_request_master(unsigned int master_index);
/* First call, too: opens a master without reserving it, also while another handle or program holds it. It is
 * good for the calls marked "open" and for the release, which ends this handle only; other calls give -EPERM.
 * Null when there is no master of this index. */
ec_master_t* ecrt_open_master(unsigned int master_index);
/* Last call, not from the cycle: deactivates and frees every handle of the master. */
void ecrt_release_master(ec_master_t* master);

/* Any, open. 0, or -EINVAL when no slave has this ring position. */
int ecrt_master_get_slave(ec_master_t* master, uint16_t slave_position, ec_slave_info_t* slave_info);
/* Any, open. One of the slave's sync managers, of its PDOs, of their entries, as the last scan found them;
 * the pointers inside a record are null. 0, -EINVAL (no such slave or place), -ENOENT (sync manager 16 and
 * on). */
int ecrt_master_get_sync_manager(ec_master_t* master, uint16_t slave_position, uint8_t sync_index,
                                 ec_sync_info_t* sync);
int ecrt_master_get_pdo(ec_master_t* master, uint16_t slave_position, uint8_t sync_index, uint16_t pos,
                        ec_pdo_info_t* pdo);
int ecrt_master_get_pdo_entry(ec_master_t* master, uint16_t slave_position, uint8_t sync_index,
                              uint16_t pdo_pos, uint16_t entry_pos, ec_pdo_entry_info_t* entry);
/* Any, open, not from the cycle: blocks until the slave has answered; while the master is active that takes
 * exchanges in another thread. One SDO transfer each. 0, -EINVAL (no such slave, nothing to write),
 * -EOVERFLOW (the answer is larger than the buffer), -ETIMEDOUT; -EIO with the slave's abort code in
 * *abort_code, 0 when it sent none. */
int ecrt_master_sdo_download(ec_master_t* master, uint16_t slave_position, uint16_t index, uint8_t subindex,
                             const uint8_t* data, size_t data_size, uint32_t* abort_code);
/* The same for a whole object by complete access. There is no such call for reading. */
int ecrt_master_sdo_download_complete(ec_master_t* master, uint16_t slave_position, uint16_t index,
                                      const uint8_t* data, size_t data_size, uint32_t* abort_code);
int ecrt_master_sdo_upload(ec_master_t* master, uint16_t slave_position, uint16_t index, uint8_t subindex,
                           uint8_t* target, size_t target_size, size_t* result_size, uint32_t* abort_code);
/* Set-up. A position beside an alias other than 0 counts slaves behind that alias. Null when the place was
 * configured with another identity before. */
ec_slave_config_t* ecrt_master_slave_config(ec_master_t* master, uint16_t alias, uint16_t position,
                                            uint32_t vendor_id, uint32_t product_code);
/* Set-up. n_syncs EC_END trusts the terminator. 0, -ENOENT (sync manager index), -EINVAL (direction). */
int ecrt_slave_config_pdos(ec_slave_config_t* sc, unsigned int n_syncs, const ec_sync_info_t syncs[]);
/* Set-up. Cycle and shift times in ns; assign_activate 0 switches the distributed clock of the slave off. */
void ecrt_slave_config_dc(ec_slave_config_t* sc, uint16_t assign_activate, uint32_t sync0_cycle,
                          int32_t sync0_shift, uint32_t sync1_cycle, int32_t sync1_shift);
/* Set-up. A request for one entry of the slave's object dictionary; size in bytes. Null on failure. */
ec_sdo_request_t* ecrt_slave_config_create_sdo_request(ec_slave_config_t* sc, uint16_t index,
                                                       uint8_t subindex, size_t size);
/* Set-up. The same for a whole object by complete access; patched releases only. */
ec_sdo_request_t* ecrt_slave_config_create_sdo_request_complete(ec_slave_config_t* sc, uint16_t index,
                                                                size_t size);
/* Any. */
void ecrt_slave_config_state(const ec_slave_config_t* sc, ec_slave_config_state_t* state);

/* Set-up. */
ec_domain_t* ecrt_master_create_domain(ec_master_t* master);
/* Set-up, after ecrt_slave_config_pdos. 0, -ENOENT, -EOVERFLOW, -EFAULT. */
int ecrt_domain_reg_pdo_entry_list(ec_domain_t* domain, const ec_pdo_entry_reg_t* pdo_entry_regs);
/* After activation: the process image, valid until deactivation; null when it is not mapped. */
uint8_t* ecrt_domain_data(ec_domain_t* domain);
/* Set-up, after registration: bytes, (size_t)-1 on error. */
size_t ecrt_domain_size(const ec_domain_t* domain);
/* Cycle. */
void ecrt_domain_process(ec_domain_t* domain);
void ecrt_domain_queue(ec_domain_t* domain);
/* Any: the working counter as of the last ecrt_domain_process. */
void ecrt_domain_state(const ec_domain_t* domain, ec_domain_state_t* state);

/* Any, while not busy. Longest wait in the slave's queue in ms, 0 for no limit. */
void ecrt_sdo_request_timeout(ec_sdo_request_t* req, uint32_t timeout);
/* Any. After a successful read each call copies the data into the buffer again and sets the data size. */
ec_request_state_t ecrt_sdo_request_state(ec_sdo_request_t* req);
/* Any, while not busy. */
void ecrt_sdo_request_read(ec_sdo_request_t* req);
/* Any, while not busy. Sends as many bytes as the data size says: fewer than created after a short read. */
void ecrt_sdo_request_write(ec_sdo_request_t* req);
/* Any. The buffer, not initialised; null for a size of 0. */
uint8_t* ecrt_sdo_request_data(ec_sdo_request_t* req);
/* Any. Bytes. */
size_t ecrt_sdo_request_data_size(const ec_sdo_request_t* req);

/* Ends set-up. 0 or a negative error number. */
int ecrt_master_activate(ec_master_t* master);
/* Not from the cycle. Frees every slave configuration, domain and request; the master stays reserved. */
void ecrt_master_deactivate(ec_master_t* master);

/* Cycle. Input data lands in the domain image during receive. */
void ecrt_master_receive(ec_master_t* master);
/* Cycle. The result is no success test: this variant always returns 0. */
size_t ecrt_master_send(ec_master_t* master);
/* Any, open. */
void ecrt_master_state(const ec_master_t* master, ec_master_state_t* state);
/* Any, open. -EINVAL when there is no such device. */
int ecrt_master_link_state(const ec_master_t* master, unsigned int dev_idx, ec_master_link_state_t* state);

/* Cycle. ns since 2000-01-01; the first value other than 0 is the phase reference. */
void ecrt_master_application_time(ec_master_t* master, uint64_t app_time);
void ecrt_master_sync_reference_clock(ec_master_t* master);
void ecrt_master_sync_slave_clocks(ec_master_t* master);
/* Cycle. Low 32 bits of the reference clock; 0, -ENXIO, -EIO or -EAGAIN. */
int ecrt_master_reference_clock_time(ec_master_t* master, uint32_t* time);
/* Set-up. A null configuration selects the first slave with distributed clocks. */
int ecrt_master_select_reference_clock(ec_master_t* master, ec_slave_config_t* sc);

#ifdef __cplusplus
}
#endif

#endif
