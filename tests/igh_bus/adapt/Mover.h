// Runs the slaves of makers' files with description files of any kind, and moves every entry that they have.
#pragma once

#include "Maker.h"

#include <functional>

namespace mover {

// Bits of an entry of the slave, as they lie in one entry of the description; the lowest part first.
struct Part {
  std::string name;
  std::string type;
  std::uint64_t mask = ~std::uint64_t{0}; // the whole entry
};
using Parts = std::vector<Part>;
using Reach = std::function<Parts(const maker::Device&, const maker::Place&)>;

// Of an entry whose bits do not arrive where they belong.
struct Loss {
  maker::Key key;
  std::string what; // "0x1600 0x7000:01 BOOL "Output""
  std::string of;   // the name of the entry, or "PDO 0x1600" that is not assigned
};

struct Outcome {
  std::size_t entries = 0;
  std::size_t errors = 0;          // that loading reports
  std::vector<std::string> clocks; // as they are switched on
  std::vector<maker::Key> refused; // devices that do not reach OP
  std::vector<Loss> lost;
};

Outcome move(const std::vector<maker::Device>& devices, const std::vector<std::string>& files,
             const Reach& reach);

} // namespace mover
