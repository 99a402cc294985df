// Two slaves that the flat C face has built from a text.
#pragma once

#include "simulation/Bench.h"

#include <ethercat_simulation.h>

namespace flat_bench {

inline constexpr const char* SLAVES =
    R"({"timing": "fast", "cycle_us": 250, "climb_cycles": 1, "scan_cycles": 2, "slaves": [
  {"vendor_id": "0xE00", "product_code": 1, "objects": [{"index": "0x2000", "bytes": "01"}], "sync_managers": [
    {"index": 2, "direction": "output", "pdos": [{"index": "0x1600", "entries": [
      {"index": "0x7000", "subindex": 1, "bit_length": 8}, {"index": "0x7000", "subindex": 2, "bit_length": 8}]}]},
    {"index": 3, "direction": "input", "pdos": [{"index": "0x1A00", "entries": [
      {"index": "0x6000", "subindex": 1, "bit_length": 8}, {"index": "0x6000", "subindex": 2, "bit_length": 8}]}]}]},
  {"vendor_id": "0xE00", "product_code": 2, "model": "counter", "sync_managers": [
    {"index": 3, "direction": "input", "pdos": [{"index": "0x1A00", "entries": [
      {"index": "0x6000", "subindex": 1, "bit_length": 8}]}]}]}]})";

class FlatBench : public bench::Bench {
protected:
  void SetUp() override {
    Bench::SetUp();
    ASSERT_EQ(ethercat_simulation_build(SLAVES), 0) << ethercat_simulation_last_error();
  }
};

} // namespace flat_bench
