// Standard output goes nowhere while an object of this class lives.
#ifndef IGH_BUS_STDOUT_SILENCER_H
#define IGH_BUS_STDOUT_SILENCER_H

namespace igh_bus {

class StdoutSilencer {
public:
  explicit StdoutSilencer(bool silent = true);
  ~StdoutSilencer();
  StdoutSilencer(const StdoutSilencer&) = delete;
  StdoutSilencer& operator=(const StdoutSilencer&) = delete;

private:
  int m_kept = -1; // the real standard output meanwhile
};

} // namespace igh_bus

#endif
