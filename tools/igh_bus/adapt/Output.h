// Files that are written whole or not at all.
#ifndef IGH_BUS_ADAPT_OUTPUT_H
#define IGH_BUS_ADAPT_OUTPUT_H

#include <string>
#include <vector>

namespace igh_bus::adapt {

// Throws Failure(usageError) when `path` is one of the inputs, by whatever name, or no place for a file.
void checkOutput(const std::string& path, const std::vector<std::string>& inputs);

// A new file beside the one that it is to become.
class Output {
public:
  explicit Output(const std::string& path); // throws Failure(usageError)
  ~Output();                                // removes what did not become the file
  Output(Output&& other) noexcept;
  Output& operator=(Output&&) = delete;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  const std::string& path() const { return m_path; }     // as it will be called
  const std::string& beside() const { return m_beside; } // as it is called now
  void write(const std::string& text);                   // throws Failure(usageError)
  void publish();                                        // throws Failure(usageError)

private:
  std::string m_path;
  std::string m_beside; // empty when there is none any more
};

} // namespace igh_bus::adapt

#endif
