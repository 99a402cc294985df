// Linked to an example: its clocks stand still, but for its own sleeps.
#include "../../scenario/SteppedClock.h"

static scenario::SteppedClock steppedClock;
