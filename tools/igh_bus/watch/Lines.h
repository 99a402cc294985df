// What igh_bus watch shows, as lines of text.
#ifndef IGH_BUS_WATCH_LINES_H
#define IGH_BUS_WATCH_LINES_H

#include "run/LiveValues.h"
#include "run/Lookout.h"
#include "sdo/SdoValue.h"

#include <string>
#include <vector>

namespace igh_bus {

enum class Style { plain, title, bad, heading };

struct Line {
  std::string text;
  Style style = Style::plain;
};

struct Page {
  std::vector<Line> top;    // stays where it is
  std::vector<Line> scroll; // the list under it, with the heading of each of its parts
};

class Lines {
public:
  // All of them must outlive it.
  Lines(const RunOptions& options, const std::vector<FoundSlave>& slaves, const std::string& realTime);

  Page page(const LivePicture& picture, const std::vector<SlaveSight>& sights, bool errorsFirst) const;
  static Page help();

private:
  std::vector<Line> top(const LivePicture& picture) const;
  Line slave(std::size_t slave, std::uint64_t errors, const SlaveSight& sight) const;

  const RunOptions& m_options;
  const std::vector<FoundSlave>& m_slaves;
  const std::string& m_realTime; // why it is none, empty when it is
  bool m_processData;
  std::vector<const SdoType*> m_types; // of the watched entries
};

} // namespace igh_bus

#endif
