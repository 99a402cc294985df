// The watched entries of each cycle, on their way to a file.
#ifndef IGH_BUS_RECORD_RECORDER_H
#define IGH_BUS_RECORD_RECORDER_H

#include "host/OrdinaryThread.h"
#include "record/CsvFile.h"

#include <memory>

namespace igh_bus {

struct RecordPlan {
  std::string path; // empty: nothing is recorded
  std::uint64_t every = 1;
};

struct RecordResult {
  std::string path;
  std::uint64_t every = 1;
  std::uint64_t rows = 0;        // in the file
  std::uint64_t lost = 0;        // that are not, whatever the reason
  std::string failure;           // of a write; empty for none
  std::string text() const;      // in words, one line
  std::string complaint() const; // of the failure, empty without one
};

class Recorder {
public:
  // Opens the file and starts its thread. `rows` are kept between cycle and disk. Throws
  // Failure(usageError).
  Recorder(const RecordPlan& plan, const std::vector<std::string>& names, std::size_t rows);
  ~Recorder() { finish(); }
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // In the cycle: neither allocates nor waits, and calls nothing of the system. Errors of cycles without a
  // row go into the next one.
  void note(const RowHead& head, const double* values);

  // Waits until everything is in the file. The last row is, also when there was no place for it.
  RecordResult finish();

private:
  void write();
  void drain();

  RecordPlan m_plan;
  CsvFile m_file;
  RowRing m_ring;
  RowHead m_lateHead; // the last row that found no place
  std::vector<double> m_late;
  std::uint32_t m_errors = 0; // since the last row
  std::uint64_t m_missing = 0;
  std::uint64_t m_noted = 0;
  std::atomic<bool> m_end{false};
  OrdinaryThread m_writer; // last: it uses all others
};

// Rows for ten seconds, within bounds of number and memory.
std::size_t rowsBetween(double rowsPerSecond, std::size_t values);

} // namespace igh_bus

#endif
