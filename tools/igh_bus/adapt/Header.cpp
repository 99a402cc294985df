#include "adapt/Header.h"

#include "adapt/Telling.h"
#include "text/Text.h"

#include <cctype>
#include <filesystem>
#include <set>

namespace igh_bus::adapt {
namespace {

// Capitals, digits and single underscores, none at the ends.
std::string identifierOf(const std::string& text) {
  std::string identifier;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80U && std::isalnum(byte))
      identifier += static_cast<char>(std::toupper(byte));
    else if (!identifier.empty() && identifier.back() != '_')
      identifier += '_';
  }
  if (!identifier.empty() && identifier.back() == '_')
    identifier.pop_back();
  return identifier;
}

// No byte of it means anything to a compiler but itself.
std::string literal(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = byte >= 0x20U && byte < 0x7FU && c != '"' && c != '\\' && c != '?';
    quoted += plain ? std::string(1, c) : format("\\%03o", unsigned{byte});
  }
  return quoted + '"';
}

// Cannot end the comment that it stands in.
std::string comment(std::string text) {
  for (char& c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20U || byte >= 0x7FU || c == '*' || c == '/' || c == '\\' || c == '?')
      c = '.';
  }
  return text;
}

class Header {
public:
  std::string text; // NOLINT(misc-non-private-member-variables-in-classes)

  void addPlan(const Plan& plan, const std::string& prefix, const std::string& position) {
    text += "\n/* " + comment(plan.name()) + (position.empty() ? "" : ", slave " + position) + " */\n";
    if (!position.empty())
      define(unique(prefix + "_POSITION"), position);
    define(unique(prefix + "_VENDOR_ID"), format("0x%08XU", plan.key.vendorId));
    define(unique(prefix + "_PRODUCT_CODE"), format("0x%08XU", plan.key.productCode));
    define(unique(prefix + "_REVISION"), format("0x%08XU", plan.key.revision));
    for (std::size_t sm = 0; sm < plan.target.size(); ++sm) {
      for (const auto& pdo : plan.target[sm].pdos) {
        for (const auto& entry : pdo.entries) {
          if (!entry.gap() && !isFragment(entry))
            addEntry(plan.layout[sm], entry, prefix);
        }
      }
    }
  }

private:
  void define(const std::string& name, const std::string& value) {
    text += "#define " + name;
    text += " " + value + "\n";
  }

  std::string unique(const std::string& wanted) {
    auto name = wanted;
    for (int number = 2; !m_taken.insert(name).second; ++number)
      name = wanted + "_" + std::to_string(number);
    return name;
  }

  void addEntry(const SmLayout& layout, const TargetEntry& entry, const std::string& prefix) {
    const auto words = identifierOf(entry.name);
    const auto name = unique(prefix + "_" + (words.empty() ? "ENTRY" : words));
    define(name, literal(entry.name));
    define(unique(name + "_TYPE"), literal(entry.type));
    define(unique(name + "_IS_OUTPUT"), layout.output ? "1" : "0");
    if (isItself(layout, entry))
      return;
    for (const auto& piece : entry.pieces) {
      const auto bits = entry.window != 0 ? entry.window : entry.bits;
      if (piece.count == bits)
        continue;
      const auto bit = identifierOf(layout.items[piece.item].name);
      const auto mask = prefix + "_" + (bit.empty() ? "BIT" : bit);
      define(unique(mask + "_ENTRY"), name);
      define(unique(mask + "_MASK"), format("0x%XU", maskOf(piece)));
      define(unique(mask + "_SHIFT"), std::to_string(piece.bit));
    }
  }

  std::set<std::string> m_taken;
};

} // namespace

std::string headerText(const Adaptation& adaptation, const std::string& path) {
  Header header;
  const auto guard = "IGH_BUS_ADAPTED_" + identifierOf(std::filesystem::path(path).filename().string());
  header.text =
      "/* Written by igh_bus adapt: the entries of the machine by name. A bit's mask and shift belong "
      "to the entry named by its _ENTRY. */\n#ifndef " +
      guard + "\n#define " + guard + "\n";
  for (std::size_t i = 0; i < adaptation.plans.size(); ++i) {
    const auto& plan = adaptation.plans[i];
    const auto words = "_" + identifierOf(plan.name());
    for (const auto slave : plan.slaves)
      header.addPlan(plan, "S" + std::to_string(slave) + words, std::to_string(slave));
    if (plan.slaves.empty())
      header.addPlan(plan, "D" + std::to_string(i) + words, "");
  }
  return header.text + "\n#endif\n";
}

} // namespace igh_bus::adapt
