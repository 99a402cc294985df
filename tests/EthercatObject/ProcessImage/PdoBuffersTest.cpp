#include "EthercatObject/ProcessImage/PdoBuffers.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>

namespace {

// What an entry is without any cleverness: its own bytes and one copy.
struct NaiveEntry {
  unsigned int size;
  unsigned int offset;
  unsigned int copied;
  bool live;
  std::vector<unsigned char> bytes;
};

class PdoBuffers : public testing::TestWithParam<bool> {}; // with overlaps
INSTANTIATE_TEST_SUITE_P(Image, PdoBuffers, testing::Bool());

TEST_P(PdoBuffers, ManyEntriesMoveAsIfEachWereCopiedAlone) {
  constexpr unsigned int ENTRIES = 4096;
  std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed): the same case every time
  const auto below = [&](unsigned int bound) { return static_cast<unsigned int>(random() % bound); };
  std::vector<unsigned int> slots(ENTRIES);
  for (unsigned int i = 0; i < ENTRIES; ++i) {
    slots[i] = GetParam() ? below(ENTRIES) * 3 : i * 8;
  }
  std::shuffle(slots.begin(), slots.end(), random);

  CPdoBuffers buffers;
  std::vector<NaiveEntry> naive;
  std::vector<unsigned int> positions(ENTRIES);
  std::vector<unsigned char> image(ENTRIES * 8 + 8);
  for (unsigned int i = 0; i < ENTRIES; ++i) {
    const unsigned int size = 1U << below(4);
    naive.push_back({size, slots[i], below(5) == 0 ? 0 : below(9) == 0 ? 1 : size, true, {}});
    naive[i].bytes.resize(size);
    buffers.reserve(size);
    positions[i] = buffers.add(size);
  }
  for (int round = 0; round < 4; ++round) {
    buffers.beginItems();
    for (unsigned int i = 0; i < ENTRIES; ++i) {
      naive[i].live = naive[i].live && below(8) != 0; // some handles are gone since the last round
      if (naive[i].live) {
        const unsigned int offset = naive[i].copied == 0 ? UINT_MAX : naive[i].offset;
        buffers.addItem({&positions[i], naive[i].size, offset, naive[i].copied});
      }
    }
    buffers.arrange();
    std::generate(image.begin(), image.end(), [&] { return static_cast<unsigned char>(random()); });
    buffers.copyFromImage(image.data());
    std::vector<unsigned char> expected = image;
    for (unsigned int i = 0; i < ENTRIES; ++i) {
      if (!naive[i].live) {
        continue;
      }
      std::copy_n(image.begin() + naive[i].offset, naive[i].copied, naive[i].bytes.begin());
      ASSERT_TRUE(std::equal(naive[i].bytes.begin(), naive[i].bytes.end(), buffers.at(positions[i]))) << i;
      for (unsigned int j = 0; j < naive[i].size; ++j) {
        naive[i].bytes[j] = static_cast<unsigned char>(random());
        buffers.at(positions[i])[j] = naive[i].bytes[j];
      }
      std::copy_n(naive[i].bytes.begin(), naive[i].copied, expected.begin() + naive[i].offset);
    }
    buffers.copyToImage(image.data());
    ASSERT_EQ(image, expected);
  }
}

} // namespace
