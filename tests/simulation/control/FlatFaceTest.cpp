// ethercat_simulation.h, the observer and the record.
#include "simulation/control/FlatBench.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <unistd.h>

using namespace bench;

namespace {

class FlatFaceTest : public flat_bench::FlatBench {
protected:
  void activate() {
    request();
    configurations = {map(0), map(1, 2)};
    sdo = ecrt_slave_config_create_sdo_request(configurations[0], 0x2000, 0, 1);
    ASSERT_EQ(ecrt_master_activate(master), 0);
  }
  void toOp() {
    activate();
    exchange(30);
    ASSERT_EQ(view(), "8L+");
  }
  // The view, a transfer of the object, and the error counters of both slaves that are not 0.
  std::string fullView() {
    exchange(15);
    ecrt_sdo_request_read(sdo);
    exchange(6);
    receive();
    std::string text = view() + " " + "UBSE"[ecrt_sdo_request_state(sdo)];
    send();
    for (unsigned int slave = 0; static_cast<int>(slave) < ethercat_simulation_slave_count(0); ++slave) {
      std::uint8_t counters[0x14];
      EXPECT_EQ(ethercat_simulation_registers(0, slave, 0x0300, counters, sizeof counters), 0x14);
      for (unsigned int i = 0; i < sizeof counters; ++i) {
        text += counters[i] > 0 ? " " + std::to_string(slave) + ":" + std::to_string(i) : "";
      }
    }
    return text;
  }

  ec_sdo_request_t* sdo = nullptr;
};

TEST_F(FlatFaceTest, EachFaultShowsAndIsTakenBack) {
  const std::uint8_t zeros[0x14] = {};
  const struct {
    const char* name;
    std::function<int(bool)> fault;
    std::string during; // counters as the offset from 0x0300
  } cases[] = {
      {"drop", [](bool on) { return ethercat_simulation_drop_frames(0, on ? 1000 : 0); }, "8L0 B 0:0 1:8"},
      {"delay", [](bool on) { return ethercat_simulation_delay_frames(0, on ? 1000 : 0); }, "8L0 S"},
      {"link", [](bool on) { return ethercat_simulation_set_link(0, !on); }, "00 #01 E 0:16"},
      {"wire", [](bool on) { return ethercat_simulation_set_wire_broken(0, 0, on); }, "8L- #1 S 0:17 1:16"},
      {"power", [](bool on) { return ethercat_simulation_set_powered(0, 1, !on); },
       "8L- #1 S 0:17 1:16 1:17"},
      {"al", [](bool on) { return ethercat_simulation_set_al_error(0, 0, 4, on ? 0x1B : 0); }, "12L+ E0 E"},
      {"silent", [](bool on) { return ethercat_simulation_set_responding(0, 0, !on); }, "8L- B 0:13"},
      {"flag", [](bool on) { return ethercat_simulation_set_error_flag(0, 1, on); }, "8L+ E1 S"},
      {"maximum", [](bool on) { return ethercat_simulation_set_maximum_state(0, 0, on ? 2 : 8); },
       "10L- E0 E"},
      {"sdo",
       [](bool on) { return ethercat_simulation_set_sdo_fault(0, 0, 0x2000, 0, on ? "abort" : "none"); },
       "8L+ E"},
      {"count",
       [&](bool on) {
         return on ? ethercat_simulation_add_error_count(0, 1, 0x0312, 3)
                   : ethercat_simulation_set_registers(0, 1, 0x0300, zeros, sizeof zeros);
       },
       "8L+ S 1:18"},
      {"schedule",
       [](bool on) {
         return on ? ethercat_simulation_configure(
                         0, ETHERCAT_SIMULATION_JSON({
                           "faults" : [ {"kind" : "silent_slave", "slave" : 1, "every" : 1, "for" : 9999} ]
                         }))
                   : ethercat_simulation_clear_faults(0);
       },
       "8L- S 1:13"},
      {"slave",
       [](bool on) {
         return on ? ethercat_simulation_remove_slave(0, 1)
                   : ethercat_simulation_insert_slave(
                         0, 1, ETHERCAT_SIMULATION_JSON({"vendor_id" : "0xE00", "product_code" : 2}));
       },
       "8L- #1 S 0:17"},
  };
  toOp();
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    EXPECT_EQ(each.fault(true), 0) << ethercat_simulation_last_error();
    EXPECT_EQ(fullView(), each.during);
    EXPECT_EQ(each.fault(false), 0) << ethercat_simulation_last_error();
    ethercat_simulation_set_registers(0, 0, 0x0300, zeros, sizeof zeros);
    ethercat_simulation_set_registers(0, 1, 0x0300, zeros, sizeof zeros);
    exchange(30);
    EXPECT_EQ(fullView(), "8L+ S");
  }
}

TEST_F(FlatFaceTest, SlavesShowWhatTheyReceivedAndSendWhatTheyAreTold) {
  activate();
  std::uint8_t* image = ecrt_domain_data(domain);
  exchange(30);
  image[0] = 0x11;
  image[1] = 0x22;
  send();
  std::uint8_t bytes[4] = {};
  std::uint64_t value = 0;
  EXPECT_EQ(ethercat_simulation_outputs(0, 0, bytes, 1), 2);
  EXPECT_EQ(bytes[0] << 8 | bytes[1], 0x1100);
  EXPECT_EQ(ethercat_simulation_output_value(0, 0, 0x7000, 2, &value), 0);
  EXPECT_EQ(value, 0x22U);
  EXPECT_EQ(ethercat_simulation_set_input_value(0, 1, 0x6000, 1, 0x1FF), 0);
  for (std::uint8_t pinned = 7; pinned < 9; ++pinned) {
    EXPECT_EQ(ethercat_simulation_set_input_value(0, 0, 0x6000, 2, pinned), 0);
    exchange();
    EXPECT_EQ(ethercat_simulation_inputs(0, 0, bytes, sizeof bytes), 2);
    EXPECT_EQ(bytes[0] << 8 | bytes[1], 0x1100 | pinned);
  }
  EXPECT_EQ(ethercat_simulation_inputs(0, 1, bytes, sizeof bytes), 1);
  EXPECT_EQ(bytes[0], 0xFF);
  EXPECT_EQ(ethercat_simulation_set_inputs(0, 0, bytes, 1), 0); // and no entry any more
  exchange();
  EXPECT_EQ(bus().inputs(0), (std::vector<std::uint8_t>{0xFF, 8}));
  EXPECT_EQ(ethercat_simulation_set_inputs(0, 0, nullptr, 0), 0);
  exchange();
  EXPECT_EQ(bus().inputs(0), bus().outputs(0));

  EXPECT_EQ(ethercat_simulation_set_object(0, 0, 0x2000, 0, bytes, 2), 0);
  EXPECT_EQ(ethercat_simulation_object(0, 0, 0x2000, 0, nullptr, 0), 2);
  ecrt_domain_data(nullptr);
  char text[12];
  EXPECT_EQ(ethercat_simulation_misuse(0), 1);
  EXPECT_GT(ethercat_simulation_misuse_text(0, text, sizeof text), 20);
  EXPECT_EQ(std::strlen(text), 11U);
  EXPECT_EQ(ethercat_simulation_fail_next(0, "ecrt_master_slave_config", 0, 1), 0);
  EXPECT_NE(ecrt_master_slave_config(master, 0, 0, VENDOR, 1), nullptr);
  EXPECT_EQ(ecrt_master_slave_config(master, 0, 0, VENDOR, 1), nullptr);
  EXPECT_EQ(ethercat_simulation_call_count(0, "ecrt_master_activate"), 1);
  EXPECT_EQ(ethercat_simulation_is_active(0), 1);
  EXPECT_EQ(ethercat_simulation_frames_sent(0), 35);
}

TEST_F(FlatFaceTest, SeedAndUnmappedImageAreThoseOfTheText) {
  const auto losses = [&](const std::string& seed) {
    SetUp();
    const auto text = "{" + seed + R"("faults": [{"kind": "lost_frame", "probability": 0.5}]})";
    EXPECT_EQ(ethercat_simulation_configure(0, text.c_str()), 0) << ethercat_simulation_last_error();
    activate();
    std::string lost;
    for (int i = 0; i < 64; ++i) {
      exchange();
      receive();
      lost += "0-+"[completeness()];
    }
    return lost;
  };
  EXPECT_EQ(losses(R"("seed": 1, )"), losses(""));
  EXPECT_NE(losses(R"("seed": 2, )"), losses(""));
  for (const bool unmapped : {true, false}) {
    SetUp();
    ethercat_simulation_configure(0, unmapped ? R"({"reactivation_unmapped": true})"
                                              : R"({"reactivation_unmapped": false})");
    activate();
    ecrt_master_deactivate(master);
    domain = ecrt_master_create_domain(master);
    map(0);
    ASSERT_EQ(ecrt_master_activate(master), 0);
    EXPECT_EQ(ecrt_domain_data(domain) == nullptr, unmapped);
  }
}

// What one observer saw, and what it does: it leaves in its last cycle, and lets another one come.
struct Watcher {
  std::string seen;
  std::uint64_t last = 0;
  int number = 0;
  Watcher* next = nullptr;
};

void watch(unsigned int master, std::uint64_t cycle, void* context) {
  Watcher& watcher = *static_cast<Watcher*>(context);
  std::uint8_t bytes[2] = {};
  ethercat_simulation_outputs(master, 0, bytes, sizeof bytes);
  watcher.seen += std::to_string(cycle) + ":" + std::to_string(bytes[0]) + " ";
  ethercat_simulation_set_input_value(master, 0, 0x6000, 1, cycle);
  EXPECT_EQ(ethercat_simulation_reset(), -1);
  if (cycle == watcher.last) {
    EXPECT_EQ(ethercat_simulation_remove_observer(master, watcher.number), 0);
    EXPECT_EQ(ethercat_simulation_remove_observer(master, watcher.number), -1);
    if (watcher.next != nullptr) {
      watcher.next->number = ethercat_simulation_add_observer(master, watch, watcher.next);
    }
  }
}

TEST_F(FlatFaceTest, ObserversSeeEachCycleBehindItsFrame) {
  activate();
  ethercat_simulation_configure(0, R"({"faults": [{"kind": "lost_frame", "at": 33, "for": 1}]})");
  exchange(30);
  Watcher third;
  Watcher first{"", 33, 0, &third};
  Watcher second{"", 34};
  for (Watcher* watcher : {&first, &second}) {
    watcher->number = ethercat_simulation_add_observer(0, watch, watcher);
  }
  std::string inputs;
  for (std::uint8_t output = 1; output < 7; ++output) {
    receive();
    inputs += std::to_string(ecrt_domain_data(domain)[2]) + " ";
    ecrt_domain_data(domain)[0] = output;
    send();
  }
  EXPECT_EQ(first.seen, "31:1 32:2 33:2 "); // a lost frame brings no outputs, and is a cycle
  EXPECT_EQ(second.seen, "31:1 32:2 33:2 34:4 ");
  EXPECT_EQ(third.seen, "34:4 35:5 36:6 ");
  EXPECT_EQ(inputs, "0 0 31 31 33 34 ");
  EXPECT_EQ(ethercat_simulation_reset(), 0);
}

TEST_F(FlatFaceTest, ARecordHasARowForEachCycle) {
  const std::string path = testing::TempDir() + "flat_face_record_" + std::to_string(getpid()) + ".csv";
  const auto read = [&] {
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  toOp();
  ASSERT_EQ(ethercat_simulation_configure(0, (R"({"record": ")" + path + "\"}").c_str()), 0);
  receive();
  ecrt_domain_data(domain)[1] = 0xAB;
  send();
  exchange();
  ethercat_simulation_set_powered(0, 1, 0);
  ethercat_simulation_set_al_error(0, 0, 4, 0x1B);
  exchange();
  const std::string rows = "cycle,time_s,0.state,0.outputs,0.inputs,1.state,1.outputs,1.inputs\n"
                           "31,0.000000000,8,00 AB,00 00,8,,1C\n"
                           "32,0.000250000,8,00 AB,00 AB,8,,1D\n"
                           "33,0.000500000,20,00 AB,00 AB,,,\n";
  ecrt_master_deactivate(master);
  EXPECT_EQ(read(), rows);
  ethercat_simulation_record(0, nullptr);
  std::remove(path.c_str());
  for (const char* name : {"/dev/full", "/nowhere/x.csv"}) {
    SetUp();
    ASSERT_EQ(ethercat_simulation_record(0, name), 0);
    testing::internal::CaptureStderr();
    activate();
    exchange(3);
    ecrt_master_deactivate(master);
    ecrt_release_master(master);
    sim::reset();
    const std::string reason =
        *name == '/' && name[1] == 'd' ? "No space left on device" : "No such file or directory";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              name + (": the record cannot be written: " + reason + "\n"));
  }
}

} // namespace
