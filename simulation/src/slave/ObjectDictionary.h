// The objects of one slave, as its mailbox gives and takes them.
#ifndef ETHERCAT_SIMULATION_OBJECT_DICTIONARY_H
#define ETHERCAT_SIMULATION_OBJECT_DICTIONARY_H

#include "base/Interface.h"

#include <ethercat_simulation/Fault.h>
#include <ethercat_simulation/Slave.h>

namespace ethercat_simulation {

// What a transfer is about.
struct SdoPlace {
  std::uint16_t index;
  std::uint8_t subindex; // 0 for complete access
  bool complete;
  std::string text() const; // "0x6040:00", "0x6040:complete"
};

// Why a slave refuses a transfer, as it says it in the abort.
enum class SdoAbort : std::uint32_t {
  none = 0,
  readOnly = 0x06010002,
  noObject = 0x06020000,
  length = 0x06070010,
  noSubindex = 0x06090011,
  general = 0x08000000,
};

class ObjectDictionary {
public:
  explicit ObjectDictionary(const std::vector<Object>& objects);

  // Null when there is no such object. The place of the bytes stays, whatever becomes of them.
  const std::vector<std::uint8_t>* value(std::uint16_t index, std::uint8_t subindex) const;
  std::vector<std::uint8_t>* bytes(std::uint16_t index, std::uint8_t subindex);
  bool has(std::uint16_t index, std::uint8_t subindex) const { return find(index, subindex) != nullptr; }
  // Every value as it was given to the constructor, which must have been these objects.
  void restore(const std::vector<Object>& objects);
  bool setValue(std::uint16_t index, std::uint8_t subindex, const std::vector<std::uint8_t>& bytes);
  bool setFault(std::uint16_t index, std::uint8_t subindex, SdoFault fault);
  SdoFault fault(const SdoPlace& place) const;

  // Up to `capacity` bytes go to `answer`; *length is what the slave has to say.
  SdoAbort upload(const SdoPlace& place, std::uint8_t* answer, std::size_t capacity,
                  std::size_t* length) const;
  SdoAbort download(const SdoPlace& place, const std::uint8_t* data, std::size_t size);

private:
  struct Item {
    Object object;
    SdoFault fault = SdoFault::none;
    // Bytes in a transfer of the whole object.
    std::size_t span() const {
      return object.subindex == 0 && object.bytes.size() == 1 ? 2 : object.bytes.size();
    }
  };

  std::size_t firstAt(std::uint16_t index, std::uint8_t subindex) const;
  const Item* find(std::uint16_t index, std::uint8_t subindex) const;
  Item* find(std::uint16_t index, std::uint8_t subindex);
  // Of a place that is not there.
  SdoAbort missing(const SdoPlace& place) const;
  SdoAbort refusal(const SdoPlace& place, std::size_t first, std::size_t size) const;

  std::vector<Item> m_items; // by index and subindex
};

} // namespace ethercat_simulation

#endif
