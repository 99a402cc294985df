#include "sdo/ObjectList.h"

#include "bus/Patience.h"
#include "text/Failure.h"

namespace igh_bus {
namespace {

constexpr std::uint32_t NO_OBJECT = 0x06020000;
constexpr std::uint32_t NO_SUBINDEX = 0x06090011;
constexpr std::uint16_t DEVICE_TYPE = 0x1000;

bool isMapping(std::uint16_t index) {
  return (index >= 0x1600 && index <= 0x17FF) || (index >= 0x1A00 && index <= 0x1BFF);
}

std::uint16_t wordAt(const Bytes& bytes, std::size_t place) {
  return place + 2 > bytes.size() ? std::uint16_t{0}
                                  : static_cast<std::uint16_t>(bytes[place] | bytes[place + 1] << 8);
}

} // namespace

bool ObjectList::Asked::isMissing() const {
  return answer.abortCode == NO_OBJECT || answer.abortCode == NO_SUBINDEX;
}

ObjectList::Asked ObjectList::ask(std::uint16_t index, unsigned int subindex) const {
  Asked asked;
  asked.place.slave = m_slave;
  asked.place.index = index;
  asked.place.subindex = static_cast<std::uint8_t>(subindex);
  const Patience patience;
  asked.answer = callSlave(m_master, asked.place);
  if (asked.answer.result < 0 && asked.answer.abortCode == 0)
    throw Failure(busError, refusalText(asked.place, asked.answer, patience.seconds()));
  return asked;
}

bool ObjectList::tell(const Asked& asked, const Visit& visit) {
  if (asked.isMissing())
    return false;
  visit(asked.place, asked.answer);
  follow(asked);
  return true;
}

// What a mapping or a drive's type points at is wanted, too.
void ObjectList::follow(const Asked& asked) {
  const auto& [place, answer] = asked;
  constexpr std::uint16_t DRIVE = 402;
  constexpr std::uint16_t FIRST_OF_DRIVES = 0x603F;
  constexpr std::uint16_t LAST_OF_DRIVES = 0x60FF;
  constexpr std::uint16_t SUPPORTED_MODES = 0x6502;
  if (isMapping(place.index) && place.subindex != 0 && wordAt(answer.bytes, 2) != 0)
    m_wanted.insert(wordAt(answer.bytes, 2));
  if (place.index != DEVICE_TYPE || wordAt(answer.bytes, 0) != DRIVE)
    return;
  for (auto index = FIRST_OF_DRIVES; index <= LAST_OF_DRIVES; ++index)
    m_wanted.insert(index);
  m_wanted.insert(SUPPORTED_MODES);
}

// Sub-index 0 of an object with parts is a byte, their highest number; of another object it is all there is.
// Some slaves have parts and no sub-index 0: then up to the first gap.
void ObjectList::visitObject(std::uint16_t index, const Visit& visit) {
  constexpr unsigned int LAST = 255;
  m_asking(index);
  const auto head = ask(index, 0);
  const auto& bytes = head.answer.bytes;
  if (head.answer.abortCode == NO_OBJECT)
    return;
  std::set<std::uint8_t> left;
  if (const auto found = m_known.described().find(index); found != m_known.described().end())
    left = found->second;
  left.erase(0);
  const bool counted = tell(head, visit);
  const unsigned int highest = !counted ? LAST : bytes.size() == 1 ? bytes[0] : 0;
  for (unsigned int subindex = 1; subindex <= highest; ++subindex) {
    left.erase(static_cast<std::uint8_t>(subindex));
    if (!tell(ask(index, subindex), visit) && (!counted || subindex == 1))
      break;
  }
  for (const auto subindex : left)
    tell(ask(index, subindex), visit);
}

void ObjectList::visitRange(std::uint16_t first, std::uint16_t last, const Visit& visit) {
  for (unsigned int index = first; index <= last; ++index)
    visitObject(static_cast<std::uint16_t>(index), visit);
}

void ObjectList::visitUsual(const FoundSlave& slave, const Visit& visit) {
  for (const auto index : communicationObjects())
    m_wanted.insert(index);
  for (const auto& [index, subindexes] : m_known.described())
    m_wanted.insert(index);
  for (const auto& syncManager : m_master.syncManagers(slave)) {
    for (const auto& pdo : syncManager.pdos) {
      m_wanted.insert(pdo.index);
      for (const auto& entry : pdo.entries) {
        if (!entry.gap())
          m_wanted.insert(entry.index);
      }
    }
  }
  m_wanted.erase(0);
  for (auto next = m_wanted.begin(); next != m_wanted.end(); next = m_wanted.upper_bound(*next))
    visitObject(*next, visit);
}

} // namespace igh_bus
