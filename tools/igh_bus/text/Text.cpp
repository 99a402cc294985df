#include "text/Text.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace igh_bus {

std::string format(const char* form, ...) {
  std::va_list arguments;
  std::va_list again;
  va_start(arguments, form);
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, form, arguments);
  va_end(arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, form, again);
  va_end(again);
  return text;
}

std::string hexPairs(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  for (const auto byte : bytes)
    text += format(text.empty() ? "%02X" : " %02X", unsigned{byte});
  return text;
}

std::string stateText(std::uint32_t alStates) {
  static const std::pair<std::uint32_t, const char*> names[] = {
      {1, "INIT"}, {2, "PREOP"}, {4, "SAFEOP"}, {8, "OP"}};
  std::string text;
  for (const auto& [state, name] : names) {
    if (alStates & state)
      text += (text.empty() ? "" : "+") + std::string(name);
  }
  return text.empty() ? "none" : text;
}

void replaceControls(char* text) {
  constexpr char DELETE = 0x7F;
  for (; *text != '\0'; ++text) {
    if (static_cast<unsigned char>(*text) < ' ' || *text == DELETE)
      *text = '?';
  }
}

} // namespace igh_bus
