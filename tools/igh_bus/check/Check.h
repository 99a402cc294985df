// All steps in their order, as far as each still makes sense.
#ifndef IGH_BUS_CHECK_CHECK_H
#define IGH_BUS_CHECK_CHECK_H

#include "check/Steps.h"

namespace igh_bus::check {

class Check {
public:
  // `tell` is called with each line as soon as it is there.
  Check(const CheckedBus& bus, std::function<void(const Line&)> tell)
      : m_bus(bus), m_processData(hasProcessData(bus.slaves)), m_tell(std::move(tell)) {}

  const std::vector<Line>& run();

private:
  // Without a reason to skip it, the step is done. Gives back whether it passed.
  bool add(const char* step, const std::string& promised, const std::string& skip,
           const std::function<void(Line&)>& work);
  // Activates, and adds the line of the climb; an empty bench when OP was not reached.
  std::unique_ptr<Bench> climb(const std::string& step, const BenchMode& mode,
                               const std::function<void()>& prepare = nullptr);
  void normalMode();
  void exchangeMode();
  void following();
  void linePull();

  std::string noProcessData() const;
  std::string noClocks() const;

  const CheckedBus& m_bus;
  bool m_processData;
  std::function<void(const Line&)> m_tell;
  std::string m_whyNot; // a bus that was not in OP once is not asked again
  std::vector<Line> m_lines;
};

} // namespace igh_bus::check

#endif
