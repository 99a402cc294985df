// Rows on their way from the cycle to the disk: one thread puts in, one takes out, neither waits.
#ifndef IGH_BUS_RECORD_ROW_RING_H
#define IGH_BUS_RECORD_ROW_RING_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace igh_bus {

struct RowHead {
  std::uint64_t cycle = 0;
  std::int64_t timeNs = 0; // CLOCK_MONOTONIC
  std::int64_t latencyNs = 0;
  std::uint64_t lostBefore = 0; // rows that found no place between the one before and this one
  std::uint32_t states = 0;     // of all slaves, ORed
  std::uint32_t errors = 0;     // bit n: error code n, since the row before
};

struct Row {
  RowHead* head = nullptr;
  double* values = nullptr;
};

class RowRing {
public:
  RowRing(std::size_t rows, std::size_t values) : m_heads(rows), m_values(rows * values), m_width(values) {}

  // The next place, null when all are taken; publish() hands it over.
  Row place() {
    const auto in = m_in.load(std::memory_order_relaxed);
    return in - m_out.load(std::memory_order_acquire) == m_heads.size() ? Row{} : row(in);
  }
  void publish() { m_in.store(m_in.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

  // The oldest row, null for none; release() gives its place back.
  Row oldest() {
    const auto out = m_out.load(std::memory_order_relaxed);
    return out == m_in.load(std::memory_order_acquire) ? Row{} : row(out);
  }
  void release() { m_out.store(m_out.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

private:
  Row row(std::uint64_t number) {
    const auto place = static_cast<std::size_t>(number % m_heads.size());
    return {&m_heads[place], m_values.data() + place * m_width};
  }

  std::vector<RowHead> m_heads;
  std::vector<double> m_values;
  std::size_t m_width;
  alignas(64) std::atomic<std::uint64_t> m_in{0}; // rows ever put in; a cache line of its own for each side
  alignas(64) std::atomic<std::uint64_t> m_out{0};
};

} // namespace igh_bus

#endif
