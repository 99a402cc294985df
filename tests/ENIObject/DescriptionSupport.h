#pragma once

#include "ENIObject/ENIObject.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace description_test {

using Message = std::pair<unsigned int, std::string>; // level and text
using Messages = std::vector<Message>;

// What the sink was offered, until load() or a test clears it.
inline Messages& messages() {
  static Messages all;
  return all;
}

inline bool capture(unsigned int level, const char* text) {
  messages().push_back({level, text});
  return true;
}

// Messages of level 0 and 2: what is wrong with a file.
inline Messages complaints() {
  Messages found = messages();
  found.erase(std::remove_if(found.begin(), found.end(), [](const Message& it) { return it.first % 2 != 0; }),
              found.end());
  return found;
}

// A file in the temporary folder, deleted with the object.
class TemporaryFile {
public:
  explicit TemporaryFile(const std::string& text) : m_path("/tmp/description_test.XXXXXX") {
    close(mkstemp(m_path.data()));
    std::ofstream(m_path, std::ios::binary) << text;
  }
  ~TemporaryFile() { unlink(path()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const char* path() const { return m_path.c_str(); }
  std::string content() const {
    std::ifstream file(m_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

private:
  std::string m_path;
};

// A whole file of vendor 2 with these Device and Module elements.
inline std::string description(const std::string& devices, const std::string& modules = "") {
  return "<EtherCATInfo Version=\" 1.6\n\"><Vendor><Id>#x2</Id><Name>Maker</Name></Vendor><Descriptions>"
         "<Modules>" +
         modules + "</Modules><Devices>" + devices + "</Devices></Descriptions></EtherCATInfo>";
}

inline std::string device(const std::string& product, const std::string& revision,
                          const std::string& content) {
  return "<Device><Type ProductCode=\"" + product + "\" RevisionNo=\"" + revision + "\">T</Type>" + content +
         "</Device>";
}

inline std::string module(const std::string& ident, const std::string& content) {
  return "<Module><Type ModuleIdent=\"" + ident + "\"/><Name LcId=\"1033\"/>" + content + "</Module>";
}

// Loads `xml` from a file and gives the result; the messages start afresh.
inline bool load(CMasterENIObject& store, const std::string& xml) {
  messages().clear();
  return store.insertENIFile(TemporaryFile(xml).path(), false) != 0;
}

// Lines "sync/pdo index:subindex bits type name" in flat order.
inline std::string entriesOf(const CSlaveENIObject* slave) {
  std::string lines;
  unsigned int position = 0;
  for (const ec_sync_info_t* sync = slave->getSlaveSyncInfo(); sync->index != 0xff; ++sync) {
    for (const ec_pdo_info_t* pdo = sync->pdos; pdo != sync->pdos + sync->n_pdos; ++pdo) {
      for (const auto* entry = pdo->entries; entry != pdo->entries + pdo->n_entries; ++entry, ++position) {
        char line[100];
        std::snprintf(line, sizeof(line), "%d/%X %X:%d %d ", sync->index, pdo->index, entry->index,
                      entry->subindex, entry->bit_length);
        char text[2][20];
        unsigned long sizes[] = {20, 20};
        slave->getPDOEntryDataType(position, text[0], sizes[0]);
        slave->getPDOEntryName(position, text[1], sizes[1]);
        lines += std::string(line) + text[0] + " " + text[1] + "\n";
      }
    }
  }
  return lines;
}

} // namespace description_test
