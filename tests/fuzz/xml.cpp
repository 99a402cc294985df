// The input is a document, empty for a new one, and behind a NUL what is edited in it. The document is stored
// and must be read again as it was.
#include "File/File.h"
#include "Support.h"
#include "XmlParser/XmlParser.h"

namespace {

constexpr const char* notAName = "1 <";

// Any character that XML can hold, and what its syntax is made of.
std::string text(fuzz::Input& input) {
  static const char* const pieces[] = {"é", "漢", "😀", "]]>", "&amp;", "<!--", "\t", "\r", "\n", "%s"};
  std::string all;
  for (unsigned int left = input.below(32); left > 0; --left) {
    const std::uint8_t byte = input.byte();
    all += byte >= ' ' && byte < 0x7F ? std::string(1, static_cast<char>(byte)) : pieces[byte % 10];
  }
  return all;
}

_XmlNode* anyNode(xml_file_handle* handle, fuzz::Input& input) {
  constexpr int deepest = 100; // libxml2 reads 256 levels
  _XmlNode* node = xml_file_get_root(handle);
  for (int depth = 0; depth < deepest; ++depth) {
    _XmlNode* const child = xml_file_get_child_node(static_cast<int>(input.below(4)) - 1, node, nullptr);
    if (child == nullptr) {
      break;
    }
    node = child;
  }
  return node;
}

// False when the document cannot be read again.
bool edit(xml_file_handle* handle, fuzz::Input& input) {
  static const char* const names[] = {"a", "Name", "_n-1.2", "é漢", "", nullptr, notAName};
  const unsigned int operation = input.below(10);
  const char* const name = input.any(names);
  const char* const filter = names[input.below(6)];
  const unsigned int index = input.below(5);
  _XmlNode* const node = anyNode(handle, input);
  const std::string value = text(input);
  switch (operation) {
  case 0:
    return xml_file_append_node(handle, node, name, value.c_str(), filter) == nullptr || name != notAName;
  case 1:
    return xml_file_insert_before_node(handle, index, node, name, value.c_str(), filter) == nullptr ||
           name != notAName;
  case 2:
    return xml_file_insert_after_node(handle, index, node, name, value.c_str(), filter) == nullptr ||
           name != notAName;
  case 3:
    return !xml_file_append_attribute(node, name, value.c_str()) || name != notAName;
  case 4:
    return !xml_file_insert_before_attribute(index, node, name, value.c_str()) || name != notAName;
  case 5:
    return !xml_file_insert_after_attribute(index, node, name, value.c_str()) || name != notAName;
  case 6:
    xml_file_remove_node(handle, index, node, filter);
    return true;
  case 7:
    xml_file_remove_all_child(handle, node, filter);
    return true;
  case 8:
    xml_file_remove_attribute(name, node);
    return true;
  default:
    xml_file_remove_attribute_by_index(index, node);
    return true;
  }
}

// By way of the getters and their sizes.
template <class Getter> std::string get(Getter getter) {
  unsigned long size = 0;
  REQUIRE(getter(nullptr, size));
  std::string value(size, '\0');
  REQUIRE(getter(value.data(), size) && size == value.size());
  return value;
}

std::string everything(const _XmlNode* node) {
  using Size = unsigned long;
  std::string all = get([=](char* to, Size& size) { return xml_file_get_node_name(node, to, size); }) +
                    get([=](char* to, Size& size) { return xml_file_get_node_value(node, to, size); });
  for (int i = 0; i < xml_file_get_attribute_count(node); ++i) {
    all +=
        get([=](char* to, Size& size) { return xml_file_get_attribute_name(i, node, to, size); }) +
        get([=](char* to, Size& size) { return xml_file_get_attribute_value_by_index(i, node, to, size); });
  }
  for (const _XmlNode* child : xml_file_children(node, nullptr)) {
    all += "(" + everything(child) + ")";
  }
  return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr int mode = FILE_MODE_READ_WRITE | FILE_MODE_KEEP;
  static fuzz::MemoryFile file;
  fuzz::Input input(data, size);
  const std::string document = input.until('\0');
  file.fill(document.data(), document.size());
  xml_file_handle* handle = xml_file_create();
  if (xml_file_open(handle, file.path(), mode)) {
    // Prefixes of names are not kept: two attributes may become one.
    bool readable = document.find(':') == std::string::npos;
    while (!input.empty()) {
      readable = edit(handle, input) && readable;
    }
    if (xml_file_get_root(handle) != nullptr) {
      const std::string before = everything(xml_file_get_root(handle));
      xml_file_close(handle);
      const bool read = xml_file_open(handle, file.path(), mode);
      REQUIRE(!readable || (read && everything(xml_file_get_root(handle)) == before));
    }
  }
  xml_file_destroy(handle);
  return 0;
}
