// Numbers as makers write them, and as the library reads them.
#ifndef IGH_BUS_ADAPT_NUMBERS_H
#define IGH_BUS_ADAPT_NUMBERS_H

#include "adapt/Changes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace igh_bus::adapt {

// What the text means: "#x1A", "0x1A", "#X1A", "#x0x1A" and "26" are 26, "0026" too, "-1" is 0xFFFFFFFF.
// Nothing when it is no number.
std::optional<std::uint32_t> plainNumber(const std::string& text);

// Reads numbers of one place and keeps those that the library would take for something else.
class NumberReader {
public:
  explicit NumberReader(Changes& changes) : m_changes(changes) {}
  // 0, and told, when the text is no number; 0 for an empty one.
  std::uint32_t read(const std::string& text, const std::string& where);

private:
  Changes& m_changes;
};

} // namespace igh_bus::adapt

#endif
