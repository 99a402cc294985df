// Sizes and offsets of the real master's records on LP64. A program compiled against this header runs on the
// real library only while every line here holds.
#include "base/Interface.h"

namespace {

// NOLINTBEGIN(bugprone-sizeof-expression): the size of a pointer member is meant
#define LAYOUT(type, size, alignment)                                                                        \
  static_assert(sizeof(type) == (size) && alignof(type) == (alignment), #type)
#define AT(type, field, offset, size)                                                                        \
  static_assert(offsetof(type, field) == (offset) && sizeof(type::field) == (size), #type "." #field)

LAYOUT(ec_slave_info_t, 176, 4);
AT(ec_slave_info_t, position, 0, 2);
AT(ec_slave_info_t, vendor_id, 4, 4);
AT(ec_slave_info_t, product_code, 8, 4);
AT(ec_slave_info_t, revision_number, 12, 4);
AT(ec_slave_info_t, serial_number, 16, 4);
AT(ec_slave_info_t, alias, 20, 2);
AT(ec_slave_info_t, current_on_ebus, 22, 2);
AT(ec_slave_info_t, ports, 24, 80);
AT(ec_slave_info_t, ports[0].desc, 24, 4);
AT(ec_slave_info_t, ports[0].link, 28, 4);
AT(ec_slave_info_t, ports[0].receive_time, 32, 4);
AT(ec_slave_info_t, ports[0].next_slave, 36, 2);
AT(ec_slave_info_t, ports[0].delay_to_next_dc, 40, 4);
AT(ec_slave_info_t, ports[1], 44, 20);
AT(ec_slave_info_t, upstream_port, 104, 1);
AT(ec_slave_info_t, al_state, 105, 1);
AT(ec_slave_info_t, error_flag, 106, 1);
AT(ec_slave_info_t, scan_required, 107, 1);
AT(ec_slave_info_t, ready, 108, 1);
AT(ec_slave_info_t, sync_count, 109, 1);
AT(ec_slave_info_t, sdo_count, 110, 2);
AT(ec_slave_info_t, name, 112, 64);

LAYOUT(ec_slave_port_link_t, 4, 1);
AT(ec_slave_port_link_t, link_up, 0, 1);
AT(ec_slave_port_link_t, loop_closed, 1, 1);
AT(ec_slave_port_link_t, signal_detected, 2, 1);
AT(ec_slave_port_link_t, bypassed, 3, 1);

LAYOUT(ec_pdo_entry_info_t, 4, 2);
AT(ec_pdo_entry_info_t, index, 0, 2);
AT(ec_pdo_entry_info_t, subindex, 2, 1);
AT(ec_pdo_entry_info_t, bit_length, 3, 1);

LAYOUT(ec_pdo_info_t, 16, 8);
AT(ec_pdo_info_t, index, 0, 2);
AT(ec_pdo_info_t, n_entries, 4, 4);
AT(ec_pdo_info_t, entries, 8, 8);

LAYOUT(ec_sync_info_t, 32, 8);
AT(ec_sync_info_t, index, 0, 1);
AT(ec_sync_info_t, dir, 4, 4);
AT(ec_sync_info_t, n_pdos, 8, 4);
AT(ec_sync_info_t, pdos, 16, 8);
AT(ec_sync_info_t, watchdog_mode, 24, 4);

LAYOUT(ec_pdo_entry_reg_t, 32, 8);
AT(ec_pdo_entry_reg_t, alias, 0, 2);
AT(ec_pdo_entry_reg_t, position, 2, 2);
AT(ec_pdo_entry_reg_t, vendor_id, 4, 4);
AT(ec_pdo_entry_reg_t, product_code, 8, 4);
AT(ec_pdo_entry_reg_t, index, 12, 2);
AT(ec_pdo_entry_reg_t, subindex, 14, 1);
AT(ec_pdo_entry_reg_t, offset, 16, 8);
AT(ec_pdo_entry_reg_t, bit_position, 24, 8);

LAYOUT(ec_domain_state_t, 12, 4);
AT(ec_domain_state_t, working_counter, 0, 4);
AT(ec_domain_state_t, wc_state, 4, 4);
AT(ec_domain_state_t, redundancy_active, 8, 4);

// Bit fields have no offset to ask for; tests/simulation looks at their bytes.
LAYOUT(ec_master_state_t, 8, 4);
AT(ec_master_state_t, slaves_responding, 0, 4);
LAYOUT(ec_master_link_state_t, 8, 4);
AT(ec_master_link_state_t, slaves_responding, 0, 4);
LAYOUT(ec_slave_config_state_t, 4, 4);
AT(ec_slave_config_state_t, position, 2, 2);

// NOLINTEND(bugprone-sizeof-expression)
#undef LAYOUT
#undef AT

static_assert(EC_DIR_INVALID == 0 && EC_DIR_OUTPUT == 1 && EC_DIR_INPUT == 2 && EC_DIR_BOTH == 3 &&
                  EC_DIR_COUNT == 4,
              "");
static_assert(EC_WD_DEFAULT == 0 && EC_WD_ENABLE == 1 && EC_WD_DISABLE == 2, "");
static_assert(EC_WC_ZERO == 0 && EC_WC_INCOMPLETE == 1 && EC_WC_COMPLETE == 2, "");
static_assert(EC_REQUEST_UNUSED == 0 && EC_REQUEST_BUSY == 1 && EC_REQUEST_SUCCESS == 2 &&
                  EC_REQUEST_ERROR == 3,
              "");
static_assert(EC_PORT_NOT_IMPLEMENTED == 0 && EC_PORT_NOT_CONFIGURED == 1 && EC_PORT_EBUS == 2 &&
                  EC_PORT_MII == 3,
              "");
static_assert(EC_AL_STATE_INIT == 1 && EC_AL_STATE_PREOP == 2 && EC_AL_STATE_SAFEOP == 4 &&
                  EC_AL_STATE_OP == 8,
              "");
static_assert(sizeof(ec_direction_t) == 4 && sizeof(ec_wc_state_t) == 4 && sizeof(ec_request_state_t) == 4,
              "");
static_assert(EC_END == 0xFFFFFFFFU && ECRT_VERSION_MAGIC == 0x01050A, "");

} // namespace
