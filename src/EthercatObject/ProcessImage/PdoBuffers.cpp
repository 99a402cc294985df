#include "EthercatObject/ProcessImage/PdoBuffers.h"

#include <algorithm>
#include <functional>

namespace {

// Doubling by hand, because the spare vectors have to grow together with the one that is filled.
template <class T> void reserveDoubling(std::vector<T>& vector, size_t needed) {
  if (vector.capacity() < needed) {
    vector.reserve(std::max(needed, vector.capacity() * 2));
  }
}

} // namespace

void CPdoBuffers::reserve(unsigned int size) {
  const size_t bytes = m_vecBytes.size() + size;
  const size_t handles = static_cast<size_t>(m_uiHandles) + 1;
  reserveDoubling(m_vecBytes, bytes);
  reserveDoubling(m_vecSpareBytes, bytes);
  reserveDoubling(m_vecItems, handles);
  reserveDoubling(m_vecRuns, handles);
}

unsigned int CPdoBuffers::add(unsigned int size) noexcept {
  const auto position = static_cast<unsigned int>(m_vecBytes.size());
  ++m_uiHandles;
  m_vecBytes.resize(m_vecBytes.size() + size);
  return position;
}

void CPdoBuffers::clear() {
  m_vecBytes.clear();
  m_vecSpareBytes.clear();
  m_vecItems.clear();
  m_vecRuns.clear();
  m_uiHandles = 0;
}

void CPdoBuffers::arrange() {
  sortByPlace();
  m_vecRuns.clear();
  m_vecSpareBytes.clear();
  for (const _ITEM& item : m_vecItems) {
    const auto position = static_cast<unsigned int>(m_vecSpareBytes.size());
    const unsigned char* const bytes = at(*item.position);
    m_vecSpareBytes.insert(m_vecSpareBytes.end(), bytes, bytes + item.size);
    *item.position = position;
    appendRun(item);
  }
  m_vecBytes.swap(m_vecSpareBytes);
}

// By place in the image, unless entries overlap there: then the order of the ids decides who is copied last.
void CPdoBuffers::sortByPlace() {
  // The position fields lie in the table of handles, so their addresses grow with the ids. That makes both
  // orders total: no stable sort, which would allocate.
  const auto byId = [](const _ITEM& a, const _ITEM& b) { return std::less<>()(a.position, b.position); };
  std::sort(m_vecItems.begin(), m_vecItems.end(), [&byId](const _ITEM& a, const _ITEM& b) {
    return a.imageOffset != b.imageOffset ? a.imageOffset < b.imageOffset : byId(a, b);
  });
  unsigned int end = 0;
  bool overlap = false;
  for (const _ITEM& item : m_vecItems) {
    overlap = overlap || (item.copied > 0 && item.imageOffset < end);
    end = item.copied > 0 ? item.imageOffset + item.copied : end;
  }
  if (overlap) {
    std::sort(m_vecItems.begin(), m_vecItems.end(), byId);
  }
}

void CPdoBuffers::appendRun(const _ITEM& item) {
  if (item.copied == 0) {
    return;
  }
  if (!m_vecRuns.empty()) {
    _RUN& run = m_vecRuns.back();
    if (run.imageOffset + run.length == item.imageOffset && run.position + run.length == *item.position) {
      run.length += item.copied;
      return;
    }
  }
  m_vecRuns.push_back(_RUN{item.imageOffset, *item.position, item.copied});
}
