#include "EthercatObject/BusWatch/BusWatch.h"

#include "EthercatObject/Platform.h"

using namespace runtime_test;

namespace {

class BusWatch : public Platform {
protected:
  BusWatch() {
    ecrt_master_activate(master);
    const auto append = [](unsigned int device, unsigned int slave, int code, void* codes) {
      *static_cast<int*>(codes) = *static_cast<int*>(codes) * 10 + code;
      EXPECT_TRUE(device == 7 && slave == (code == 3 ? 1 : ETHERCAT_ERROR_WHOLE_MASTER));
    };
    watch.setErrorCallback(append, &errors);
  }
  // The codes of the errors in these cycles, as digits of a number.
  int cycle(unsigned long scannedSlaves, int cycles = 30) {
    for (errors = 0; cycles > 0; --cycles) {
      ecrt_master_receive(master);
      watch.checkMaster(master, scannedSlaves);
      ecrt_master_send(master);
    }
    return errors;
  }
  int check(bool complete) {
    errors = 0;
    watch.checkWorkingCounter(complete);
    watch.checkSlave(master, second, 1);
    watch.checkLink(master);
    return errors;
  }

  ec_slave_config_t* first = configure(0);
  ec_slave_config_t* second = configure(1);
  CBusWatch watch{7};
  int errors = 0;
};

TEST_F(BusWatch, EveryErrorIsToldAsLongAsItLastsAndTheLastOneIsKept) {
  EXPECT_TRUE(cycle(9) == 0 && check(true) == 0) << "without a rescan no number of slaves matters";
  bus().setErrorFlag(1, true);
  bus().failNext(Call::linkState); // the record of a failed call reads as zero: no link
  EXPECT_EQ(check(false), 132);
  EXPECT_EQ(check(true), 3);
  bus().failNext(Call::configState);
  EXPECT_EQ(check(true), 0) << "zero: no error";
  watch.setErrorCallback(nullptr, nullptr);
  EXPECT_EQ(check(true), 0);
  EXPECT_EQ(watch.lastError(), ETHERCAT_ERROR_SLAVE_STATE);
}

TEST_F(BusWatch, TheEndOfARescanIsComparedWithTheScanOnceAndNotAcrossARestart) {
  cycle(2);
  EXPECT_TRUE(watch.alStates() == EC_AL_STATE_OP && watch.isExchanging());
  for (const auto& [scanned, error] : {std::pair{1UL, 4}, {2UL, 0}, {3UL, 5}}) {
    bus().removeSlave(1);
    bus().insertSlave(1, {});
    EXPECT_EQ(cycle(scanned), error);
  }
  bus().removeSlave(1);
  cycle(2, 3);
  for (int i = 0; i < 30; ++i) { // the rescan ends while the master is being activated again
    ecrt_master_receive(master);
    ecrt_master_send(master);
  }
  watch.requestTerminate();
  EXPECT_TRUE(watch.isRequestTerminate());
  watch.restart();
  EXPECT_TRUE(!watch.isRequestTerminate() && cycle(2) == 0);
}

} // namespace
