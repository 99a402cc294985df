#include "File/File.h"
#include "XmlParser/XmlFileHandle.h"
#include "XmlParser/XmlParser.h"
#include "XmlParser/XmlText.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace {

struct FreeDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

/* A pipe or a terminal would hold the caller until somebody writes to it. */
bool mayBlock(char const* path) {
  struct stat status {};
  return stat(path, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

/* libxml2 would unpack gzip and xz, a thousandfold and more. */
bool isCompressed(CFile& file) {
  char start[6] = {};
  file.read(start, sizeof(start));
  return std::memcmp(start, "\x1f\x8b", 2) == 0 || std::memcmp(start,
                                                               "\xfd"
                                                               "7zXZ",
                                                               6) == 0;
}

struct OpenedFile {
  unsigned long length;
  bool compressed;
};

std::optional<OpenedFile> openedFile(char const* path, int mode) {
  CFile file;
  if (mayBlock(path) || !file.open(path, mode)) {
    return std::nullopt;
  }
  return OpenedFile{file.getLength(), isCompressed(file)};
}

/* After a failed allocation libxml2 gives what it had read until then, as if it were the whole document. */
void throwIfCutShort() {
  xmlError const* const error = xmlGetLastError();
  if (error != nullptr && error->code == XML_ERR_NO_MEMORY) {
    throw std::bad_alloc();
  }
}

/* Null when the file is no well-formed document or a hostile one. */
_XmlNode* readTree(xml_file_handle& handle, char const* path, unsigned long length) {
  /* libxml2 takes the name "-" for the standard input. */
  char const* const name = std::strcmp(path, "-") == 0 ? "./-" : path;
  xmlResetLastError();
  std::unique_ptr<xmlDoc, FreeDocument> const document(xmlParseFile(name));
  throwIfCutShort();
  xmlNode const* rootElement = document ? xmlDocGetRootElement(document.get()) : nullptr;
  if (rootElement == nullptr) {
    return nullptr;
  }
  try {
    XmlText text(document.get(), length);
    return handle.xml_copy_tree_private(rootElement, text);
  } catch (XmlExpansionRefused const&) {
    return nullptr;
  }
}

bool openDocument(xml_file_handle& handle, char const* path, int mode) {
  std::optional<OpenedFile> const file = openedFile(path, mode);
  if (!file) {
    std::printf("Open file error,the file maybe not exist:%s\n", path);
    return false;
  }
  std::string fileName = path;
  if (file->length != 0) {
    handle.root = file->compressed ? nullptr : readTree(handle, path, file->length);
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

bool xml_file_open(xml_file_handle* handle, char const* path, int mode) {
  if (handle == nullptr) {
    return false;
  }
  if (handle->root != nullptr) {
    xml_file_close(handle);
  }
  try {
    return openDocument(*handle, path != nullptr ? path : "", mode);
  } catch (std::exception const& exception) {
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

_XmlNode* xml_file_get_root(xml_file_handle const* handle) {
  return handle != nullptr ? handle->root : nullptr;
}
