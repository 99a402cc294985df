#ifndef ETHERCATOBJECT_SDO_SDOCURSOR_H
#define ETHERCATOBJECT_SDO_SDOCURSOR_H

#include <atomic>

// Which transfer the service takes next. A position is request * 2, + 1 for its write; the cursor goes round
// over the positions of a table and stays on a transfer until that is done.
class CSdoCursor {
public:
  // Moves to the next armed position, at most to the one before where it stands: that one is left to the next
  // step. False when there is none. isArmed(request, read) is asked for each position on the way.
  template <class IS_ARMED> bool findArmed(unsigned long requests, const IS_ARMED& isArmed) {
    const unsigned long stop = m_ulPosition == 0 ? 2 * requests - 1 : m_ulPosition - 1;
    if (m_bIdle.load(std::memory_order_relaxed)) { // where the walk below would end as well
      m_ulPosition = stop;
      takeForced();
      return false;
    }
    // Marked before the walk: what is armed behind the cursor meanwhile, by another thread, takes it back.
    m_bIdle.exchange(true, std::memory_order_acq_rel);
    const bool wholeRound = m_ulForced.load(std::memory_order_relaxed) == NONE;
    bool found = false;
    while (m_ulPosition != stop && !found) {
      found = isArmed(request(), isRead());
      if (!found) {
        advance(requests);
      }
    }
    if (found || !wholeRound || isArmed(stop / 2, stop % 2 == 0)) {
      m_bIdle.store(false, std::memory_order_relaxed);
    }
    return found;
  }
  unsigned long request() const { return m_ulPosition / 2; }
  bool isRead() const { return m_ulPosition % 2 == 0; }

  void advance(unsigned long requests) {
    const unsigned long forced = takeForced();
    if (forced < requests) {
      m_ulPosition = 2 * forced;
      return;
    }
    m_ulPosition = m_ulPosition + 1 >= 2 * requests ? 0 : m_ulPosition + 1;
  }
  // Takes this request at the next advance; false while another one waits for that.
  bool force(unsigned long request) {
    unsigned long none = NONE;
    return m_ulForced.compare_exchange_strong(none, request, std::memory_order_relaxed);
  }
  // To be called behind each arming: a table in which nothing is armed is not walked again.
  void wake() { m_bIdle.store(false, std::memory_order_release); }
  void reset() {
    m_ulPosition = 0;
    takeForced();
    wake();
  }

private:
  static constexpr unsigned long NONE = ~0UL;

  unsigned long takeForced() {
    const unsigned long forced = m_ulForced.load(std::memory_order_relaxed);
    if (forced != NONE) {
      m_ulForced.store(NONE, std::memory_order_relaxed);
    }
    return forced;
  }

  unsigned long m_ulPosition = 0;
  std::atomic<unsigned long> m_ulForced{NONE};
  // The cycle locks nothing, on no processor.
  static_assert(std::atomic<unsigned long>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);
  std::atomic<bool> m_bIdle{false}; // a whole round found nothing armed, and nothing was armed since
};

#endif
