// The whole task: which devices, what becomes of each, and the proof that the library reads it so.
#ifndef IGH_BUS_ADAPT_ADAPTATION_H
#define IGH_BUS_ADAPT_ADAPTATION_H

#include "adapt/Plan.h"
#include "adapt/RevisionChoice.h"

#include <functional>

namespace igh_bus::adapt {

// A device to adapt, for these slaves or (--all) for none.
struct Request {
  const SourceDevice* device = nullptr;
  DeviceKey key;
  std::vector<unsigned int> slaves;
  Wishes wishes;
  Changes told;                  // beforehand
  std::vector<std::string> open; // beforehand
};

// One file that is written; a description file names one vendor.
struct Part {
  std::size_t vendorFile = 0; // in the sources
  std::vector<std::size_t> plans;
};

struct Summary {
  std::size_t devices = 0; // with process data
  std::size_t wholeBefore = 0;
  std::size_t wholeAfter = 0;
  std::size_t entries = 0;
  std::size_t reachableBefore = 0;
  std::size_t reachableAfter = 0;
};

struct Adaptation {
  std::vector<Plan> plans;
  std::vector<Part> parts;        // in the order of their first devices
  std::vector<std::string> notes; // of the files, not of a device
  Summary summary() const;
};

// Every device of the files once; the first of a kind counts, as in the library.
std::vector<Request> requestAll(const Sources& sources, std::vector<std::string>& notes);

// Plans all devices. `before` is what the library loads of the makers' files. Throws Failure(usageError).
Adaptation adaptDevices(const Sources& sources, const std::vector<Request>& requests,
                        const std::vector<Device>& before);

// Builds one part, stores it at `path`, a file of length 0, and lets the library read it: fills the plans'
// judgements and reasons. A device of which a bit were somewhere else than in the slave is not written: it is
// left out with that reason when `leaveOut`. Throws Failure(usageError) otherwise, and when the library has
// something to complain of.
void storePart(const Sources& sources, Adaptation& adaptation, const Part& part, const std::string& path,
               bool leaveOut);

} // namespace igh_bus::adapt

#endif
