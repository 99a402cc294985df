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

using Message = std::pair<unsigned int, std::string>; /* level and text */
using Messages = std::vector<Message>;

/* What the sink was offered, until load() or a test clears it. */
inline Messages& messages() {
  static Messages all;
  return all;
}

inline bool capture(unsigned int level, char const* text) {
  messages().push_back({level, text});
  return true;
}

/* Messages of level 0 and 2: what is wrong with a file. */
inline Messages complaints() {
  Messages found;
  std::copy_if(messages().begin(), messages().end(), std::back_inserter(found),
               [](Message const& message) { return message.first % 2 == 0; });
  return found;
}

/* What the test lets run out. */
extern struct Shortage {
  bool disk = false;
  int allocationsLeft = -1; /* negative: as many as wanted */
} shortage;

/* A file in the temporary folder, deleted with the object. */
class TemporaryFile {
public:
  explicit TemporaryFile(std::string const& text) : m_path("/tmp/description_test.XXXXXX") {
    close(mkstemp(m_path.data()));
    std::ofstream(m_path, std::ios::binary) << text;
  }
  ~TemporaryFile() { unlink(path()); }
  TemporaryFile(TemporaryFile const&) = delete;
  TemporaryFile& operator=(TemporaryFile const&) = delete;

  char const* path() const { return m_path.c_str(); }
  std::string content() const {
    std::ifstream file(m_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

private:
  std::string m_path;
};

/* A whole file of vendor 2 with these Device and Module elements. */
inline std::string description(std::string const& devices, std::string const& modules = "") {
  return "<EtherCATInfo Version=\" 1.6\n\"><Vendor><Id>#x2</Id><Name>Maker</Name></Vendor><Descriptions>"
         "<Modules>" +
         modules + "</Modules><Devices>" + devices + "</Devices></Descriptions></EtherCATInfo>";
}

inline std::string device(std::string const& product, std::string const& revision,
                          std::string const& content) {
  return "<Device><Type ProductCode=\"" + product + "\" RevisionNo=\"" + revision + "\">T</Type>" + content +
         "</Device>";
}

inline std::string module(std::string const& ident, std::string const& content) {
  return "<Module><Type ModuleIdent=\"" + ident + "\"/><Name LcId=\"1033\"/>" + content + "</Module>";
}

/* Loads `xml` from a file and gives the result; the messages start afresh. */
inline bool load(CMasterENIObject& store, std::string const& xml) {
  messages().clear();
  TemporaryFile const file(xml);
  return store.insertENIFile(file.path(), false) != 0;
}

/* "sync/pdo index:subindex bits type name" in flat order. */
inline std::vector<std::string> entriesOf(CSlaveENIObject const* slave) {
  std::vector<std::string> rows;
  unsigned int position = 0;
  for (ec_sync_info_t const* sync = slave->getSlaveSyncInfo(); sync->index != 0xff; ++sync) {
    for (unsigned int pdo = 0; pdo < sync->n_pdos; ++pdo) {
      for (unsigned int entry = 0; entry < sync->pdos[pdo].n_entries; ++entry, ++position) {
        char name[200];
        char type[200];
        unsigned long nameSize = 200;
        unsigned long typeSize = 200;
        slave->getPDOEntryName(position, name, nameSize);
        slave->getPDOEntryDataType(position, type, typeSize);
        char row[500];
        ec_pdo_entry_info_t const& info = sync->pdos[pdo].entries[entry];
        std::snprintf(row, sizeof(row), "%d/%X %X:%d %d %s %s", sync->index, sync->pdos[pdo].index,
                      info.index, info.subindex, info.bit_length, type, name);
        rows.emplace_back(row);
      }
    }
  }
  return rows;
}

} // namespace description_test
