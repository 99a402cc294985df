#include "record/Recorder.h"

#include "text/Text.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstring>
#include <thread>
#include <utility>

namespace igh_bus {

std::string RecordResult::text() const {
  auto words = format("Recorded: %s, %" PRIu64 " row%s", path.c_str(), rows, rows == 1 ? "" : "s");
  if (!failure.empty())
    words += ", then writing failed: " + failure;
  if (lost != 0)
    words += format("; %" PRIu64 " lost%s", lost, failure.empty() ? ", because the file was too slow" : "");
  return words;
}

std::string RecordResult::complaint() const {
  return failure.empty() ? "" : path + " is not complete: " + failure;
}

Recorder::Recorder(const RecordPlan& plan, const std::vector<std::string>& names, std::size_t rows)
    : m_plan(plan), m_file(plan.path, names), m_ring(rows, names.size()), m_late(names.size()),
      m_writer([this] { write(); }) {}

void Recorder::note(const RowHead& head, const double* values) {
  m_errors |= head.errors;
  if (head.cycle % m_plan.every != 0)
    return;
  ++m_noted;
  Row row = m_ring.place();
  const bool late = !row.head;
  if (late)
    row = {&m_lateHead, m_late.data()};
  *row.head = head;
  row.head->errors = m_errors;
  row.head->lostBefore = m_missing;
  std::copy_n(values, m_late.size(), row.values);
  if (late) {
    ++m_missing;
    return;
  }
  m_ring.publish();
  m_errors = 0;
  m_missing = 0;
}

// It looks by itself: waking it would be a system call of the cycle.
void Recorder::write() {
  while (!m_end.load(std::memory_order_acquire)) {
    drain();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  drain();
}

void Recorder::drain() {
  for (Row row; row = m_ring.oldest(), row.head;) {
    m_file.add(row);
    m_ring.release();
  }
  m_file.flush();
}

RecordResult Recorder::finish() {
  m_end.store(true, std::memory_order_release);
  m_writer.join();
  if (std::exchange(m_missing, 0) != 0)
    m_file.add({&m_lateHead, m_late.data()});
  m_file.close();
  return {m_plan.path, m_plan.every, m_file.rows(), m_noted - m_file.rows(),
          m_file.error() == 0 ? "" : std::strerror(m_file.error())};
}

std::size_t rowsBetween(double rowsPerSecond, std::size_t values) {
  constexpr std::size_t FEWEST = 1024;
  constexpr std::size_t BYTES = 64U << 20U;
  const auto wanted = std::max(static_cast<std::size_t>(10 * rowsPerSecond), FEWEST);
  return std::min(wanted, std::max(BYTES / (sizeof(RowHead) + values * sizeof(double)), FEWEST));
}

} // namespace igh_bus
