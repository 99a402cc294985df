// The thread that draws a run while it lasts, and takes the keys.
#ifndef IGH_BUS_WATCH_LIVE_SCREEN_H
#define IGH_BUS_WATCH_LIVE_SCREEN_H

#include "watch/Screen.h"

namespace igh_bus {

class LiveScreen {
public:
  // All of them must outlive it. Throws Failure(usageError).
  LiveScreen(const Lines& lines, const LiveValues& values, const Lookout& lookout);
  ~LiveScreen();
  LiveScreen(const LiveScreen&) = delete;
  LiveScreen& operator=(const LiveScreen&) = delete;

private:
  void run();
  void take(Key key);
  void scroll(Key key);

  const Lines& m_lines;
  const LiveValues& m_values;
  const Lookout& m_lookout;
  Screen m_screen;
  Page m_page;
  std::size_t m_first = 0; // line of the list
  bool m_errorsFirst = false;
  bool m_hold = false;
  bool m_help = false;
  std::atomic<bool> m_end{false};
  OrdinaryThread m_thread; // last: it uses all others
};

} // namespace igh_bus

#endif
