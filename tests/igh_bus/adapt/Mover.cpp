#include "Mover.h"

#include "ENIObject/ENIObject.h"
#include "EthercatDataHelper/EthercatDataHelper.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <igh_master.h>
#include <random>

namespace mover {

namespace {

namespace sim = ethercat_simulation;
using Bytes = std::vector<std::uint8_t>;
using Devices = std::vector<const maker::Device*>;

constexpr std::size_t MOST_SLAVES = 200; // the library drives 255
constexpr int ROUNDS = 12;               // a wrong bit is right by chance in one of 4096

std::size_t errorsOfLoading = 0;

bool countErrors(unsigned int level, const char*) {
  errorsOfLoading += level == 0 ? 1 : 0;
  return true;
}

std::uint64_t ones(std::size_t count) {
  return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

std::uint64_t bitsAt(const Bytes& bytes, std::size_t bit, std::size_t count) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < count && (bit + i) / 8 < bytes.size(); ++i)
    value |= static_cast<std::uint64_t>(bytes[(bit + i) / 8] >> (bit + i) % 8 & 1U) << i;
  return value;
}

double toDouble(const std::string& type, std::uint64_t bits) {
  double value = 0;
  CEthercatDataHelper::doubleFromBuffer(CEthercatDataHelper::getTypeByName(type.c_str()), &bits, false,
                                        &value, 0);
  return value;
}

std::uint64_t toBits(const std::string& type, double value) {
  std::uint64_t bits = 0;
  CEthercatDataHelper::doubleToBuffer(value, CEthercatDataHelper::getTypeByName(type.c_str()), false, &bits,
                                      0);
  return bits;
}

std::size_t bitsOf(const std::string& type) {
  return 8 * std::size_t{CEthercatDataHelper::getTypeSize(CEthercatDataHelper::getTypeByName(type.c_str()))};
}

// Neighbouring bits of a slave, and the same bits in the value of a handle.
struct Bits {
  unsigned int slave;
  bool output;
  std::size_t bit;
  std::size_t count;
  std::uint32_t handle;
  std::string type;
  unsigned int at;
  std::size_t entry; // that they are of
};

struct Entry {
  Loss loss;
  bool right = true;
};

std::string pdoText(const maker::Pdo& pdo) {
  char text[16];
  std::snprintf(text, sizeof text, "PDO 0x%04X", unsigned{pdo.index});
  return text;
}

Loss lossOf(const maker::Device& device, const maker::Place& place) {
  return {device.key, pdoText(*place.pdo) + ' ' + place.text() + ' ' + place.entry->type, place.entry->name};
}

const CSlaveENIObject* find(CMasterENIObject& store, const maker::Device& device) {
  return store.findSlaveENIObject(device.key[0], device.key[1], device.key[2]);
}

// The slave is told by the master what to assign, or has what it has.
maker::Assignment assignmentOf(const maker::Device& device, CMasterENIObject& store) {
  if (!device.assignable)
    return ownAssignment(device);
  maker::Assignment assignment;
  for (const auto* sync = find(store, device)->getSlaveSyncInfo(); sync->index != 0xFF; ++sync) {
    for (unsigned int i = 0; i < sync->n_pdos; ++i) {
      const auto pdo = std::find_if(device.pdos.begin(), device.pdos.end(), [&](const maker::Pdo& one) {
        return one.index == sync->pdos[i].index && one.output == (sync->dir == EC_DIR_OUTPUT);
      });
      pdo != device.pdos.end() ? assignment[sync->index].push_back(&*pdo)
                               : ADD_FAILURE() << device.type << " has no PDO " << sync->pdos[i].index;
    }
  }
  return assignment;
}

class Bus {
public:
  Bus(const Devices& devices, const std::vector<std::string>& files) {
    sim::reset();
    for (const auto* device : devices)
      sim::bus().addSlave(slaveOf(*device));
    igh_master_initialize(0, 1000000, false);
    for (const auto& file : files)
      igh_master_append_eni(0, file.c_str());
    igh_master_scan(0, nullptr);
    igh_master_config_all_slave(0);
  }
  ~Bus() { igh_master_uninitialize(0); }
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  void exchange(int count) {
    while (count-- > 0)
      igh_master_exchange(0, nullptr, nullptr);
  }
  void climb() {
    sim::bus().setTracing(true);
    igh_master_active(0);
    sim::bus().setTracing(false);
    exchange(60);
  }
  void add(unsigned int slave, const maker::Device& device, const maker::Place& place, const Parts& parts);
  void move(std::mt19937& random);
  void report(Outcome& outcome) const;

private:
  Bytes& bytesOf(const Bits& bits) { return m_images[{bits.slave, bits.output}]; }

  std::vector<Entry> m_entries;
  std::vector<Bits> m_bits;
  std::map<std::pair<unsigned int, bool>, Bytes> m_images; // of a slave's inputs and outputs
};

void Bus::add(unsigned int slave, const maker::Device& device, const maker::Place& place,
              const Parts& parts) {
  std::size_t left = place.entry->bits;
  bool plain = true;
  for (const auto& part : parts) {
    const auto mask = part.mask == ~std::uint64_t{0} ? ones(left) : part.mask;
    Bits bits{slave,
              place.pdo->output,
              place.bit + place.entry->bits - left,
              static_cast<std::size_t>(__builtin_popcountll(mask)),
              0,
              part.type,
              static_cast<unsigned int>(__builtin_ctzll(mask)),
              m_entries.size()};
    igh_master_create_pdo_info(0, slave, part.name.c_str(), !bits.output, &bits.handle);
    plain = plain && mask >> bits.at == ones(bits.count) && bits.count <= left;
    // What the library knows keeps its type, and with it its sign.
    if (bits.count == place.entry->bits && bits.count == bitsOf(place.entry->type) &&
        bits.count == bitsOf(part.type))
      plain = plain && part.type == place.entry->type;
    left -= std::min(left, bits.count);
    m_bits.push_back(bits);
  }
  m_entries.push_back({lossOf(device, place), plain && left == 0});
  auto& image = m_images[{slave, place.pdo->output}];
  image.resize(std::max(image.size(), (place.bit + place.entry->bits + 7) / 8));
}

void Bus::move(std::mt19937& random) {
  for (auto& [key, image] : m_images)
    std::generate(image.begin(), image.end(), [&] { return static_cast<std::uint8_t>(random()); });
  std::map<std::uint32_t, std::uint64_t> values;
  for (const auto& bits : m_bits) {
    auto& image = bytesOf(bits);
    const auto exponent = bits.bit + bits.count - 2;
    if (bits.type == "REAL" || bits.type == "LREAL") // a number, whatever else
      image[exponent / 8] &= static_cast<std::uint8_t>(~(1U << exponent % 8));
    auto& value = values[bits.handle];
    value = (value & ~(ones(bits.count) << bits.at)) | bitsAt(image, bits.bit, bits.count) << bits.at;
    if (bits.output)
      igh_master_pdo_send(0, bits.handle, toDouble(bits.type, value));
  }
  for (const auto& [key, image] : m_images)
    if (!key.second)
      sim::bus().setInputs(key.first, image);
  exchange(3);
  for (const auto& bits : m_bits) {
    double value = 0;
    if (!bits.output)
      igh_master_pdo_recv(0, bits.handle, &value);
    const auto found = bits.output ? bitsAt(sim::bus().outputs(bits.slave), bits.bit, bits.count)
                                   : toBits(bits.type, value) >> bits.at & ones(bits.count);
    auto& right = m_entries[bits.entry].right;
    right = right && found == bitsAt(bytesOf(bits), bits.bit, bits.count) &&
            value == toDouble(bits.type, toBits(bits.type, value)); // of that type's range
  }
}

void Bus::report(Outcome& outcome) const {
  for (const auto& call : sim::bus().trace())
    if (call.call == sim::Call::configDc)
      outcome.clocks.push_back(call.text);
  outcome.entries += m_entries.size();
  for (const auto& entry : m_entries)
    if (!entry.right)
      outcome.lost.push_back(entry.loss);
}

void lose(const maker::Device& device, const maker::Assignment& own, const maker::Assignment& used,
          Outcome& outcome) {
  for (const auto& place : placesOf(own)) {
    const auto has = [&](const auto& pair) {
      return std::count(pair.second.begin(), pair.second.end(), place.pdo) != 0;
    };
    if (std::none_of(used.begin(), used.end(), has)) {
      ++outcome.entries;
      outcome.lost.push_back(lossOf(device, place));
      outcome.lost.back().of = pdoText(*place.pdo);
    }
  }
}

void run(Devices devices, const std::vector<std::string>& files, CMasterENIObject& store, const Reach& reach,
         Outcome& outcome) {
  Devices up;
  {
    Bus bus(devices, files);
    bus.climb();
    for (unsigned int i = 0; i < devices.size(); ++i) {
      if (sim::bus().alState(i) == 8 && find(store, *devices[i])) {
        up.push_back(devices[i]);
        continue;
      }
      outcome.refused.push_back(devices[i]->key);
      lose(*devices[i], ownAssignment(*devices[i]), {}, outcome);
    }
  }
  Bus bus(up, files); // one that is not in OP stops the others
  for (unsigned int i = 0; i < up.size(); ++i) {
    const auto assignment = assignmentOf(*up[i], store);
    for (const auto& place : placesOf(assignment))
      bus.add(i, *up[i], place, reach(*up[i], place));
    lose(*up[i], ownAssignment(*up[i]), assignment, outcome);
  }
  bus.climb();
  std::mt19937 random(1);
  for (int round = 0; round < ROUNDS; ++round)
    bus.move(random);
  bus.report(outcome);
}

} // namespace

Outcome move(const std::vector<maker::Device>& devices, const std::vector<std::string>& files,
             const Reach& reach) {
  Outcome outcome;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  errorsOfLoading = 0;
  CMasterENIObject store(countErrors);
  for (const auto& file : files)
    store.insertENIFile(file.c_str(), false);
  outcome.errors = errorsOfLoading;
  for (std::size_t first = 0; first < devices.size(); first += MOST_SLAVES) {
    Devices some;
    for (std::size_t i = first; i < std::min(first + MOST_SLAVES, devices.size()); ++i)
      some.push_back(&devices[i]);
    run(some, files, store, reach, outcome);
  }
  testing::internal::GetCapturedStderr();
  testing::internal::GetCapturedStdout();
  return outcome;
}

} // namespace mover
