/* Plain C99: every function is linked, called through the public header, and refuses an id without master. */
#include "igh_master.h"

#include <stdio.h>

#define MAJOR IGH_MASTER_VERSION_MAJOR
#define MINOR IGH_MASTER_VERSION_MINOR
#define PATCH IGH_MASTER_VERSION_PATCH
#if !IGH_MASTER_VERSION_AT_LEAST(MAJOR, MINOR, PATCH) ||                                                     \
    !IGH_MASTER_VERSION_AT_LEAST(MAJOR, MINOR - 1, PATCH + 1) ||                                             \
    !IGH_MASTER_VERSION_AT_LEAST(MAJOR - 1, MINOR + 1, PATCH + 1)
#error "an earlier version is taken for a later one"
#endif
#if IGH_MASTER_VERSION_AT_LEAST(MAJOR, MINOR, PATCH + 1) ||                                                  \
    IGH_MASTER_VERSION_AT_LEAST(MAJOR, MINOR + 1, PATCH) ||                                                  \
    IGH_MASTER_VERSION_AT_LEAST(MAJOR + 1, MINOR, PATCH)
#error "a later version is taken for this one"
#endif

static int failures = 0;

static void expect(bool holds, const char* what) {
  if (!holds) {
    fprintf(stderr, "failed: %s\n", what);
    ++failures;
  }
}
#define EXPECT(condition) expect(condition, #condition)

static void expectRefusals(uint16_t id) {
  uint32_t number = 77;
  uint64_t offset = 77;
  int32_t error = 77;
  double value = 77;
  uint8_t bytes[2] = {77, 77};
  bool done = true;
  _ETHERCAT_COMM_DIAG_INFO info = {77, 0, 0, 0, 0, 0};
  EXPECT(!igh_master_set_exchange_mode(id, true));
  EXPECT(!igh_master_set_error_callback(id, NULL, NULL));
  EXPECT(!igh_master_get_period(id, &number));
  EXPECT(!igh_master_get_system_base_offset(id, &offset));
  EXPECT(!igh_master_append_eni(id, "no-such-file.xml"));
  EXPECT(!igh_master_get_state(id, &number));
  EXPECT(!igh_master_request_terminate(id));
  EXPECT(!igh_master_is_request_terminate(id));
  EXPECT(!igh_master_clear_error(id));
  EXPECT(!igh_master_get_last_error(id, &error));
  EXPECT(!igh_master_enable_eoe_function(id, 0, true));
  EXPECT(!igh_master_scan(id, &number));
  EXPECT(!igh_master_get_slave_product_code(id, 0, &number));
  EXPECT(!igh_master_get_slave_revision_code(id, 0, &number));
  EXPECT(!igh_master_config_slave(id, 0));
  EXPECT(!igh_master_config_all_slave(id));
  EXPECT(!igh_master_get_slot_number(id, 0, &number));
  EXPECT(!igh_master_get_slot_index_increment(id, 0, &number));
  EXPECT(!igh_master_get_slot_pdo_increment(id, 0, &number));
  EXPECT(!igh_master_active(id));
  EXPECT(!igh_master_exchange(id, NULL, NULL));
  EXPECT(!igh_master_create_pdo_info(id, 0, "Entry", true, &number));
  igh_master_destroy_pdo_info(id, 0, true);
  EXPECT(!igh_master_pdo_recv(id, 0, &value));
  EXPECT(!igh_master_pdo_send(id, 0, 1.0));
  EXPECT(!igh_master_create_raw_sdo_request(id, 0, 0x2000, 1, 2, 0, true, &number));
  EXPECT(!igh_master_create_raw_sdo_request_complete(id, 0, 0x2000, 4, 0, true, &number));
  EXPECT(!igh_master_create_sdo_request_ex(id, 0, 0x2000, 1, DATA_TYPE_UINT, 1, 0, true, &number));
  EXPECT(!igh_master_create_sdo_request(id, 0, 0x2000, 1, DATA_TYPE_UINT, 0, true, &number));
  igh_master_destroy_sdo_request(id, 0, true);
  EXPECT(!igh_master_raw_sdo_recv(id, 0, bytes, sizeof bytes, &done));
  EXPECT(!igh_master_raw_sdo_send(id, 0, bytes, sizeof bytes, &done));
  EXPECT(!igh_master_sdo_recv_ex(id, 0, &value, 1, &done));
  EXPECT(!igh_master_sdo_recv(id, 0, &value, &done));
  EXPECT(!igh_master_sdo_send_ex(id, 0, &value, 1, &done));
  EXPECT(!igh_master_sdo_send(id, 0, value, &done));
  EXPECT(!igh_master_process_sdo_immediately(id, 0));
  EXPECT(!igh_master_read_esc_reg(id, 0, 0, bytes, sizeof bytes));
  EXPECT(!igh_master_write_esc_reg(id, 0, 0, bytes, sizeof bytes));
  EXPECT(!igh_master_clear_esc_error_regs(id, 0));
  EXPECT(!igh_master_clear_all_esc_error_regs(id));
  EXPECT(!igh_master_request_esc_state(id, 0, 8));
  EXPECT(!igh_master_set_dc_debug_enable(id, true));
  EXPECT(!igh_master_output_comm_diag_info(id, "label", &info));
  EXPECT(!igh_master_get_comm_diag_info(id, COMM_DIAG_LAST, &info));
  EXPECT(igh_master_uninitialize(id));
  EXPECT(number == 77 && offset == 77 && error == 77 && value > 76 && info.time == 77);
  EXPECT(bytes[0] == 77 && bytes[1] == 77 && done);
}

int main(void) {
  expectRefusals(0); /* no registry yet */
  EXPECT(igh_master_initialize(1, 100000, false) && igh_master_set_dc_debug_enable(1, true));
  EXPECT(!igh_master_initialize_ex(2, 99999, true, true));
  expectRefusals(2); /* a registry, another id */
  EXPECT(igh_master_uninitialize(1));
  expectRefusals(1); /* the registry is gone again */
  return failures ? 1 : 0;
}
