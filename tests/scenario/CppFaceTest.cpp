// igh_master.hpp: who owns what, and for how long.
#include "Fixture.h"

#include <igh_master.hpp>

namespace {

using namespace scenario;
using igh_master::Input;
using igh_master::Master;
using igh_master::Output;
using igh_master::SdoRequest;
using std::chrono::milliseconds;

template <class T>
constexpr bool OWNS = std::is_nothrow_move_constructible_v<T>&& std::is_nothrow_move_assignable_v<T> &&
                      !std::is_copy_constructible_v<T> && !std::is_copy_assignable_v<T>;
static_assert(OWNS<Master> && OWNS<Input<>> && OWNS<Output<int>> && OWNS<SdoRequest<std::uint64_t>>);

class CppFaceTest : public Scenario {
protected:
  CppFaceTest() {
    const Device device{0x10,
                        {{"Out", "DINT"}, {"Wide", "LREAL"}},
                        {{"In", "DINT"}, {"Far", "LREAL"}},
                        "",
                        true,
                        {{0x4000, 0, {0xFE, 0xFF, 5, 0}}, {0x4001, 0, {1, 0, 2, 0}}}};
    build({device});
    quietly([&] { igh_master_uninitialize(0); });
    master = Master::open(0, milliseconds(1));
    EXPECT_TRUE(describe({device}));
    quietly([&] { EXPECT_TRUE(master->scan() == 1U && master->configure()); });
  }
  ~CppFaceTest() override {
    quietly([&] { master.reset(); });
  }
  void toOp() {
    EXPECT_TRUE(master->activate());
    cycleUntil(igh_master::OP);
  }
  void exchange(int count) {
    while (count-- > 0)
      master->exchange();
  }
  std::optional<Master> master;
};

TEST_F(CppFaceTest, ValuesHaveTheirTypes) {
  auto out = master->output<int>(0, "Out");
  auto wide = master->output(0, "Wide");
  auto narrow = master->input<std::uint8_t>(0, "In");
  auto exact = master->input<std::int64_t>(0, "Far");
  EXPECT_FALSE(master->input(0, "Nothing") || master->output(1, "Out"));
  toOp();
  constexpr double MAX = 9223372036854775807.0;
  for (const auto& [sent, received, sentWide, receivedWide] : {std::tuple{200, 200, -7.9, std::int64_t{-7}},
                                                               {256, 255, MAX, INT64_MAX},
                                                               {-1, 0, -2 * MAX, INT64_MIN},
                                                               {0, 0, std::nan(""), std::int64_t{0}}}) {
    *out = sent;
    wide->set(sentWide);
    exchange(3);
    EXPECT_EQ(narrow->get(), received);
    EXPECT_EQ(*exact, receivedWide);
  }
}

TEST_F(CppFaceTest, OwnersGiveBackOnceAndOnlyWhatIsTheirs) {
  double value = 0;
  auto first = master->input(0, "In");
  auto second = master->input(0, "In");
  const std::uint32_t id = first->id();
  EXPECT_EQ(second->id(), id);
  Input<> moved = std::move(*first);
  first.reset();
  moved = std::move(*second);
  EXPECT_TRUE(igh_master_pdo_recv(0, id, &value));
  { Input<> last = std::move(moved); }
  EXPECT_FALSE(igh_master_pdo_recv(0, id, &value));

  auto old = master->input(0, "In");
  quietly([&] { EXPECT_TRUE(master->scan() && master->configure()); });
  auto young = master->input(0, "In");
  EXPECT_TRUE(!old->valid() && young->valid());
  old.reset(); // has the number of the young one
  EXPECT_TRUE(igh_master_pdo_recv(0, young->id(), &value));
  quietly([&] {
    master = std::nullopt;
    EXPECT_FALSE(Master::open(0, milliseconds(5000)) || Master::open(0, milliseconds(-1)));
    master = Master::open(0, milliseconds(2), {false, true, true});
    EXPECT_FALSE(Master::open(0, milliseconds(1)));
  });
  EXPECT_TRUE(!young->valid() && master->period() == milliseconds(2) && bus().reserved());
  Master other = std::move(*master);
  master = std::move(other);
  EXPECT_TRUE(bus().reserved());
}

TEST_F(CppFaceTest, CallbacksAreObjects) {
  toOp();
  std::string told;
  auto handler = [&](igh_master::ErrorSlave slave, ETHERCAT_ERROR_CODE code) {
    told += (slave ? std::to_string(*slave) : "*") + "/" + std::to_string(code) + " ";
  };
  master->onError(handler);
  bus().dropFrames(1);
  bus().setErrorFlag(0, true);
  int calls = 0;
  for (int i = 0; i < 2; ++i)
    master->exchange([&calls] { ++calls; });
  EXPECT_EQ(calls, 2);
  EXPECT_THAT(told, testing::HasSubstr("*/1 "));
  EXPECT_THAT(told, testing::HasSubstr("0/3 "));
  EXPECT_EQ(master->timing(COMM_DIAG_LAST).time, lastCycle().time);
  EXPECT_EQ(master->readRegister<std::uint16_t>(0, 0x0000),
            bus().registers(0, 0, 2)[0] | bus().registers(0, 0, 2)[1] << 8);
}

TEST_F(CppFaceTest, RequestsKeepTheirBuffersInPlace) {
  using Pair = std::array<std::int16_t, 2>;
  auto request = master->sdoRequest<Pair>(0, 0x4000, 0);
  auto shared = master->sdoRequest<Pair>(0, 0x4000, 0);
  auto alone = master->sdoRequest<Pair>(0, 0x4001, 0);
  EXPECT_FALSE(master->sdoRequest<Pair>(1, 0x4000, 0));
  toOp();
  EXPECT_TRUE(request->read() && !request->done() && !request->read());
  SdoRequest<Pair> moved = std::move(*request);
  exchange(20);
  EXPECT_TRUE(moved.done() && moved.value() == (Pair{-2, 5}));
  EXPECT_TRUE(moved.write({7, -8}) && !moved.done());
  exchange(20);
  EXPECT_TRUE(moved.done());
  request = std::move(moved);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0), (Bytes{7, 0, 0xF8, 0xFF}));
  for (auto* left : {&request, &alone}) {
    EXPECT_TRUE((*left)->read());
    left->reset(); // withdrawn, or going on for the other user: nothing writes to what is gone
  }
  exchange(20);
  EXPECT_TRUE(shared->read());
  exchange(20);
  EXPECT_TRUE(shared->done() && shared->value() == (Pair{7, -8}));
}

} // namespace
