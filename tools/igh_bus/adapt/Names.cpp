#include "adapt/Names.h"

#include "text/Text.h"

#include <algorithm>
#include <cctype>
#include <unordered_map>

namespace igh_bus::adapt {
namespace {

using Counts = std::unordered_map<std::string, unsigned int>;

Counts countOf(const std::vector<std::string>& names) {
  Counts counts;
  for (const auto& name : names)
    ++counts[name];
  return counts;
}

// Changes every name of `names` that is empty or repeated by `change(i)`; those once unique are not touched.
template <typename Change>
void eachRepeated(std::vector<std::string>& names, std::vector<bool>& settled, Change change) {
  const auto counts = countOf(names);
  for (std::size_t i = 0; i < names.size(); ++i)
    settled[i] = settled[i] || (!names[i].empty() && counts.at(names[i]) == 1);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!settled[i])
      change(i);
  }
}

bool isWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || (static_cast<unsigned char>(c) & 0x80U) != 0;
}

} // namespace

std::vector<std::string> uniqueNames(const std::vector<Named>& entries) {
  std::vector<std::string> names;
  std::vector<bool> settled;
  names.reserve(entries.size());
  settled.reserve(entries.size());
  for (const auto& entry : entries) {
    names.push_back(entry.name);
    settled.push_back(entry.settled);
  }
  eachRepeated(names, settled, [&](std::size_t i) {
    if (!names[i].empty() && !entries[i].pdo.empty())
      names[i] = entries[i].pdo + " " + names[i];
  });
  eachRepeated(names, settled, [&](std::size_t i) {
    const auto object = format("0x%04X:%02X", unsigned{entries[i].index}, unsigned{entries[i].subindex});
    const auto start = names[i].empty() ? entries[i].pdo : names[i];
    names[i] = start.empty() ? object : start + " " + object;
  });
  Counts used;
  eachRepeated(names, settled, [&](std::size_t i) {
    const auto start = names[i];
    do
      names[i] = start + " #" + std::to_string(++used[start]);
    while (std::count(names.begin(), names.end(), names[i]) > 1);
  });
  return names;
}

std::string commonStart(const std::vector<std::string>& names) {
  static constexpr std::size_t SHORTEST = 3;
  if (names.empty())
    return {};
  std::size_t length = names[0].size();
  for (const auto& name : names) {
    length = std::min(length, name.size());
    length = static_cast<std::size_t>(
        std::mismatch(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(length), names[0].begin())
            .first -
        name.begin());
  }
  // Not in the middle of a word, and no number that others continue.
  const auto letter = [](char c) {
    return isWordCharacter(c) && !std::isdigit(static_cast<unsigned char>(c));
  };
  const auto cutsWord = [&](const std::string& name) {
    return length > 0 && length < name.size() && letter(name[length]) && letter(name[length - 1]);
  };
  while (std::any_of(names.begin(), names.end(), cutsWord))
    --length;
  std::string start = names[0].substr(0, length);
  const bool whole = std::all_of(names.begin(), names.end(), [&](const auto& name) { return name == start; });
  while (!start.empty() && (!isWordCharacter(start.back()) ||
                            (!whole && std::isdigit(static_cast<unsigned char>(start.back())))))
    start.pop_back();
  return start.size() < SHORTEST ? std::string() : start;
}

} // namespace igh_bus::adapt
