// The walk of the SDO service over its table, with what another thread may arm in the middle of it.
#include "EthercatObject/Sdo/SdoCursor.h"

#include <gtest/gtest.h>

namespace {

TEST(SdoCursor, WhatIsArmedBehindTheCursorDuringAWalkIsFoundByTheNextOne) {
  for (unsigned long start = 0; start < 8; ++start) {
    CSdoCursor cursor;
    unsigned long asked = 0;
    bool armed = false; // the position that is asked first, while the walk asks for the last one
    const auto isArmed = [&](unsigned long request, bool read) {
      if (++asked == 8) {
        armed = true;
        cursor.wake();
      }
      return armed && 2 * request + (read ? 0 : 1) == start;
    };
    for (unsigned long i = 0; i < start; ++i) {
      cursor.advance(4);
    }
    EXPECT_FALSE(cursor.findArmed(4, isArmed));
    EXPECT_TRUE(cursor.findArmed(4, isArmed)) << start;
    EXPECT_EQ(2 * cursor.request() + (cursor.isRead() ? 0 : 1), start);
    // Idle: nothing is asked, and a forced request is taken along as by a walk.
    armed = false;
    EXPECT_FALSE(cursor.findArmed(4, isArmed));
    asked = 100;
    EXPECT_TRUE(cursor.force(3));
    EXPECT_FALSE(cursor.findArmed(4, isArmed));
    EXPECT_EQ(asked, 100U);
    EXPECT_TRUE(cursor.force(3));
  }
}

} // namespace
