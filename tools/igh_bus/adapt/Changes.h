// What adapting changed, and what it could only tell.
#ifndef IGH_BUS_ADAPT_CHANGES_H
#define IGH_BUS_ADAPT_CHANGES_H

#include <string>
#include <vector>

namespace igh_bus::adapt {

struct Change {
  std::string what; // "name", "type", "bits", "pdo" ...
  std::string where;
  std::string from;
  std::string to; // equal to `from` when nothing is changed but something has to be known
  std::string why;
};

using Changes = std::vector<Change>;

} // namespace igh_bus::adapt

#endif
