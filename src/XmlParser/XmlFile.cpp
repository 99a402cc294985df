#include "File/File.h"
#include "XmlParser/XmlFileHandle.h"
#include "XmlParser/XmlParser.h"
#include "XmlParser/XmlText.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace {

struct _FreeDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, _FreeDocument>;

// A pipe or a terminal would hold the caller until somebody writes to it.
bool mayBlock(const char* path) {
  struct stat status {};
  return stat(path, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

std::optional<unsigned long> openedLength(const char* path, int mode) {
  CFile file;
  if (mayBlock(path) || !file.open(path, mode)) {
    return std::nullopt;
  }
  return file.getLength();
}

// What can be read of it, at most `length` bytes.
std::string fileText(const char* path, std::size_t length) {
  CFile file;
  file.open(path, FILE_MODE_READ);
  std::string text(length, '\0');
  std::size_t filled = 0;
  int count = 1;
  while (filled < length && count > 0) {
    count = file.read(&text[filled], static_cast<unsigned int>(length - filled));
    filled += static_cast<std::size_t>(std::max(count, 0));
  }
  text.resize(filled);
  return text;
}

// After a failed allocation libxml2 gives what it had read until then, as if it were the whole document.
void throwIfCutShort() {
  const xmlError* const error = xmlGetLastError();
  if (error != nullptr && error->code == XML_ERR_NO_MEMORY) {
    throw std::bad_alloc();
  }
}

// From memory, because libxml2 itself takes some paths for addresses in the network or for the standard
// input, and unpacks compressed files, a thousandfold and more. Null when it is no well-formed document.
Document parsedFile(const char* path, unsigned long length) {
  if (length > std::numeric_limits<int>::max()) {
    return nullptr;
  }
  const std::string text = fileText(path, length);
  xmlResetLastError();
  Document document(xmlReadMemory(text.data(), static_cast<int>(text.size()), path, nullptr,
                                  XML_PARSE_NONET | XML_PARSE_COMPACT));
  throwIfCutShort();
  return document;
}

// Null when the file is no well-formed document or a hostile one.
_XmlNode* readTree(xml_file_handle& handle, const char* path, unsigned long length) {
  const Document document = parsedFile(path, length);
  const xmlNode* rootElement = document ? xmlDocGetRootElement(document.get()) : nullptr;
  if (rootElement == nullptr) {
    return nullptr;
  }
  try {
    CXmlText text(document.get(), length);
    return handle.xml_copy_tree_private(rootElement, text);
  } catch (const _XmlExpansionRefused&) {
    return nullptr;
  }
}

bool openDocument(xml_file_handle& handle, const char* path, int mode) {
  const std::optional<unsigned long> length = openedLength(path, mode);
  if (!length) {
    std::printf("Open file error,the file maybe not exist:%s\n", path);
    return false;
  }
  std::string fileName = path;
  if (*length != 0) {
    handle.root = readTree(handle, path, *length);
    if (handle.root == nullptr) {
      std::printf("Parser xml error:%s\n", path);
      return false;
    }
  }
  handle.mode = mode;
  handle.fileName = std::move(fileName);
  return true;
}

} // namespace

xml_file_handle* xml_file_create() {
  return new xml_file_handle;
}

bool xml_file_open(xml_file_handle* handle, const char* path, int mode) {
  if (handle == nullptr) {
    return false;
  }
  if (handle->root != nullptr) {
    xml_file_close(handle);
  }
  try {
    return openDocument(*handle, path != nullptr ? path : "", mode);
  } catch (const std::exception& exception) {
    std::printf("Exception caught: %s\n", exception.what());
    return false;
  }
}

void xml_file_close(xml_file_handle* handle) {
  if (handle->root != nullptr && (handle->mode & FILE_MODE_READ_WRITE) != 0) {
    handle->xml_store_document_private();
  }
  xml_file_remove_all(handle);
  handle->mode = FILE_MODE_READ;
  handle->fileName.clear();
}

void xml_file_destroy(xml_file_handle*& handle) {
  if (handle == nullptr) {
    return;
  }
  xml_file_close(handle);
  delete handle;
  handle = nullptr;
}

bool xml_file_remove_all(xml_file_handle* handle) {
  if (handle == nullptr || handle->root == nullptr) {
    return false;
  }
  handle->xml_remove_node_private(handle->root);
  handle->root = nullptr;
  return true;
}

_XmlNode* xml_file_get_root(const xml_file_handle* handle) {
  return handle != nullptr ? handle->root : nullptr;
}
