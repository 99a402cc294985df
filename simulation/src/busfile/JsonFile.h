// A JSON file and the places in it, so that every complaint can say where.
#ifndef ETHERCAT_SIMULATION_JSON_FILE_H
#define ETHERCAT_SIMULATION_JSON_FILE_H

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ethercat_simulation {

// Thrown and caught inside the reading of one file.
struct FileProblem {
  std::string place; // "/slaves/3/alias", "line:column", or empty for the whole file
  std::string reason;
};

// Throws FileProblem for a file that cannot be read, is too large, nested too deeply, not JSON, or has a key
// twice in one object.
nlohmann::json loadJsonFile(const std::string& path);
nlohmann::json parseJson(const std::string& text);

// Text of the file as part of a message: one line, cut where it is too long.
std::string printable(std::string_view text, std::size_t longest = 64);

// A value of the file and its place. Every operation throws FileProblem when the value is not what is asked
// for.
class JsonNode {
public:
  JsonNode(const nlohmann::json& value, std::string place) : m_value(&value), m_place(std::move(place)) {}

  const std::string& place() const { return m_place; }
  [[noreturn]] void fail(const std::string& reason) const;

  // An object without keys beyond these.
  void expectObject(std::initializer_list<std::string_view> keys,
                    const char* complaint = "unknown key") const;
  bool has(const char* key) const;
  JsonNode at(const char* key) const;
  std::vector<JsonNode> elements() const;

  // An integer, or a string with one in decimal or 0x hexadecimal.
  std::uint64_t number(std::uint64_t minimum, std::uint64_t maximum) const;
  double real(double minimum, double maximum) const;
  bool flag() const;
  std::string text() const;

  template <class Number> Number get(const char* key, std::uint64_t minimum, std::uint64_t maximum) const {
    return static_cast<Number>(at(key).number(minimum, maximum));
  }
  template <class Number>
  Number get(const char* key, std::uint64_t minimum, std::uint64_t maximum, Number missing) const {
    return has(key) ? get<Number>(key, minimum, maximum) : missing;
  }

private:
  const nlohmann::json* m_value;
  std::string m_place;
};

} // namespace ethercat_simulation

#endif
