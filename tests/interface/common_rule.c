/* Plain C99: every function is linked, called through the public header, and refuses an id without master. */
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
  EXPECT(!igh_master_output_comm_diag_info(id, "label", &info));
  EXPECT(!igh_master_get_comm_diag_info(id, COMM_DIAG_LAST, &info));
  EXPECT(igh_master_uninitialize(id));
  EXPECT(number == 77 && offset == 77 && error == 77 && value > 76 && info.time == 77);
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

int main(void) {
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
  fclose(stdout);

  file = fopen("common_rule.out", "r");
  if (!file)
    return 2;
  EXPECT(fread(output, 1, sizeof output, file) == 3 * length);
  EXPECT(!memcmp(output, line, length) && !memcmp(output + length, line, length));
  EXPECT(!memcmp(output + 2 * length, line, length));
  fclose(file);
  return failures ? 1 : 0;
}
