#include "EthercatObject/Sdo/SdoService.h"

#include "EthercatObject/Platform.h"
#include "EthercatObject/Sdo/SdoArming.h"
#include "EthercatObject/Sdo/SdoRequests.h"

#include <gmock/gmock.h>

using namespace runtime_test;
using ethercat_simulation::SdoFault;

namespace {

class Sdo : public Platform {
protected:
  Sdo() { lines.clear(); }
  static bool collect(unsigned int level, const char* text) {
    lines += std::to_string(level) + " " + text;
    return true;
  }
  unsigned int make(const _SDO_INFO_KEY& of, bool read, unsigned long size = 1) {
    unsigned int id = 7;
    requests.create(of, config, {DATA_TYPE_USINT, size, 500}, read, &id);
    return id;
  }
  void cycle(unsigned int alStates = EC_AL_STATE_PREOP) {
    ecrt_master_receive(master);
    service.step(alStates, requests.objects(), requests.issued());
    ecrt_master_send(master);
  }

  static inline std::string lines;
  ec_slave_config_t* config = configure(0);
  CSdoRequests requests;
  CSdoService service{collect};
  const _SDO_INFO_KEY key{0, 0x2000, 0, false};
};

TEST_F(Sdo, EveryStepOfAReadAndAWriteReportsItself) {
  make(key, true);
  _SDO_INFO_OBJECT* const object = requests.find(make(key, false));
  ecrt_master_activate(master);
  for (int i = 0; i < 20; ++i) { // a slave that climbs answers nobody
    cycle();
  }
  bus().setSdoCycles(2);
  double value = 0;
  for (const bool read : {true, false}) {
    const std::string start = read ? "3 ReadSDO:" : "3 WriteSDO:";
    const std::string failed = start + "EC_REQUEST_ERROR\n";
    lines.clear();
    bool done = false;
    service.wake(read ? CSdoArming::readValues(object, &value, 1, &done)
                      : CSdoArming::writeBytes(object, "\x09", 1, &done));
    for (int i = 0; i < 20 && !done; ++i) {
      const bool hasFailed = lines.find(failed) != std::string::npos;
      bus().setSdoFault(0, 0x2000, 0, hasFailed ? SdoFault::none : SdoFault::abort);
      cycle();
    }
    EXPECT_EQ(lines, start + "ecrt_sdo_request_" + (read ? "read" : "write") + " called!\n" + start +
                         "EC_REQUEST_BUSY\n" + failed + start + "EC_REQUEST_BUSY\n" + start +
                         "EC_REQUEST_SUCCESS\n");
  }
  EXPECT_EQ(value, 1);
  EXPECT_EQ(bus().objectValue(0, 0x2000, 0), Bytes{9});
  // Below PREOP it rests; a request that is withdrawn then is never issued.
  bool done = false;
  service.wake(CSdoArming::readValues(object, &value, 1, &done));
  cycle(EC_AL_STATE_INIT);
  requests.destroy(0, true);
  cycle();
  EXPECT_EQ(bus().callCount(Call::sdoRead), 2U);
}

TEST_F(Sdo, RequestsAreSharedRefusedWithALineAndMadeAgain) {
  const _SDO_INFO_KEY whole{0, 0x2000, 0, true};
  const auto isWrong = [&](const _SDO_INFO_KEY& of, int type, unsigned long size) {
    return !CSdoRequests::checkSdoSize(of, {static_cast<ETHERCAT_DATA_TYPE>(type), size, 0});
  };
  EXPECT_EQ(textOf([&] {
              EXPECT_FALSE(isWrong(key, DATA_TYPE_UDINT, 4) || isWrong(whole, DATA_TYPE_RAW, 3));
              EXPECT_TRUE(isWrong(key, DATA_TYPE_UDINT, 6) && isWrong(key, 11, 4) && isWrong(whole, 0, 0));
            }),
            "Unexpected Sdo size.\nUnexpected Sdo size.\nUnexpected sdo size.\n");
  EXPECT_EQ(CSdoArming::sdoSizeOf(DATA_TYPE_UDINT, 0x40000001), 0U) << "its bytes would wrap to 4";

  const std::string failedComplete = "Failed to create complete SDO request.\n";
  bus().failNext(Call::createSdoRequest);
  bus().failNext(Call::createSdoRequestComplete);
  EXPECT_EQ(textOf([&] { EXPECT_TRUE(make(key, true) == ~0U && make(whole, true, 2) == ~0U); }),
            "Failed to create SDO request.\n" + failedComplete);
  EXPECT_TRUE(make(key, true) == 0 && make(whole, true, 4) == 1);
  EXPECT_EQ(make(key, false, 2), 0U) << "shared; the size stays";
  // After a deactivation what was armed starts over, and what is refused now is free.
  EXPECT_TRUE(CSdoArming::writeBytes(requests.find(0), "\x05", 1, nullptr));
  bus().failNext(Call::createSdoRequestComplete);
  const auto renew = [&] {
    requests.renew([this](unsigned int slave) { return slave == 0 ? config : nullptr; });
  };
  EXPECT_EQ(textOf(renew), failedComplete);
  EXPECT_TRUE(requests.find(1)->isFree() && !requests.find(1)->users.has(true) &&
              requests.find(0)->isArmed(false));
  requests.drop();
  EXPECT_TRUE(requests.find(0)->isFree());
  requests.clear();
  EXPECT_TRUE(requests.find(0) == nullptr && make(key, false) == 0) << "the keys are forgotten as well";
}

TEST_F(Sdo, ATransferIsArmedOnceInADirectionAndSizeThatTheRequestHas) {
  _SDO_INFO_OBJECT* const reader = requests.find(make(key, true));
  _SDO_INFO_OBJECT* const writer = requests.find(make({0, 0x2000, 1, false}, false, 2));
  double values[2] = {};
  unsigned char bytes[3] = {};
  const std::string size = "SDO do not match field size\n";
  EXPECT_EQ(textOf([&] {
              EXPECT_FALSE(CSdoArming::readBytes(nullptr, bytes, 1, nullptr) ||
                           CSdoArming::readBytes(writer, nullptr, 2, nullptr) ||
                           CSdoArming::readValues(writer, values, 2, nullptr) ||
                           CSdoArming::writeBytes(reader, bytes, 1, nullptr) ||
                           CSdoArming::readBytes(reader, bytes, 2, nullptr) ||
                           CSdoArming::writeValues(writer, values, 1, nullptr) ||
                           CSdoArming::writeBytes(writer, bytes, 3, nullptr));
            }),
            "SDO don't create with readable flag\nSDO don't create with writable flag\n" + size + size +
                size);
  for (const bool first : {true, false}) { // the second time, each is pending
    EXPECT_EQ(CSdoArming::readValues(reader, values, 1, nullptr), first);
    EXPECT_EQ(CSdoArming::writeValues(writer, values, 2, nullptr), first);
  }
}

} // namespace
