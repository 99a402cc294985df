#include "watch/LiveScreen.h"

#include <algorithm>

namespace igh_bus {

LiveScreen::LiveScreen(const Lines& lines, const LiveValues& values, const Lookout& lookout)
    : m_lines(lines), m_values(values), m_lookout(lookout), m_thread([this] { run(); }) {}

LiveScreen::~LiveScreen() {
  m_end.store(true, std::memory_order_release);
  m_thread.join();
}

void LiveScreen::run() {
  while (!m_end.load(std::memory_order_acquire)) {
    if (m_help)
      m_page = Lines::help();
    else if (!m_hold)
      m_page = m_lines.page(m_values.picture(), m_lookout.sightings().slaves, m_errorsFirst);
    m_screen.draw(m_page, m_first);
    take(Screen::key());
  }
}

void LiveScreen::take(Key key) {
  switch (key) {
  case Key::quit:
    StopSignals::requestByKey();
    break;
  case Key::help:
    m_help = !m_help;
    m_first = 0;
    m_hold = false;
    break;
  case Key::hold:
    m_hold = !m_hold;
    break;
  case Key::sort:
    m_errorsFirst = !m_errorsFirst;
    break;
  case Key::redraw:
    m_screen.redraw();
    break;
  default:
    scroll(key);
  }
}

void LiveScreen::scroll(Key key) {
  const auto back = [&](std::size_t lines) { m_first -= std::min(m_first, lines); };
  if (key == Key::up)
    back(1);
  else if (key == Key::down)
    ++m_first; // drawing keeps it within the list
  else if (key == Key::pageUp)
    back(m_screen.listLines());
  else if (key == Key::pageDown)
    m_first += m_screen.listLines();
  else if (key == Key::home)
    m_first = 0;
  else if (key == Key::end)
    m_first = m_page.scroll.size();
}

} // namespace igh_bus
