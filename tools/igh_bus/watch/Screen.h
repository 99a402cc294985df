// The terminal, taken over while an object of this class lives.
#ifndef IGH_BUS_WATCH_SCREEN_H
#define IGH_BUS_WATCH_SCREEN_H

#include "text/Redirection.h"
#include "watch/Lines.h"

#include <csignal>

namespace igh_bus {

enum class Key { none, other, up, down, pageUp, pageDown, home, end, sort, hold, help, redraw, quit };

class Screen {
public:
  // Throws Failure(usageError) where there is no terminal to draw on; nothing has changed then.
  static void demand();

  // What is printed meanwhile, by whomever, is kept for the end. Throws Failure(usageError).
  Screen();
  // The terminal is as it was, and behind its old text stands what was kept, the last of it at least.
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  // From one thread only. `first` is the first line of the list that is shown, and is kept within it.
  void draw(const Page& page, std::size_t& first);
  std::size_t listLines() const { return m_listLines; } // that fit
  void redraw();
  // The next key, none after a tenth of a second.
  static Key key();

private:
  class Ignored { // a signal that must neither stop the cycle nor run a handler in it
  public:
    explicit Ignored(int signal);
    ~Ignored();
    Ignored(const Ignored&) = delete;
    Ignored& operator=(const Ignored&) = delete;

  private:
    int m_signal;
    struct sigaction m_former {};
  };

  void fitSize();
  void put(int row, const std::string& text, unsigned long attributes) const;
  void replay() const;

  Ignored m_stop{SIGTSTP};
  Ignored m_resize{SIGWINCH}; // the size is looked at instead
  int m_kept;                 // what is printed meanwhile
  std::FILE* m_terminal;
  std::optional<Redirection> m_out;
  std::optional<Redirection> m_err;
  void* m_screen = nullptr;
  std::size_t m_listLines = 1;
};

} // namespace igh_bus

#endif
