// The slaves that makers' files describe, read without anything that adapts them: the other side of the
// proof.
#pragma once

#include <array>
#include <ethercat_simulation/Simulation.h>
#include <map>
#include <string>
#include <vector>

namespace maker {

struct Entry {
  std::uint16_t index = 0; // 0 is a gap
  std::uint8_t subindex = 0;
  unsigned int bits = 0;
  std::string name;
  std::string type;
};

struct Pdo {
  std::uint16_t index = 0;
  bool output = false;
  int manager = -1; // none
  bool fixed = false;
  bool mandatory = false;
  std::vector<std::uint16_t> excludes;
  std::vector<Entry> entries;
};

using Key = std::array<std::uint32_t, 3>;                  // vendor, product, revision
using Modules = std::map<Key, std::vector<std::uint32_t>>; // plugged, by slot; 0 for an empty one

struct Device {
  Key key{};
  std::string type;
  bool hasCoe = false;
  bool assignable = false;
  bool mappable = false;
  bool modular = false;
  bool clocked = false;                   // has a mode that switches a clock on
  std::array<unsigned int, 2> managers{}; // for inputs and outputs that are given none
  std::vector<Pdo> pdos;
  unsigned int managerOf(const Pdo& pdo) const;
};

// All of them, the hidden ones too; of equal ones the first. Devices without an entry have the first module
// of each slot.
std::vector<Device> devicesOf(const std::vector<std::string>& files, const Modules& modules = {});

// What the slave assigns to each sync manager by itself: of PDOs that exclude each other the mandatory one or
// the first.
using Assignment = std::map<unsigned int, std::vector<const Pdo*>>;
Assignment ownAssignment(const Device& device);

ethercat_simulation::Slave slaveOf(const Device& device);

// An entry that the slave moves, at its bit among all its outputs or inputs.
struct Place {
  const Entry* entry;
  const Pdo* pdo;
  std::size_t bit;
  std::string text() const; // "0x7000:01"
};
std::vector<Place> placesOf(const Assignment& assignment);

} // namespace maker
