// Linked to an example: its clocks stand still, but for its own sleeps.
#include "../scenario/SteppedClock.h"

namespace {

scenario::SteppedClock clock;

} // namespace
