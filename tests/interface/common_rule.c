/* Plain C99: every function is linked, called through the public header, refuses an id without master and
 * serves one that has a bus. */
#include "igh_master.h"

#include <stdio.h>
#include <string.h>

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

static void expectSetUp(const char* description, uint32_t* entries, uint32_t* requests) {
  uint32_t number = 0;
  uint64_t offset = 77;
  EXPECT(igh_master_initialize(0, 1000000, false));
  EXPECT(igh_master_set_exchange_mode(0, false) && igh_master_set_error_callback(0, NULL, NULL));
  EXPECT(igh_master_get_period(0, &number) && number == 1000000);
  EXPECT(igh_master_get_system_base_offset(0, &offset) && offset == 0);
  EXPECT(igh_master_append_eni(0, description));
  EXPECT(igh_master_scan(0, &number) && number == 1);
  EXPECT(igh_master_get_slave_product_code(0, 0, &number) && number == 16);
  EXPECT(igh_master_get_slave_revision_code(0, 0, &number) && number == 1);
  EXPECT(igh_master_get_slot_number(0, 0, &number));
  EXPECT(igh_master_get_slot_index_increment(0, 0, &number));
  EXPECT(igh_master_get_slot_pdo_increment(0, 0, &number));
  EXPECT(igh_master_config_slave(0, 0) && !igh_master_config_slave(0, 1) && igh_master_config_all_slave(0));
  EXPECT(igh_master_create_pdo_info(0, 0, "Out", false, &entries[0]));
  EXPECT(igh_master_create_pdo_info(0, 0, "In", true, &entries[1]));
  EXPECT(igh_master_create_raw_sdo_request(0, 0, 0x2000, 1, 2, 0, true, &requests[0]));
  EXPECT(igh_master_create_raw_sdo_request_complete(0, 0, 0x2000, 4, 0, false, &requests[1]));
  EXPECT(igh_master_create_sdo_request_ex(0, 0, 0x2001, 0, DATA_TYPE_UINT, 1, 0, true, &requests[2]));
  EXPECT(igh_master_create_sdo_request(0, 0, 0x2001, 0, DATA_TYPE_UINT, 0, false, &requests[3]));
  EXPECT(requests[0] == 0 && requests[1] == 1 && requests[2] == 2 && requests[3] == 2);
  EXPECT(igh_master_active(0));
}

static void expectTransfers(const uint32_t* entries) {
  static const uint8_t object[4] = {5, 6, 7, 8};
  bool done[4] = {true, true, true, true};
  uint8_t bytes[2] = {0, 0};
  uint32_t state = 0;
  double value = 0;
  int left;
  for (left = 100; state != 8 && left > 0; --left)
    EXPECT(igh_master_exchange(0, NULL, NULL) && igh_master_get_state(0, &state));
  EXPECT(state == 8);
  EXPECT(igh_master_pdo_send(0, entries[0], 42) && igh_master_raw_sdo_recv(0, 0, bytes, 2, &done[0]));
  EXPECT(igh_master_raw_sdo_send(0, 1, object, 4, &done[1]));
  EXPECT(igh_master_sdo_send(0, 2, 513, &done[2]) && igh_master_sdo_recv(0, 2, &value, &done[3]));
  EXPECT(!igh_master_sdo_send_ex(0, 2, &value, 1, NULL) && !igh_master_sdo_recv_ex(0, 2, &value, 1, NULL));
  EXPECT(igh_master_process_sdo_immediately(0, 0));
  EXPECT(!done[0] && !done[1] && !done[2] && !done[3]);
  for (left = 60; left > 0; --left)
    EXPECT(igh_master_exchange(0, NULL, NULL));
  EXPECT(done[0] && done[1] && done[2] && done[3] && value > 0 && bytes[0] != 0);
  EXPECT(igh_master_sdo_recv_ex(0, 2, &value, 1, NULL) && igh_master_sdo_send_ex(0, 2, &value, 1, NULL));
  EXPECT(igh_master_pdo_recv(0, entries[1], &value) && value > 41 && value < 43);
  igh_master_destroy_sdo_request(0, 0, true);
  igh_master_destroy_pdo_info(0, entries[1], true);
  EXPECT(!igh_master_raw_sdo_recv(0, 0, bytes, 2, NULL) && !igh_master_pdo_recv(0, entries[1], &value));
}

/* The bus of the environment has one slave, which the file describes. */
static void expectService(const char* description) {
  uint32_t entries[2] = {9, 9};
  uint32_t requests[4] = {9, 9, 9, 9};
  uint8_t bytes[2] = {1, 2};
  int32_t error = 77;
  _ETHERCAT_COMM_DIAG_INFO info = {0, 0, 0, 0, 0, 0};
  expectSetUp(description, entries, requests);
  expectTransfers(entries);
  EXPECT(igh_master_read_esc_reg(0, 0, 0x0130, bytes, 2) && bytes[0] == 8);
  EXPECT(igh_master_write_esc_reg(0, 0, 0x0120, bytes, 2) && bytes[0] == 0);
  EXPECT(igh_master_clear_esc_error_regs(0, 0) && igh_master_clear_all_esc_error_regs(0));
  EXPECT(igh_master_request_esc_state(0, 0, 4) && igh_master_set_dc_debug_enable(0, true));
  EXPECT(igh_master_get_comm_diag_info(0, COMM_DIAG_LAST, &info) && info.time > 60);
  EXPECT(igh_master_output_comm_diag_info(0, NULL, &info) && !igh_master_enable_eoe_function(0, 0, true));
  EXPECT(igh_master_get_last_error(0, &error) && error != 77 && igh_master_clear_error(0));
  EXPECT(!igh_master_is_request_terminate(0) && igh_master_request_terminate(0));
  EXPECT(igh_master_is_request_terminate(0) && igh_master_uninitialize(0));
}

static void expectPeriodRange(void) {
  uint32_t period = 0;
  EXPECT(!igh_master_initialize_ex(1, 99999, true, false));
  EXPECT(!igh_master_initialize_ex(1, 4000000001u, true, false));
  EXPECT(!igh_master_initialize(1, 0, false));
  expectRefusals(1);
  EXPECT(igh_master_initialize_ex(1, 100000, false, false) && igh_master_uninitialize(1));
  EXPECT(igh_master_initialize(1, 4000000000u, false));
  EXPECT(igh_master_initialize(1, 1000000, true));
  EXPECT(igh_master_get_period(1, &period) && period == 4000000000u);
}

int main(int count, char** arguments) {
  static const char line[] = "Ethercat exchange period should between 100000 and 4000000000.\n";
  const size_t length = sizeof line - 1;
  char output[4 * sizeof line] = "";
  FILE* file;
  if (!freopen("common_rule.out", "w", stdout))
    return 2;
  expectRefusals(0);   /* no registry yet */
  expectPeriodRange(); /* leaves master 1 */
  expectRefusals(2);   /* a registry, another id */
  EXPECT(igh_master_uninitialize(1));
  expectRefusals(1); /* the registry is gone again */
  if (!freopen("common_rule.known.out", "w", stdout))
    return 2;
  if (count > 1)
    expectService(arguments[1]);

  file = fopen("common_rule.out", "r");
  if (!file)
    return 2;
  EXPECT(fread(output, 1, sizeof output, file) == 3 * length);
  EXPECT(!memcmp(output, line, length) && !memcmp(output + length, line, length));
  EXPECT(!memcmp(output + 2 * length, line, length));
  fclose(file);
  return failures ? 1 : 0;
}
