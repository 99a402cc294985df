#include "slave/ProcessData.h"

#include "slave/SlaveUnit.h"

#include <algorithm>
#include <cstring>

namespace ethercat_simulation {

namespace {

void writeBits(std::vector<std::uint8_t>& bytes, std::size_t bit, std::size_t length, std::uint64_t value) {
  for (std::size_t done = 0; done < length;) {
    const std::size_t inByte = (bit + done) % 8;
    const std::size_t part = std::min(std::size_t{8} - inByte, length - done);
    const auto mask = static_cast<std::uint8_t>(((1U << part) - 1U) << inByte);
    const std::uint64_t shifted = done < 64 ? value >> done : 0;
    std::uint8_t& byte = bytes[(bit + done) / 8];
    byte = static_cast<std::uint8_t>((byte & ~mask) | (static_cast<std::uint8_t>(shifted << inByte) & mask));
    done += part;
  }
}

std::uint64_t readBits(const std::vector<std::uint8_t>& bytes, std::size_t bit, std::size_t length) {
  std::uint64_t value = 0;
  for (std::size_t done = 0; done < std::min(length, std::size_t{64}); ++done) {
    const std::size_t place = bit + done;
    value |= static_cast<std::uint64_t>(bytes[place / 8] >> place % 8 & 1U) << done;
  }
  return value;
}

} // namespace

void ProcessData::allocate(const SyncManagerPlans& plans, const std::vector<Fmmu>& fmmus) {
  // A block keeps the size of its first registration, even when the PDOs have been configured anew since.
  std::array<std::size_t, SYNC_MANAGER_COUNT> outputSize{};
  std::array<std::size_t, SYNC_MANAGER_COUNT> inputSize{};
  for (unsigned int manager = 0; manager < SYNC_MANAGER_COUNT; ++manager) {
    const SyncManagerPlan& plan = plans[manager];
    (plan.direction == EC_DIR_INPUT ? inputSize : outputSize)[manager] = plan.size();
  }
  for (const Fmmu& fmmu : fmmus) {
    std::size_t& size = (fmmu.direction == EC_DIR_INPUT ? inputSize : outputSize)[fmmu.syncManager];
    size = std::max(size, fmmu.size);
  }
  std::size_t outputs = 0;
  std::size_t inputs = 0;
  m_outputEntries.clear();
  m_inputEntries.clear();
  for (unsigned int manager = 0; manager < SYNC_MANAGER_COUNT; ++manager) {
    m_outputStart[manager] = outputs;
    m_inputStart[manager] = inputs;
    outputs += outputSize[manager];
    inputs += inputSize[manager];
    if (plans[manager].direction == EC_DIR_INPUT) {
      placeEntries(plans[manager].pdos, m_inputStart[manager], m_inputEntries);
    } else {
      placeEntries(plans[manager].pdos, m_outputStart[manager], m_outputEntries);
    }
  }
  m_outputs.assign(outputs, 0);
  m_inputs.assign(inputs, 0);
}

void ProcessData::placeEntries(const std::vector<Pdo>& pdos, std::size_t start,
                               std::vector<EntryPlace>& entries) {
  std::size_t bit = start * 8;
  for (const Pdo& pdo : pdos) {
    for (const Entry& entry : pdo.entries) {
      if (entry.index != 0) {
        entries.push_back({bit, entry, nullptr});
      }
      bit += entry.bitLength;
    }
  }
}

void ProcessData::findObjects() {
  for (std::vector<EntryPlace>* entries : {&m_outputEntries, &m_inputEntries}) {
    for (EntryPlace& place : *entries) {
      place.object = m_unit->dictionary().bytes(place.entry.index, place.entry.subindex);
    }
  }
}

void ProcessData::bind(SlaveUnit& unit) {
  if (m_unit != &unit) {
    std::fill(m_outputs.begin(), m_outputs.end(), std::uint8_t{0});
    std::fill(m_inputs.begin(), m_inputs.end(), std::uint8_t{0});
    m_frames = 0;
  }
  m_unit = &unit;
  m_freshOutputs = false;
  if (unit.hasDrive()) {
    findObjects();
  }
}

void ProcessData::produceInputs(std::uint64_t frame) {
  if (m_lastFrame == frame) {
    return;
  }
  m_lastFrame = frame;
  ++m_frames;
  const std::vector<std::uint8_t>& pinned = m_unit->pins().bytes;
  if (m_inputs.empty()) {
    return;
  }
  if (!pinned.empty()) {
    std::memcpy(m_inputs.data(), pinned.data(), std::min(pinned.size(), m_inputs.size()));
  } else if (m_unit->identity().model == SlaveModel::counter) {
    for (const EntryPlace& entry : m_inputEntries) {
      writeBits(m_inputs, entry.bit, entry.entry.bitLength, m_frames);
    }
  } else if (m_unit->hasDrive()) {
    produceObjects();
  } else if (!m_outputs.empty()) {
    std::memcpy(m_inputs.data(), m_outputs.data(), std::min(m_inputs.size(), m_outputs.size()));
  }
  placePinned();
}

void ProcessData::placePinned() {
  for (const PinnedEntry& pinned : m_unit->pins().entries) {
    for (const EntryPlace& place : m_inputEntries) {
      if (place.entry.index == pinned.index && place.entry.subindex == pinned.subindex) {
        writeBits(m_inputs, place.bit, place.entry.bitLength, pinned.value);
      }
    }
  }
}

bool ProcessData::outputValue(std::uint16_t index, std::uint8_t subindex, std::uint64_t& value) const {
  const auto found =
      std::find_if(m_outputEntries.begin(), m_outputEntries.end(), [&](const EntryPlace& place) {
        return place.entry.index == index && place.entry.subindex == subindex;
      });
  if (found == m_outputEntries.end()) {
    return false;
  }
  value = readBits(m_outputs, found->bit, found->entry.bitLength);
  return true;
}

void ProcessData::produceObjects() {
  for (const EntryPlace& place : m_inputEntries) {
    std::uint64_t value = 0;
    if (place.object != nullptr) {
      std::memcpy(&value, place.object->data(), std::min(sizeof value, place.object->size()));
    }
    writeBits(m_inputs, place.bit, place.entry.bitLength, value);
  }
}

bool ProcessData::takeObjects(const SlaveUnit& unit) {
  if (m_unit != &unit || !m_freshOutputs) {
    return false;
  }
  m_freshOutputs = false;
  for (const EntryPlace& place : m_outputEntries) {
    if (place.object != nullptr) {
      const std::uint64_t value = readBits(m_outputs, place.bit, place.entry.bitLength);
      std::memcpy(place.object->data(), &value, std::min(sizeof value, place.object->size()));
    }
  }
  return true;
}

std::uint8_t* ProcessData::at(const Fmmu& fmmu) {
  return fmmu.direction == EC_DIR_INPUT ? m_inputs.data() + m_inputStart[fmmu.syncManager]
                                        : m_outputs.data() + m_outputStart[fmmu.syncManager];
}

} // namespace ethercat_simulation
