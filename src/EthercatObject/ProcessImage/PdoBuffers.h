#ifndef ETHERCATOBJECT_PROCESSIMAGE_PDOBUFFERS_H
#define ETHERCATOBJECT_PROCESSIMAGE_PDOBUFFERS_H

#include <cstring>
#include <vector>

// The value bytes of all process-data handles of one direction, in one block, and the runs in which they move
// between this block and the domain image. Values of entries that lie next to each other in the image lie
// next to each other here, so that they move together.
//
// arrange() sorts the block anew after handles came, went or got their places in the image. Every byte of
// memory it needs has been set aside by reserve(), so it may run inside the cycle.
class CPdoBuffers {
public:
  // One live handle. `position` (in this block) is updated by arrange(). Only `copied` bytes of it move; 0
  // for an entry without a place in the image.
  struct _ITEM {
    unsigned int* position;
    unsigned int size;
    unsigned int imageOffset;
    unsigned int copied;
  };

  // Takes the memory for one more handle of this size; not for the cycle.
  void reserve(unsigned int size);
  // Adds zeroed bytes for a new handle, which memory was reserved for, at the end of the block; returns their
  // position.
  unsigned int add(unsigned int size) noexcept;
  void clear();

  unsigned char* at(unsigned int position) { return m_vecBytes.data() + position; }
  const unsigned char* at(unsigned int position) const { return m_vecBytes.data() + position; }

  // Call beginItems(), addItem() for every live handle in id order, then arrange(). Where entries overlap in
  // the image, the one with the highest id is copied last.
  void beginItems() { m_vecItems.clear(); }
  void addItem(const _ITEM& item) { m_vecItems.push_back(item); }
  void arrange();

  void copyFromImage(const unsigned char* image) {
    for (const _RUN& run : m_vecRuns) {
      copyBytes(m_vecBytes.data() + run.position, image + run.imageOffset, run.length);
    }
  }
  void copyToImage(unsigned char* image) const {
    for (const _RUN& run : m_vecRuns) {
      copyBytes(image + run.imageOffset, m_vecBytes.data() + run.position, run.length);
    }
  }

private:
  struct _RUN {
    unsigned int imageOffset;
    unsigned int position;
    unsigned int length;
  };

  // Most runs are short: without a call, as two halves that overlap in the middle.
  template <unsigned int HALF>
  static void copyHalves(unsigned char* to, const unsigned char* from, unsigned int length) {
    unsigned char first[HALF];
    unsigned char last[HALF];
    std::memcpy(first, from, HALF);
    std::memcpy(last, from + length - HALF, HALF);
    std::memcpy(to, first, HALF);
    std::memcpy(to + length - HALF, last, HALF);
  }
  static void copyBytes(unsigned char* to, const unsigned char* from, unsigned int length) {
    if (length > 32) {
      std::memcpy(to, from, length);
    } else if (length >= 16) {
      copyHalves<16>(to, from, length);
    } else if (length >= 8) {
      copyHalves<8>(to, from, length);
    } else if (length >= 4) {
      copyHalves<4>(to, from, length);
    } else if (length >= 2) {
      copyHalves<2>(to, from, length);
    } else {
      *to = *from;
    }
  }
  void sortByPlace();
  void appendRun(const _ITEM& item);

  std::vector<unsigned char> m_vecBytes;
  std::vector<unsigned char> m_vecSpareBytes; // target of the next arrange()
  std::vector<_ITEM> m_vecItems;
  std::vector<_RUN> m_vecRuns;
  unsigned int m_uiHandles = 0; // ever added since clear(): bound of items and runs
};

#endif
