#ifndef ETHERCATOBJECT_HANDLETABLE_H
#define ETHERCATOBJECT_HANDLETABLE_H

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

// Directions of a handle, as bits of an object's flags.
constexpr unsigned int HANDLE_READABLE = 1;
constexpr unsigned int HANDLE_WRITABLE = 2;

// Who uses a handle, counted per direction; a direction's flag is set while it has users.
struct _HANDLE_USERS {
  unsigned int flags = 0;
  unsigned long readUsers = 0;
  unsigned long writeUsers = 0;

  bool has(bool read) const { return (flags & (read ? HANDLE_READABLE : HANDLE_WRITABLE)) != 0; }
  void add(bool read) {
    ++(read ? readUsers : writeUsers);
    flags |= read ? HANDLE_READABLE : HANDLE_WRITABLE;
  }
  // True when nobody is left in any direction.
  bool remove(bool read) {
    unsigned long& users = read ? readUsers : writeUsers;
    users -= users > 0 ? 1 : 0;
    flags = (readUsers > 0 ? HANDLE_READABLE : 0U) | (writeUsers > 0 ? HANDLE_WRITABLE : 0U);
    return flags == 0;
  }
};

// Objects by handle: ids are handed out upward and not reused until clear(); one key has one object, shared
// by its users. OBJECT offers isFree(), reset() and a member `users`, and is moved without an exception.
template <class KEY, class OBJECT> class CHandleTable {
public:
  // What the entry of one object needs of the heap, taken beforehand.
  class CPlace {
    friend class CHandleTable;
    std::map<KEY, unsigned long> m_mapIdByKey;
    std::map<unsigned long, KEY> m_mapKeyById;
  };

  // The object with this key, and its id. Null when there is none; a key whose slot is free, left by a
  // renewal that failed, counts as unknown.
  OBJECT* findKey(const KEY& key, unsigned int& id) {
    const auto found = m_mapIdByKey.find(key);
    if (found == m_mapIdByKey.end() || m_vecObjects[found->second].isFree()) {
      return nullptr;
    }
    id = static_cast<unsigned int>(found->second);
    return &m_vecObjects[id];
  }

  // Takes all the memory that entering an object under this key needs, and enters nothing. The place is void
  // after the next enter() or clear().
  CPlace makePlace(const KEY& key) {
    while (m_uiNextId < m_vecObjects.size() && !m_vecObjects[m_uiNextId].isFree()) {
      ++m_uiNextId;
    }
    if (m_uiNextId == m_vecObjects.size()) {
      m_vecObjects.resize(m_uiNextId == 0 ? 16 : static_cast<std::size_t>(m_uiNextId) * 2);
    }
    CPlace place;
    place.m_mapIdByKey.emplace(key, m_uiNextId);
    place.m_mapKeyById.emplace(m_uiNextId, key);
    return place;
  }
  // The id of the object, which is whole by now.
  unsigned int enter(CPlace&& place, OBJECT object) noexcept {
    m_mapIdByKey.erase(place.m_mapIdByKey.begin()->first);
    m_mapIdByKey.merge(place.m_mapIdByKey);
    m_mapKeyById.merge(place.m_mapKeyById);
    m_vecObjects[m_uiNextId] = std::move(object);
    return m_uiNextId++;
  }

  // Takes one user away; true when that was the last one and the slot is free again.
  bool release(unsigned int id, bool read) {
    OBJECT* const object = find(id);
    if (object == nullptr || !object->users.remove(read)) {
      return false;
    }
    const auto found = m_mapKeyById.find(id);
    if (found != m_mapKeyById.end()) {
      const auto back = m_mapIdByKey.find(found->second);
      if (back != m_mapIdByKey.end() && back->second == id) {
        m_mapIdByKey.erase(back);
      }
      m_mapKeyById.erase(found);
    }
    object->reset();
    return true;
  }

  const KEY& keyOf(unsigned long id) const { return m_mapKeyById.at(id); }
  OBJECT* find(unsigned int id) { return id < m_vecObjects.size() ? &m_vecObjects[id] : nullptr; }
  const OBJECT* find(unsigned int id) const { return id < m_vecObjects.size() ? &m_vecObjects[id] : nullptr; }
  std::vector<OBJECT>& objects() { return m_vecObjects; }

  void clear() {
    m_vecObjects.clear();
    m_mapIdByKey.clear();
    m_mapKeyById.clear();
    m_uiNextId = 0;
  }

private:
  std::vector<OBJECT> m_vecObjects; // by id
  unsigned int m_uiNextId = 0;      // no id below is handed out
  std::map<KEY, unsigned long> m_mapIdByKey;
  std::map<unsigned long, KEY> m_mapKeyById;
};

#endif
