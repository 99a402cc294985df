// The objects of a slave, found by asking for one after the other: the IgH master's interface hands out no
// list.
#ifndef IGH_BUS_OBJECT_LIST_H
#define IGH_BUS_OBJECT_LIST_H

#include "sdo/KnownObjects.h"
#include "sdo/SdoTransfer.h"

#include <functional>

namespace igh_bus {

class ObjectList {
public:
  // Is told of every sub-index that the slave has, in order; `answer` may be an abort, of one that cannot be
  // read.
  using Visit = std::function<void(const SdoTransfer& place, const SdoAnswer& answer)>;

  // Is told of every object before it is asked for: a wide range takes minutes.
  using Asking = std::function<void(std::uint16_t index)>;

  ObjectList(const OpenedMaster& master, std::uint16_t slave, const KnownObjects& known, Asking asking)
      : m_master(master), m_slave(slave), m_known(known), m_asking(std::move(asking)) {}

  // The usual ones: those of communication, of the description and of the slave's PDOs; of a drive those of
  // its profile. All throw Failure when the slave answers no more.
  void visitUsual(const FoundSlave& slave, const Visit& visit);
  void visitRange(std::uint16_t first, std::uint16_t last, const Visit& visit);

private:
  struct Asked {
    SdoTransfer place;
    SdoAnswer answer;
    bool isMissing() const;
  };
  void visitObject(std::uint16_t index, const Visit& visit);
  Asked ask(std::uint16_t index, unsigned int subindex) const;
  bool tell(const Asked& asked, const Visit& visit); // false when there is none
  void follow(const Asked& asked);

  const OpenedMaster& m_master;
  std::uint16_t m_slave;
  const KnownObjects& m_known;
  Asking m_asking;
  std::set<std::uint16_t> m_wanted;
};

} // namespace igh_bus

#endif
