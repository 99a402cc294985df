#include "File/File.h"
#include "XmlParser/XmlFileHandle.h"
#include "XmlParser/XmlParser.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// Byte-order mark of UTF-8 and header.
constexpr std::string_view DOCUMENT_START = "\xef\xbb\xbf<?xml version = \"1.0\" encoding = \"utf-8\" ?>\r\n";

// The ampersand first, so that those of the replacements stay. Blanks too: no reader takes a reference for
// white space that it may drop or turn into something else.
constexpr std::pair<const char*, const char*> ESCAPES[] = {
    {"&", "&amp;"},    {"<", "&lt;"},      {">", "&gt;"},      {"'", "&apos;"},   {"\"", "&quot;"},
    {" ", "&#x0020;"}, {"\t", "&#x0009;"}, {"\r", "&#x000D;"}, {"\n", "&#x000A;"}};

class CTextCollector final : public CFile {
public:
  int write(const void* buffer, unsigned int count) override {
    text.append(static_cast<const char*>(buffer), count);
    return static_cast<int>(count);
  }

  std::string text{DOCUMENT_START};
};

struct _DestroyFile {
  void operator()(file_object_handle* file) const { file_object_destroy(file); }
};

// An element whose children are being written.
struct _OpenElement {
  const _XmlNode* element;
  const _XmlNode* nextChild;
};

// A write may take a part only, and reports no more than an int holds. What cannot be written is left out.
void writeText(CFile& file, std::string_view text) {
  constexpr std::size_t MAXIMUM_COUNT = std::size_t{1} << 30;
  while (!text.empty()) {
    const int written =
        file.write(text.data(), static_cast<unsigned int>(std::min(text.size(), MAXIMUM_COUNT)));
    if (written <= 0) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// More than the process may write into one file is not written either.
bool isBeyondLimit(unsigned long length) {
  rlimit limit{};
  return getrlimit(RLIMIT_FSIZE, &limit) == 0 && length > limit.rlim_cur;
}

// Reserves the room on disk; truncating gives it back. A file system that cannot reserve is trusted.
bool reserveRoom(int fd, unsigned long oldLength, unsigned long newLength) {
  if (isBeyondLimit(newLength)) {
    return false;
  }
  if (fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(newLength)) == 0) {
    return true;
  }
  if (errno != ENOSPC && errno != EDQUOT && errno != EFBIG) {
    return true;
  }
  // What was reserved before the disk was full is beyond the end.
  [[maybe_unused]] const int result = ftruncate(fd, static_cast<off_t>(oldLength));
  return false;
}

// True also when there is nothing to lose.
bool fitsInPlaceOfOldText(const char* path, unsigned long newLength) {
  const std::unique_ptr<file_object_handle, _DestroyFile> file(file_object_create());
  if (!file_object_open(file.get(), path, FILE_MODE_READ_WRITE | FILE_MODE_KEEP)) {
    return true;
  }
  const unsigned long oldLength = file_object_get_length(file.get());
  return oldLength == 0 || reserveRoom(file->fd, oldLength, newLength);
}

std::string escaped(const std::string& text) {
  std::string copy = text;
  xml_file_handle::xml_translate_value_to_xml_format_private(copy);
  return copy;
}

std::string attributeText(const _XmlNode& node) {
  std::string text;
  for (const _NodeAttribute& attribute : node.attributes) {
    text += " " + attribute.name + "=\"" + escaped(attribute.value) + "\"";
  }
  return text;
}

std::string indentation(int depth) {
  return std::string(static_cast<std::size_t>(std::max(depth, 0)), '\t');
}

// The whole element, or its opening tag with its value when it has children.
std::string elementLine(const _XmlNode& node, int depth) {
  std::string line = indentation(depth) + "<" + node.name + attributeText(node);
  if (node.firstChild != nullptr) {
    line += ">" + escaped(node.value);
  } else if (!node.value.empty()) {
    line += ">" + escaped(node.value) + "</" + node.name + ">";
  } else {
    line += " />";
  }
  return line + "\n";
}

} // namespace

// Opening truncates the file, so before that the whole text is built and room for it is found: neither a
// shortage of memory nor a full disk may cut what was stored earlier.
void xml_file_handle::xml_store_document_private() {
  try {
    CTextCollector document;
    xml_store_private(&document, root, 0);
    CFile file;
    if (fitsInPlaceOfOldText(fileName.c_str(), document.text.size()) &&
        file.open(fileName.c_str(), FILE_MODE_READ_WRITE | FILE_MODE_CREATE)) {
      writeText(file, document.text);
    }
  } catch (const std::exception&) {
    // Out of memory: like a file that cannot be written.
  }
}

// Not recursive: a deep tree must not exhaust the stack.
void xml_file_handle::xml_store_private(CFile* file, const _XmlNode* node, int depth) const {
  if (file == nullptr || node == nullptr) {
    return;
  }
  std::vector<_OpenElement> open;
  const auto store = [&](const _XmlNode* element) {
    writeText(*file, elementLine(*element, depth + static_cast<int>(open.size())));
    if (element->firstChild != nullptr) {
      open.push_back({element, element->firstChild});
    }
  };

  store(node);
  while (!open.empty()) {
    _OpenElement& parent = open.back();
    if (parent.nextChild != nullptr) {
      const _XmlNode* const child = parent.nextChild;
      parent.nextChild = child->nextSibling;
      store(child);
      continue;
    }
    const int level = depth + static_cast<int>(open.size()) - 1;
    writeText(*file, indentation(level) + "</" + parent.element->name + ">\n");
    open.pop_back();
  }
}

void xml_file_handle::xml_translate_value_to_xml_format_private(std::string& value) {
  for (const auto& [character, reference] : ESCAPES) {
    value = replaceSTLString(value, character, reference);
  }
}

std::string xml_file_handle::replaceSTLString(const std::string& text, const std::string& pattern,
                                              const std::string& replacement) {
  std::string result;
  std::size_t start = 0;
  std::size_t found = pattern.empty() ? std::string::npos : text.find(pattern);
  while (found != std::string::npos) {
    result.append(text, start, found - start).append(replacement);
    start = found + pattern.size();
    found = text.find(pattern, start);
  }
  return result.append(text, start);
}
