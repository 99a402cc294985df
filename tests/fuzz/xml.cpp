// The input is a document, empty for a new one, and behind a NUL what is edited in it. The document is stored
// and must be read again as it was.
#include "File/File.h"
#include "Support.h"
#include "XmlParser/XmlParser.h"

#include <algorithm>

namespace {

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
  _XmlNode* node = nullptr;
  _XmlNode* next = xml_file_get_root(handle);
  for (int deepest = 100; next != nullptr && deepest > 0; --deepest) { // libxml2 reads 256 levels
    node = next;
    next = xml_file_get_child_node(static_cast<int>(input.below(4)) - 1, node, nullptr);
  }
  return node;
}

void edit(xml_file_handle* handle, fuzz::Input& input) {
  static const char* const names[] = {"a", "Name", "_n-1.2", "é漢", "", nullptr};
  const unsigned int operation = input.below(10);
  const char* const name = input.any(names);
  const char* const filter = input.any(names);
  const unsigned int index = input.below(5);
  _XmlNode* const node = anyNode(handle, input);
  const std::string value = text(input);
  switch (operation) {
  case 0:
    return void(xml_file_append_node(handle, node, name, value.c_str(), filter));
  case 1:
    return void(xml_file_insert_before_node(handle, index, node, name, value.c_str(), filter));
  case 2:
    return void(xml_file_insert_after_node(handle, index, node, name, value.c_str(), filter));
  case 3:
    return void(xml_file_append_attribute(node, name, value.c_str()));
  case 4:
    return void(xml_file_insert_before_attribute(index, node, name, value.c_str()));
  case 5:
    return void(xml_file_insert_after_attribute(index, node, name, value.c_str()));
  case 6:
    return void(xml_file_remove_node(handle, index, node, filter));
  case 7:
    return xml_file_remove_all_child(handle, node, filter);
  case 8:
    return void(xml_file_remove_attribute(name, node));
  default:
    return void(xml_file_remove_attribute_by_index(index, node));
  }
}

std::string everything(const _XmlNode* node) {
  std::string all = node->name + "|" + node->value + "|";
  for (const _NodeAttribute& attribute : node->attributes) {
    all += "@" + attribute.name + "=" + attribute.value + "|";
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
  const std::uint8_t* const end = std::find(data, data + size, 0);
  file.fill(data, static_cast<std::size_t>(end - data));
  fuzz::Input input(end, size - static_cast<std::size_t>(end - data));
  input.byte(); // the NUL
  xml_file_handle* handle = xml_file_create();
  const bool opened = xml_file_open(handle, file.path(), mode);
  while (opened && !input.empty()) {
    edit(handle, input);
  }
  if (xml_file_get_root(handle) != nullptr) {
    const std::string before = everything(xml_file_get_root(handle));
    xml_file_close(handle);
    // Prefixes of names are not kept, and two attributes may become one.
    const bool mustBeRead = std::find(data, end, ':') == end;
    REQUIRE(xml_file_open(handle, file.path(), mode) || !mustBeRead);
    REQUIRE(!mustBeRead || everything(xml_file_get_root(handle)) == before);
  }
  xml_file_destroy(handle);
  return 0;
}
