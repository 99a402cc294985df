#include "EthercatObject/Reservation/Reservation.h"

#include "EthercatObject/Platform.h"

using namespace runtime_test;

namespace {

TEST_F(Platform, AReservationHoldsMasterAndDeviceFileUntilItIsReleased) {
  CReservation reservation(1);
  EXPECT_TRUE(reservation.master() == nullptr && reservation.device() == -1) << "no such master";
  EXPECT_EQ(textOf([&] { reservation.release(); }), "");
  bus(1);
  CReservation second(1);
  EXPECT_TRUE(bus(1).reserved() && bus(1).openDeviceFiles() == 1);
  for (const bool again : {false, true}) {
    bus(1).failNext(Call::activate);
    EXPECT_TRUE(!second.activate() && !second.isActive() && second.isUsed() == again);
    EXPECT_TRUE(second.activate() && second.isActive() && bus(1).active());
    second.deactivate();
    EXPECT_TRUE(!second.isActive() && second.isUsed() && !bus(1).active());
  }
  second.renew();
  EXPECT_TRUE(!second.isUsed() && bus(1).reserved());
  EXPECT_TRUE(bus(1).callCount(Call::requestMaster) == 2 && bus(1).callCount(Call::deviceOpen) == 1);
  EXPECT_EQ(textOf([&] { second.release(); }), "ecrt_release_master\n");
  EXPECT_TRUE(!bus(1).reserved() && bus(1).openDeviceFiles() == 0);
  EXPECT_EQ(textOf([&] { second.release(); }), "");
}

} // namespace
