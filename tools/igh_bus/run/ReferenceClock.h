// A run that follows the reference clock: keeps its wake-ups on the bus time and shows how the two meet.
#ifndef IGH_BUS_REFERENCE_CLOCK_H
#define IGH_BUS_REFERENCE_CLOCK_H

#include "bus/Session.h"
#include "host/RealTime.h"
#include "report/Recording.h"
#include "run/Lookout.h"

#include <array>
#include <cstdio>

namespace igh_bus {

// Takes the lines of the library's clock controller out of standard output while an object of this class
// lives: nothing else tells the difference. All other lines pass.
class DifferenceLines {
public:
  DifferenceLines();
  ~DifferenceLines();
  DifferenceLines(const DifferenceLines&) = delete;
  DifferenceLines& operator=(const DifferenceLines&) = delete;

  // True once for each interval of the controller, with the numbers of its line.
  bool take(ClockPoint& point);

private:
  static ssize_t receive(void* self, const char* text, size_t size);
  void receive(char letter);
  void endLine();

  std::FILE* m_kept;
  std::FILE* m_stream;
  std::array<char, 1024> m_buffer{};
  std::array<char, 256> m_line{};
  std::size_t m_length = 0;
  ClockPoint m_point{};
  bool m_fresh = false;
};

class ReferenceFollower {
public:
  // After each exchange: shifts the wake-ups. What the library's controller said, when it has ended an
  // interval.
  std::optional<ClockPoint> follow(const Session& session, Pacemaker& pacemaker);
  // The same. Hands the numbers on, too.
  void step(const Session& session, std::uint32_t state, Pacemaker& pacemaker, Recording& recording,
            Lookout* lookout);

private:
  DifferenceLines m_lines;
  std::int64_t m_offsetNs = 0;
};

} // namespace igh_bus

#endif
