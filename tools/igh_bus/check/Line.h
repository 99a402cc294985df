// One line of a check: what is promised, and what was seen of it.
#ifndef IGH_BUS_CHECK_LINE_H
#define IGH_BUS_CHECK_LINE_H

#include <string>
#include <vector>

namespace igh_bus::check {

enum class Outcome { passed, failed, skipped };

struct Line {
  std::string step;
  std::string promised;
  Outcome outcome = Outcome::failed;
  std::string seen; // of a line that was skipped: why
  std::vector<std::string> details;

  void judge(bool good, const std::string& text) {
    outcome = good ? Outcome::passed : Outcome::failed;
    seen = text;
  }
  void skip(const std::string& reason) {
    outcome = Outcome::skipped;
    seen = reason;
  }
};

} // namespace igh_bus::check

#endif
