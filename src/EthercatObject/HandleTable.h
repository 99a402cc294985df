#ifndef ETHERCATOBJECT_HANDLETABLE_H
#define ETHERCATOBJECT_HANDLETABLE_H

#include <cstddef>
#include <map>
#include <vector>

// Directions of a handle, as bits of an object's flags.
constexpr unsigned int HANDLE_READABLE = 1;
constexpr unsigned int HANDLE_WRITABLE = 2;

// Who uses a handle, counted per direction; a direction's flag is set while it has users.
struct _HANDLE_USERS {
  unsigned int flags = 0;
  unsigned long readUsers = 0;
  unsigned long writeUsers = 0;

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

// Bookkeeping of handles: ids are handed out upward and not reused until clear(); one key has one object,
// shared by its users. OBJECT offers isFree(), reset() and a member `users`.
template <class KEY, class OBJECT> class CHandleTable {
public:
  // Counts one more user of the object with this key. Null when there is none; a key whose slot is free, left
  // by a creation that failed, counts as unknown.
  OBJECT* share(const KEY& key, bool read, unsigned int& id) {
    const auto found = m_mapIdByKey.find(key);
    if (found == m_mapIdByKey.end() || m_vecObjects[found->second].isFree() || keyOf(found->second) != key) {
      return nullptr;
    }
    id = static_cast<unsigned int>(found->second);
    OBJECT& object = m_vecObjects[id];
    object.users.add(read);
    return &object;
  }

  // The slot of the next id; it stays the next one until take() is called.
  OBJECT& nextFree() {
    while (m_uiCursor < m_vecObjects.size() && !m_vecObjects[m_uiCursor].isFree()) {
      ++m_uiCursor;
    }
    if (m_uiCursor == m_vecObjects.size()) {
      m_vecObjects.resize(m_uiCursor == 0 ? 16 : static_cast<std::size_t>(m_uiCursor) * 2);
    }
    return m_vecObjects[m_uiCursor];
  }
  void enterKey(const KEY& key) {
    m_mapIdByKey[key] = m_uiCursor;
    m_mapKeyById[m_uiCursor] = key;
  }
  unsigned int take() { return m_uiCursor++; }

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
  std::vector<OBJECT>& objects() { return m_vecObjects; }

  void clear() {
    m_vecObjects.clear();
    m_mapIdByKey.clear();
    m_mapKeyById.clear();
    m_uiCursor = 0;
  }

private:
  std::vector<OBJECT> m_vecObjects;
  unsigned int m_uiCursor = 0;
  std::map<KEY, unsigned long> m_mapIdByKey;
  std::map<unsigned long, KEY> m_mapKeyById;
};

#endif
