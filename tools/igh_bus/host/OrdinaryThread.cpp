#include "host/OrdinaryThread.h"

#include "text/Failure.h"

#include <csignal>
#include <cstring>
#include <sched.h>
#include <utility>

namespace igh_bus {
namespace {

constexpr std::size_t STACK_BYTES = 1U << 20U; // locked when the memory of the run is

const cpu_set_t& startingProcessors() {
  static const cpu_set_t processors = [] {
    cpu_set_t set;
    CPU_ZERO(&set);
    sched_getaffinity(0, sizeof set, &set);
    return set;
  }();
  return processors;
}

} // namespace

void rememberProcessors() {
  startingProcessors();
}

OrdinaryThread::OrdinaryThread(std::function<void()> body) : m_body(std::move(body)) {
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, STACK_BYTES);
  pthread_attr_setinheritsched(&attributes, PTHREAD_EXPLICIT_SCHED);
  pthread_sigmask(SIG_SETMASK, &all, &former); // inherited: none reaches the thread before it could block it
  const int error = pthread_create(&m_thread, &attributes, run, this);
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
  pthread_attr_destroy(&attributes);
  if (error != 0)
    throw Failure(usageError, std::string("no thread beside the cycle: ") + std::strerror(error));
  m_running = true;
}

void* OrdinaryThread::run(void* self) {
  sched_setaffinity(0, sizeof(cpu_set_t), &startingProcessors());
  static_cast<OrdinaryThread*>(self)->m_body();
  return nullptr;
}

void OrdinaryThread::join() {
  if (m_running)
    pthread_join(m_thread, nullptr);
  m_running = false;
}

} // namespace igh_bus
