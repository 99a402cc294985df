#include "adapt/Types.h"

#include "adapt/Document.h"
#include "adapt/Numbers.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace igh_bus::adapt {
namespace {

std::string upperWithoutBlanks(const std::string& text) {
  std::string upper;
  for (const char c : text) {
    if (!std::isspace(static_cast<unsigned char>(c)))
      upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return upper;
}

bool onlyDigits(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

// "INT24", "UNSIGNED8", "BITARR16", "BIT3": a word and a width.
std::optional<Nature::Kind> kindOfWord(const std::string& name) {
  static constexpr std::pair<const char*, Nature::Kind> WORDS[] = {
      {"BOOL", Nature::BITS},          {"BOOLEAN", Nature::BITS},
      {"BIT", Nature::BITS},           {"BITARR", Nature::UNSIGNED},
      {"SINT", Nature::SIGNED},        {"INT", Nature::SIGNED},
      {"DINT", Nature::SIGNED},        {"LINT", Nature::SIGNED},
      {"INTEGER", Nature::SIGNED},     {"USINT", Nature::UNSIGNED},
      {"UINT", Nature::UNSIGNED},      {"UDINT", Nature::UNSIGNED},
      {"ULINT", Nature::UNSIGNED},     {"UNSIGNED", Nature::UNSIGNED},
      {"BYTE", Nature::UNSIGNED},      {"WORD", Nature::UNSIGNED},
      {"DWORD", Nature::UNSIGNED},     {"LWORD", Nature::UNSIGNED},
      {"REAL", Nature::REAL},          {"LREAL", Nature::REAL},
      {"FLOAT", Nature::REAL},         {"DOUBLE", Nature::REAL},
      {"TIME", Nature::UNSIGNED},      {"TOD", Nature::UNSIGNED},
      {"DATE", Nature::UNSIGNED},      {"GUID", Nature::BYTES},
      {"TIME_OF_DAY", Nature::BYTES},  {"TIME_DIFFERENCE", Nature::BYTES},
      {"DATE_AND_TIME", Nature::BYTES}};
  for (const auto& [word, kind] : WORDS) {
    if (name.compare(0, std::char_traits<char>::length(word), word) == 0 &&
        onlyDigits(name.substr(std::char_traits<char>::length(word))))
      return kind;
  }
  for (const char* text : {"STRING", "OCTET_STRING", "VISIBLE_STRING", "UNICODE_STRING"}) {
    if (name.compare(0, std::char_traits<char>::length(text), text) == 0)
      return Nature::BYTES;
  }
  return std::nullopt;
}

unsigned int bitsOfWord(const std::string& name) {
  static constexpr std::pair<const char*, unsigned int> WORDS[] = {
      {"SINT", 8},  {"USINT", 8}, {"BYTE", 8},   {"INT", 16},   {"UINT", 16},
      {"WORD", 16}, {"DINT", 32}, {"UDINT", 32}, {"DWORD", 32}, {"REAL", 32}};
  for (const auto& [word, bits] : WORDS) {
    if (name == word)
      return bits;
  }
  const auto digits = name.find_first_of("0123456789");
  return digits == std::string::npos ? 0 : plainNumber(name.substr(digits)).value_or(0);
}

// "ARRAY[0..15]OFBYTE"
std::optional<std::pair<unsigned int, std::string>> arrayOf(const std::string& name) {
  const auto bound = name.find('[');
  const auto of = name.find("]OF");
  if (name.compare(0, 5, "ARRAY") != 0 || bound == std::string::npos || of == std::string::npos)
    return std::nullopt;
  return std::pair(plainNumber(name.substr(bound + 1, name.find("..", bound) - bound - 1)).value_or(0),
                   name.substr(of + 3));
}

} // namespace

void TypeTable::add(const _XmlNode* node) {
  if (node)
    m_nodes.push_back(node);
}

void TypeTable::read() const {
  for (; m_read < m_nodes.size(); ++m_read) {
    for (const auto* profile : xml_file_children(m_nodes[m_read], "Profile")) {
      for (const auto* dictionary : xml_file_children(profile, "Dictionary")) {
        for (const auto* type : xml_file_children(firstChild(dictionary, "DataTypes"), "DataType"))
          m_aliases.try_emplace(upperWithoutBlanks(childText(type, "Name")),
                                Alias{upperWithoutBlanks(childText(type, "BaseType")),
                                      firstChild(type, "EnumInfo") != nullptr});
      }
    }
  }
}

Nature TypeTable::natureOf(const std::string& type) const {
  static constexpr int DEEPEST = 8; // of aliases of aliases
  std::string name = upperWithoutBlanks(type);
  for (int depth = 0; depth < DEEPEST; ++depth) {
    if (const auto kind = kindOfWord(name))
      return {*kind, true};
    if (const auto array = arrayOf(name)) {
      const auto element = natureOf(array->second);
      return {element.kind, element.known, bitsOfWord(array->second), array->first};
    }
    read();
    const auto alias = m_aliases.find(name);
    if (alias == m_aliases.end())
      return {};
    if (alias->second.base.empty())
      return {Nature::UNSIGNED, alias->second.enumeration};
    name = alias->second.base;
  }
  return {};
}

std::string libraryType(Nature::Kind kind, unsigned int bits) {
  const bool isSigned = kind == Nature::SIGNED;
  switch (bits) {
  case 8:
    return isSigned ? "SINT" : "USINT";
  case 16:
    return isSigned ? "INT" : "UINT";
  case 32:
    return kind == Nature::REAL ? "REAL" : isSigned ? "DINT" : "UDINT";
  case 64:
    return kind == Nature::REAL ? "LREAL" : "";
  default:
    return "";
  }
}

} // namespace igh_bus::adapt
