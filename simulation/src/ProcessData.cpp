// The slave's side of the process data: the bytes behind its sync managers and the models that fill them.
#include "SlaveConfiguration.h"

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

} // namespace

void SlaveConfiguration::allocateProcessData() {
  // A block keeps the size of its first registration, even when the PDOs have been configured anew since.
  std::array<std::size_t, syncManagerCount> outputSize{};
  std::array<std::size_t, syncManagerCount> inputSize{};
  for (unsigned int manager = 0; manager < syncManagerCount; ++manager) {
    const SyncManagerPlan& plan = m_plans[manager];
    (plan.direction == EC_DIR_INPUT ? inputSize : outputSize)[manager] = plan.size();
  }
  for (const Fmmu& fmmu : m_fmmus) {
    std::size_t& size = (fmmu.direction == EC_DIR_INPUT ? inputSize : outputSize)[fmmu.syncManager];
    size = std::max(size, fmmu.size);
  }
  std::size_t outputs = 0;
  std::size_t inputs = 0;
  m_inputEntries.clear();
  for (unsigned int manager = 0; manager < syncManagerCount; ++manager) {
    m_outputStart[manager] = outputs;
    m_inputStart[manager] = inputs;
    outputs += outputSize[manager];
    inputs += inputSize[manager];
    if (m_plans[manager].direction != EC_DIR_INPUT) {
      continue;
    }
    std::size_t bit = m_inputStart[manager] * 8;
    for (const Pdo& pdo : m_plans[manager].pdos) {
      for (const Entry& entry : pdo.entries) {
        if (entry.index != 0) {
          m_inputEntries.push_back({bit, entry.bitLength});
        }
        bit += entry.bitLength;
      }
    }
  }
  m_outputs.assign(outputs, 0);
  m_inputs.assign(inputs, 0);
}

void SlaveConfiguration::bindProcessData(SlaveUnit* unit) {
  if (m_answering != unit) {
    std::fill(m_outputs.begin(), m_outputs.end(), std::uint8_t{0});
    std::fill(m_inputs.begin(), m_inputs.end(), std::uint8_t{0});
    m_frames = 0;
  }
  m_answering = unit;
}

void SlaveConfiguration::produceInputs(std::uint64_t frame) {
  if (m_lastFrame == frame) {
    return;
  }
  m_lastFrame = frame;
  ++m_frames;
  const std::vector<std::uint8_t>& pinned = m_answering->pinnedInputs();
  if (m_inputs.empty()) {
    return;
  }
  if (!pinned.empty()) {
    std::memcpy(m_inputs.data(), pinned.data(), std::min(pinned.size(), m_inputs.size()));
  } else if (m_answering->identity().model == SlaveModel::counter) {
    for (const EntryPlace& entry : m_inputEntries) {
      writeBits(m_inputs, entry.bit, entry.length, m_frames);
    }
  } else if (!m_outputs.empty()) {
    std::memcpy(m_inputs.data(), m_outputs.data(), std::min(m_inputs.size(), m_outputs.size()));
  }
}

std::uint8_t* SlaveConfiguration::processData(const Fmmu& fmmu) {
  return fmmu.direction == EC_DIR_INPUT ? m_inputs.data() + m_inputStart[fmmu.syncManager]
                                        : m_outputs.data() + m_outputStart[fmmu.syncManager];
}

} // namespace ethercat_simulation
