#include "host/ProcessorList.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <sstream>

namespace igh_bus {
namespace {

constexpr unsigned int MOST = 8192; // that a kernel can be built for

std::optional<unsigned int> parseProcessor(const std::string& text, unsigned int last) {
  if (text == "N")
    return last;
  unsigned int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number >= MOST)
    return std::nullopt;
  return number;
}

} // namespace

std::optional<ProcessorList> parseProcessors(const std::string& text, unsigned int last) {
  ProcessorList list;
  std::istringstream words(text);
  for (std::string word; std::getline(words, word, ',');) {
    if (word == "all")
      word = "0-N";
    const auto dash = word.find('-');
    const auto from = parseProcessor(word.substr(0, dash), last);
    const auto to = dash == std::string::npos ? from : parseProcessor(word.substr(dash + 1), last);
    if (!from || !to)
      return std::nullopt;
    for (auto number = *from; number <= *to; ++number)
      list.insert(number);
  }
  return list;
}

std::string processorsText(const ProcessorList& list) {
  std::string text;
  for (auto at = list.begin(); at != list.end();) {
    const auto first = *at;
    auto last = first;
    while (++at != list.end() && *at == last + 1)
      last = *at;
    text += (text.empty() ? "" : ",") + std::to_string(first);
    if (last != first)
      text += "-" + std::to_string(last);
  }
  return text.empty() ? "none" : text;
}

ProcessorList without(const ProcessorList& wanted, const ProcessorList& list) {
  ProcessorList rest;
  std::set_difference(wanted.begin(), wanted.end(), list.begin(), list.end(),
                      std::inserter(rest, rest.end()));
  return rest;
}

} // namespace igh_bus
