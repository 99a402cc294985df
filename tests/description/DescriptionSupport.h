#pragma once

#include "ENIObject/ENIObject.h"

#include <string>
#include <vector>

namespace description_test {

struct Message {
  unsigned int level;
  std::string text;
  bool operator==(Message const& other) const { return level == other.level && text == other.text; }
};

/* A sink that keeps what it is offered, until the next test clears it. */
std::vector<Message>& messages();
bool capture(unsigned int level, char const* text);

/* Messages of level 0 and 2: what is wrong with a file. */
std::vector<Message> complaints();

/* A file in the temporary folder, deleted with the object. */
class TemporaryFile {
public:
  explicit TemporaryFile(std::string const& content);
  ~TemporaryFile();
  TemporaryFile(TemporaryFile const&) = delete;
  TemporaryFile& operator=(TemporaryFile const&) = delete;

  char const* path() const { return m_path.c_str(); }
  std::string content() const;

private:
  std::string m_path;
};

/* A whole file around the children of its Descriptions element; vendor 2. */
std::string description(std::string const& content);
std::string device(std::string const& product, std::string const& revision, std::string const& content);

/* Loads `xml` from a file and gives the result; the messages start afresh. */
bool load(CMasterENIObject& store, std::string const& xml);

/* The entries as "sync/pdo index:subindex bits type name", in flat order. */
std::vector<std::string> entriesOf(CSlaveENIObject const* slave);

} // namespace description_test
