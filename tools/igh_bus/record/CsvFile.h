#ifndef IGH_BUS_RECORD_CSV_FILE_H
#define IGH_BUS_RECORD_CSV_FILE_H

#include "record/RowRing.h"

#include <array>
#include <string>

namespace igh_bus {

// A table on the disk, one line a row. Once it is open nothing allocates, and a failed write is kept for the
// end: the file then ends with the last row that is whole.
class CsvFile {
public:
  // Writes the head line. Throws Failure(usageError). `values` are the names of the columns behind the fixed
  // ones.
  CsvFile(const std::string& path, const std::vector<std::string>& values);
  ~CsvFile() { close(); }
  CsvFile(const CsvFile&) = delete;
  CsvFile& operator=(const CsvFile&) = delete;

  void add(const Row& row);
  void flush();
  void close();

  std::uint64_t rows() const { return m_rows; } // that the system has taken
  int error() const { return m_error; }         // errno of the write that failed, 0 for none

private:
  template <typename Number> void number(Number value);
  void text(const std::string& text);
  void fail(int error);

  int m_file;
  int m_error = 0;
  std::int64_t m_firstNs = -1;          // CLOCK_MONOTONIC of the first row
  std::int64_t m_sinceEpochNs;          // what is added to CLOCK_MONOTONIC for the time of day
  std::array<std::string, 16> m_states; // by the AL states, ORed
  std::array<std::string, 64> m_errors; // by the error codes but the working counter's, as bits
  std::size_t m_values;
  std::vector<char> m_buffer;
  std::size_t m_used = 0;
  std::uint64_t m_bytes = 0; // of whole rows, that the system has taken
  std::uint64_t m_rows = 0;
  std::uint64_t m_buffered = 0; // rows
};

} // namespace igh_bus

#endif
