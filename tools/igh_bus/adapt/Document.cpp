#include "adapt/Document.h"

#include "File/File.h"

#include <utility>

namespace igh_bus::adapt {

Document::Document() : m_handle(xml_file_create()) {}

Document::~Document() {
  if (m_handle)
    xml_file_remove_all(m_handle); // what was not stored is dropped
  xml_file_destroy(m_handle);
}

Document::Document(Document&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}

bool Document::read(const std::string& path) {
  return xml_file_open(m_handle, path.c_str(), FILE_MODE_READ);
}

bool Document::create(const std::string& path) {
  return xml_file_open(m_handle, path.c_str(), FILE_MODE_READ_WRITE | FILE_MODE_KEEP) && root() == nullptr;
}

void Document::store() {
  xml_file_close(m_handle);
}

_XmlNode* Document::append(_XmlNode* parent, const char* name, const std::string& value) {
  return xml_file_append_node(m_handle, parent, name, value.c_str(), nullptr);
}

} // namespace igh_bus::adapt
