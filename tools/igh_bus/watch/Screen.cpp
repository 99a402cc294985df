#include "watch/Screen.h"

#include "text/Failure.h"
#include "watch/TerminalType.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <fcntl.h>
#include <ncurses.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace igh_bus {
namespace {

constexpr int CONTROL_C = 3;
constexpr int CONTROL_L = 12;
constexpr int ESCAPE_DELAY_MS = 25;

enum Pair : short { headingPair = 1, badPair, keysPair };

struct Binding {
  int code;
  Key key;
};
constexpr Binding BINDINGS[] = {{ERR, Key::none},         {KEY_UP, Key::up},          {KEY_DOWN, Key::down},
                                {KEY_PPAGE, Key::pageUp}, {KEY_NPAGE, Key::pageDown}, {KEY_HOME, Key::home},
                                {KEY_END, Key::end},      {KEY_F(6), Key::sort},      {'s', Key::sort},
                                {' ', Key::hold},         {KEY_F(1), Key::help},      {'h', Key::help},
                                {'?', Key::help},         {CONTROL_L, Key::redraw},   {'q', Key::quit},
                                {KEY_F(10), Key::quit},   {CONTROL_C, Key::quit}};

void startColours() {
  if (!has_colors())
    return;
  start_color();
  use_default_colors();
  init_pair(headingPair, COLOR_BLACK, COLOR_GREEN);
  init_pair(badPair, COLOR_RED, -1);
  init_pair(keysPair, COLOR_BLACK, COLOR_CYAN);
}

unsigned long attributesOf(Style style) {
  switch (style) {
  case Style::title:
    return A_BOLD;
  case Style::bad:
    return A_BOLD | (has_colors() ? COLOR_PAIR(badPair) : 0);
  case Style::heading:
    return has_colors() ? COLOR_PAIR(headingPair) : A_REVERSE;
  default:
    return A_NORMAL;
  }
}

} // namespace

Screen::Ignored::Ignored(int signal) : m_signal(signal) {
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigaction(m_signal, &ignore, &m_former);
}

Screen::Ignored::~Ignored() {
  sigaction(m_signal, &m_former, nullptr);
}

void Screen::demand() {
  const char* const name = std::getenv("TERM");
  if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0 || !name || !*name)
    throw Failure(usageError,
                  "watch needs a terminal to draw on; without one use igh_bus run, with --record for "
                  "the values of each cycle");
}

Screen::Screen()
    : m_kept(memfd_create("igh_bus", MFD_CLOEXEC)),
      m_terminal(fdopen(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3), "w")) {
  std::fflush(stdout);
  std::setlocale(LC_CTYPE, ""); // names of slaves; numbers stay as they are
  m_screen = knowsTerminalType() ? newterm(nullptr, m_terminal, stdin) : nullptr;
  if (!m_screen) {
    std::fclose(m_terminal);
    close(m_kept);
    throw Failure(usageError,
                  std::string("watch cannot draw on a terminal of the type '") + std::getenv("TERM") + "'");
  }
  std::signal(SIGWINCH, SIG_IGN); // newterm() catches it, also where it is ignored
  m_out.emplace(stdout, m_kept);
  m_err.emplace(stderr, m_kept);
  raw();
  noecho();
  keypad(stdscr, TRUE);
  set_escdelay(ESCAPE_DELAY_MS);
  curs_set(0);
  timeout(100);
  startColours();
}

Screen::~Screen() {
  endwin();
  delscreen(static_cast<SCREEN*>(m_screen));
  std::fclose(m_terminal);
  m_err.reset();
  m_out.reset();
  replay();
  close(m_kept);
}

void Screen::replay() const {
  constexpr off_t MOST = 1 << 16;
  const off_t length = lseek(m_kept, 0, SEEK_END);
  char part[512];
  off_t at = std::max<off_t>(0, length - MOST);
  for (ssize_t count = 0; (count = pread(m_kept, part, sizeof part, at)) > 0; at += count)
    std::fwrite(part, 1, static_cast<std::size_t>(count), stdout);
  std::fflush(stdout);
}

void Screen::fitSize() {
  winsize size{};
  if (ioctl(fileno(m_terminal), TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0 &&
      (size.ws_row != LINES || size.ws_col != COLS)) {
    resizeterm(size.ws_row, size.ws_col);
    redraw();
  }
}

void Screen::redraw() {
  clearok(curscr, TRUE);
}

void Screen::put(int row, const std::string& text, unsigned long attributes) const {
  attrset(static_cast<attr_t>(attributes));
  mvaddnstr(row, 0, text.c_str(), COLS);
  for (int column = getcurx(stdscr); attributes != A_NORMAL && getcury(stdscr) == row && column < COLS;
       ++column)
    mvaddch(row, column, ' ');
  attrset(A_NORMAL);
}

// The heading of the part that the list is in stays over it.
void Screen::draw(const Page& page, std::size_t& first) {
  fitSize();
  erase();
  int row = 0;
  for (const auto& line : page.top)
    put(row++, line.text, attributesOf(line.style));
  const auto room = std::max(LINES - row - 2, 1);
  m_listLines = static_cast<std::size_t>(room);
  const auto count = page.scroll.size();
  first = std::min(first, count > m_listLines ? count - m_listLines : 0);
  const Line* heading = nullptr;
  for (std::size_t i = 0; i <= first && i < count; ++i) {
    if (page.scroll[i].style == Style::heading)
      heading = &page.scroll[i];
  }
  ++row;
  for (std::size_t i = first; i < std::min(count, first + m_listLines); ++i, ++row) {
    const bool covered = i == first && heading != nullptr;
    const Line& line = covered ? *heading : page.scroll[i];
    put(row, line.text, attributesOf(line.style));
  }
  put(LINES - 1, "F1 Help  F6 Sort  Space Hold  F10 Quit", has_colors() ? COLOR_PAIR(keysPair) : A_REVERSE);
  refresh();
}

Key Screen::key() {
  const int code = getch();
  for (const auto& binding : BINDINGS) {
    if (binding.code == code)
      return binding.key;
  }
  return Key::other;
}

} // namespace igh_bus
