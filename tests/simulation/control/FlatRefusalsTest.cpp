// What ethercat_simulation.h refuses, and why.
#include "simulation/control/FlatBench.h"

namespace {

using FlatRefusalsTest = flat_bench::FlatBench;

TEST_F(FlatRefusalsTest, SayWhyAndDoNothing) {
  ASSERT_EQ(ethercat_simulation_build(R"({"masters": [{"index": 1, "slaves": [
    {"vendor_id": 1, "product_code": 1, "model": "drive"}]}]})"),
            0);
  const std::uint8_t one[1] = {1};
  std::uint64_t value = 0;
  const struct {
    std::function<std::int64_t()> call;
    const char* reason;
  } cases[] = {
      {[] { return ethercat_simulation_al_state(0, 2); }, "master 0 has no slave 2, it has 2"},
      {[] { return ethercat_simulation_set_link(0x10000, 0); }, "the index of a master is at most 65535"},
      {[] { return ethercat_simulation_build(flat_bench::SLAVES); }, "/slaves: master 0 has a bus already"},
      {[] { return ethercat_simulation_load("/nowhere"); },
       "/nowhere: cannot be opened: No such file or directory"},
      {[] { return ethercat_simulation_load(nullptr); }, "a text is missing"},
      {[] { return ethercat_simulation_build("{\n}]"); },
       "2:2: syntax error while parsing value - unexpected ']'; expected end of input"},
      {[] { return ethercat_simulation_build(R"({"masters": [{"index": 2}]})"); },
       "/masters/0: \"slaves\" is missing"},
      {[] {
         return ethercat_simulation_build(R"({"masters": [{"index": 2, "slaves": [], "record": "a"},
           {"index": 3, "slaves": [], "record": "a"}]})");
       },
       "/masters/1/record: another master has this file"},
      {[] {
         return ethercat_simulation_configure(
             0, R"({"slaves": [{"vendor_id": 1, "product_code": 1}], "seed": -1})");
       },
       "/seed: must be between 0 and 4294967295"},
      {[] {
         return ethercat_simulation_configure(0,
                                              R"({"faults": [{"kind": "power_off", "at": 1, "slave": 2}]})");
       },
       "/faults/0/slave: there is no slave at this position"},
      {[] { return ethercat_simulation_configure(0, R"({"record": ""})"); },
       "/record: must be the path of a file"},
      {[] { return ethercat_simulation_insert_slave(0, 3, "{}"); },
       "the position is beyond the end of the line"},
      {[] { return ethercat_simulation_insert_slave(0, 2, "{}"); }, "/: \"vendor_id\" is missing"},
      {[] { return ethercat_simulation_set_al_error(0, 0, 8, 1); }, "a slave falls to AL state 1, 2 or 4"},
      {[] { return ethercat_simulation_set_sdo_fault(0, 0, 0x2000, 0, "x"); }, "there is no fault x"},
      {[] { return ethercat_simulation_set_sdo_fault(0, 0, 0x2000, 1, "none"); },
       "the slave has no such object"},
      {[] { return ethercat_simulation_add_error_count(0, 0, 0x0314, 1); },
       "error counters are the registers 0x0300 to 0x0313"},
      {[] { return ethercat_simulation_fail_next(0, "ecrt", 0, 0); }, "there is no call ecrt"},
      {[&] { return ethercat_simulation_output_value(0, 0, 0x7000, 1, &value); },
       "the slave has no such output entry in use"},
      {[] { return ethercat_simulation_registers(0, 0, 0x0300, nullptr, 1); },
       "the place for the answer is missing"},
      {[] { return ethercat_simulation_reference_time(0, nullptr); }, "the place for the answer is missing"},
      {[&] { return ethercat_simulation_set_object(1, 0, 0x6040, 0, one, 1); },
       "the slave has no such object, or a drive needs it in its length"},
      {[&] { return ethercat_simulation_set_registers(0, 0, 0xFFFF, one, 2); }, "registers end at 0xFFFF"},
      {[] { return ethercat_simulation_set_drive_trouble(0, 0, "quick_stop", 1, 0); },
       "the slave is no drive"},
      {[] { return ethercat_simulation_set_drive_trouble(1, 0, "drive_fault", 1, 0); },
       "a drive fault has an error code"},
      {[] { return ethercat_simulation_add_observer(0, nullptr, nullptr); }, "an observer is missing"},
      {[] { return ethercat_simulation_remove_observer(0, 1); }, "there is no observer with this number"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(each.call(), -1) << each.reason;
    EXPECT_STREQ(ethercat_simulation_last_error(), each.reason);
  }
  EXPECT_EQ(ethercat_simulation_slave_count(0), 2);
  EXPECT_STREQ(ethercat_simulation_last_error(), "");
}

} // namespace
