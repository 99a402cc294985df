#include "busfile/JsonFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <set>
#include <sys/stat.h>

namespace ethercat_simulation {

using nlohmann::json;

namespace {

constexpr std::size_t LARGEST_FILE = 64U << 20U;
constexpr std::size_t DEEPEST_NESTING = 32;
constexpr std::size_t LONGEST_REASON = 160;

std::string readAll(const std::string& path) {
  // Not blocking: a pipe without a writer would hold up the application for ever.
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      descriptor >= 0 ? fdopen(descriptor, "rb") : nullptr, std::fclose);
  if (file == nullptr) {
    throw FileProblem{"", std::string("cannot be opened: ") + std::strerror(errno)};
  }
  struct stat status {};
  if (fstat(fileno(file.get()), &status) == 0 && !S_ISREG(status.st_mode)) {
    throw FileProblem{"", "is not a regular file"};
  }
  std::string text;
  std::vector<char> buffer(1U << 16U);
  while (const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
    text.append(buffer.data(), got);
    if (text.size() > LARGEST_FILE) {
      throw FileProblem{"", "is larger than 64 MiB"};
    }
  }
  if (std::ferror(file.get()) != 0) {
    throw FileProblem{"", std::string("cannot be read: ") + std::strerror(errno)};
  }
  return text;
}

FileProblem malformed(const std::string& text, std::size_t position, std::string_view reason) {
  const std::size_t end = std::min(text.size(), position > 0 ? position - 1 : 0);
  const auto stop = text.begin() + static_cast<std::ptrdiff_t>(end);
  const auto line = 1 + std::count(text.begin(), stop, '\n');
  const std::size_t lineStart = end == 0 ? std::string::npos : text.rfind('\n', end - 1);
  const std::size_t column = lineStart == std::string::npos ? end + 1 : end - lineStart;
  // The parser's sentence goes on with the text read so far, which may be all of the file.
  for (const char* prefix : {"] ", ": "}) { // its own name, and the place once more
    const std::size_t prefixEnd = reason.find(prefix);
    reason.remove_prefix(prefixEnd == std::string_view::npos ? 0 : prefixEnd + 2);
  }
  reason = reason.substr(0, reason.find("; last read"));
  return {std::to_string(line) + ":" + std::to_string(column), printable(reason, LONGEST_REASON)};
}

// Goes through the document before it is built: the parser itself keeps the last of two equal keys and
// accepts any depth, and its callbacks cost a walk through all elder siblings each.
class Checker final : public json::json_sax_t {
public:
  explicit Checker(const std::string& text) : m_text(text) {}

  bool null() override { return finishElement(); }
  bool boolean(bool /*value*/) override { return finishElement(); }
  bool number_integer(number_integer_t /*value*/) override { return finishElement(); }
  bool number_unsigned(number_unsigned_t /*value*/) override { return finishElement(); }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return finishElement(); }
  bool string(string_t& /*value*/) override { return finishElement(); }
  bool binary(binary_t& /*value*/) override { return finishElement(); }
  bool start_object(std::size_t /*size*/) override { return enter(false); }
  bool end_object() override { return leave(); }
  bool start_array(std::size_t /*size*/) override { return enter(true); }
  bool end_array() override { return leave(); }
  bool key(string_t& name) override {
    m_levels.back().key = name;
    if (!m_levels.back().keys.insert(name).second) {
      throw FileProblem{place(), "stands there twice"};
    }
    return true;
  }
  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const json::exception& error) override {
    throw malformed(m_text, position, error.what());
  }

private:
  struct Level {
    bool isArray = false;
    std::size_t index = 0;
    std::string key;
    std::set<std::string> keys;
  };

  bool enter(bool isArray) {
    if (m_levels.size() == DEEPEST_NESTING) {
      throw FileProblem{place(), "is nested too deeply"};
    }
    m_levels.emplace_back();
    m_levels.back().isArray = isArray;
    return true;
  }
  bool leave() {
    m_levels.pop_back();
    return finishElement();
  }
  bool finishElement() {
    if (!m_levels.empty()) {
      ++m_levels.back().index;
    }
    return true;
  }
  std::string place() const {
    std::string text;
    for (const Level& level : m_levels) {
      text += "/" + (level.isArray ? std::to_string(level.index) : printable(level.key));
    }
    return text;
  }

  const std::string& m_text;
  std::vector<Level> m_levels;
};

// False unless the whole text is one number of at most 64 bits.
bool parseNumber(const std::string& text, std::uint64_t* number) {
  const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const std::string digits = hexadecimal ? text.substr(2) : text;
  const char* allowed = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  if (digits.empty() || digits.find_first_not_of(allowed) != std::string::npos) {
    return false;
  }
  errno = 0;
  *number = std::strtoull(digits.c_str(), nullptr, hexadecimal ? 16 : 10);
  return errno == 0;
}

} // namespace

std::string printable(std::string_view text, std::size_t longest) {
  std::string line(text.substr(0, longest));
  std::replace_if(
      line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
  return line + (text.size() > longest ? "..." : "");
}

json loadJsonFile(const std::string& path) {
  return parseJson(readAll(path));
}

json parseJson(const std::string& text) {
  Checker checker(text);
  json::sax_parse(text, &checker);
  return json::parse(text);
}

void JsonNode::fail(const std::string& reason) const {
  throw FileProblem{m_place.empty() ? "/" : m_place, reason};
}

void JsonNode::expectObject(std::initializer_list<std::string_view> keys, const char* complaint) const {
  if (!m_value->is_object()) {
    fail("must be an object");
  }
  for (const auto& [key, value] : m_value->items()) {
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
      throw FileProblem{m_place + "/" + printable(key), complaint};
    }
  }
}

bool JsonNode::has(const char* key) const {
  return m_value->contains(key);
}

JsonNode JsonNode::at(const char* key) const {
  const auto found = m_value->find(key);
  if (found == m_value->end()) {
    fail(std::string("\"") + key + "\" is missing");
  }
  return {*found, m_place + "/" + key};
}

std::vector<JsonNode> JsonNode::elements() const {
  if (!m_value->is_array()) {
    fail("must be an array");
  }
  std::vector<JsonNode> nodes;
  nodes.reserve(m_value->size());
  for (const json& element : *m_value) {
    nodes.emplace_back(element, m_place + "/" + std::to_string(nodes.size()));
  }
  return nodes;
}

std::uint64_t JsonNode::number(std::uint64_t minimum, std::uint64_t maximum) const {
  std::uint64_t value = 0;
  bool inRange = true;
  if (m_value->is_string()) {
    if (!parseNumber(m_value->get_ref<const std::string&>(), &value)) {
      fail("must be an integer, or a string with a decimal or 0x hexadecimal one");
    }
  } else if (m_value->is_number_integer()) {
    inRange = m_value->is_number_unsigned();
    value = inRange ? m_value->get<std::uint64_t>() : 0;
  } else {
    fail("must be an integer, or a string with a decimal or 0x hexadecimal one");
  }
  if (!inRange || value < minimum || value > maximum) {
    fail("must be between " + std::to_string(minimum) + " and " + std::to_string(maximum));
  }
  return value;
}

double JsonNode::real(double minimum, double maximum) const {
  const double value = m_value->is_number() ? m_value->get<double>() : std::nan("");
  if (!(value >= minimum && value <= maximum)) {
    fail("must be a number between " + nlohmann::json(minimum).dump() + " and " +
         nlohmann::json(maximum).dump());
  }
  return value;
}

bool JsonNode::flag() const {
  if (!m_value->is_boolean()) {
    fail("must be true or false");
  }
  return m_value->get<bool>();
}

std::string JsonNode::text() const {
  if (!m_value->is_string()) {
    fail("must be a string");
  }
  return m_value->get<std::string>();
}

} // namespace ethercat_simulation
