// Part of every test program: the times of a real master would only make most tests long. Programs that a
// test starts inherit it; tests of the times ask for them.
#include <cstdlib>

namespace {

[[maybe_unused]] const int fastTiming = setenv("ETHERCAT_SIMULATION_TIMING", "fast", 1);

} // namespace
