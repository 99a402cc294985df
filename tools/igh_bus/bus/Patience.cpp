#include "bus/Patience.h"

#include <csignal>
#include <sys/time.h>

namespace igh_bus {
namespace {

constexpr suseconds_t AGAIN_US = 100000; // for a call that had not begun to wait at the first signal

timeval timeOf(double seconds) {
  const auto whole = static_cast<time_t>(seconds);
  return {whole, static_cast<suseconds_t>((seconds - static_cast<double>(whole)) * 1e6)};
}

} // namespace

Patience::Patience(double seconds) : m_start(std::chrono::steady_clock::now()) {
  struct sigaction action {};
  action.sa_handler = [](int) {}; // without SA_RESTART, so that a wait ends
  sigaction(SIGALRM, &action, nullptr);
  const itimerval timer{{0, AGAIN_US}, timeOf(seconds)};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

Patience::~Patience() {
  const itimerval none{};
  setitimer(ITIMER_REAL, &none, nullptr); // the handler stays: a last signal may be on its way
}

double Patience::seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
}

} // namespace igh_bus
