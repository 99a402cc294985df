// A file without a name, in memory, that goes with this object.
#ifndef IGH_BUS_ADAPT_SCRATCHFILE_H
#define IGH_BUS_ADAPT_SCRATCHFILE_H

#include <string>

namespace igh_bus::adapt {

class ScratchFile {
public:
  ScratchFile(); // throws Failure when there is no memory for it
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  std::string path() const; // under which it can be opened by this process

private:
  int m_file;
};

} // namespace igh_bus::adapt

#endif
