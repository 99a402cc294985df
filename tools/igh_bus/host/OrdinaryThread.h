// A thread beside the cycle, which it must not disturb.
#ifndef IGH_BUS_ORDINARY_THREAD_H
#define IGH_BUS_ORDINARY_THREAD_H

#include <functional>
#include <pthread.h>

namespace igh_bus {

// Whatever the thread that starts it has become: ordinary scheduling, the processors that the program was
// started on, every signal blocked. Throws Failure(usageError) when there can be no further thread.
class OrdinaryThread {
public:
  explicit OrdinaryThread(std::function<void()> body); // which throws nothing
  ~OrdinaryThread() { join(); }
  OrdinaryThread(const OrdinaryThread&) = delete;
  OrdinaryThread& operator=(const OrdinaryThread&) = delete;
  void join();

private:
  static void* run(void* self);

  std::function<void()> m_body;
  pthread_t m_thread{};
  bool m_running = false;
};

// To be called before the program binds its thread to a processor: a thread inherits that.
void rememberProcessors();

} // namespace igh_bus

#endif
