// What was looked at, and what became of it.
#ifndef IGH_BUS_FINDING_H
#define IGH_BUS_FINDING_H

#include <string>

namespace igh_bus {

// Of two things that are amiss, the one with the greater weight matters more; what keeps a bus from running
// at all weighs more than what makes it late.
struct Topic {
  const char* id; // stays the same for programs that read the JSON
  const char* subject;
  const char* shouldBe;
  int weight;
};

struct Finding {
  enum Level { ok, unknown, warning, failure } level;
  Topic topic;
  std::string is;
  std::string command; // that makes it so; empty when all is well
};

} // namespace igh_bus

#endif
