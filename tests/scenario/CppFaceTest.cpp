// igh_master.hpp: who owns what, and for how long.
#include "SdoFixture.h"

#include <igh_master.hpp>

namespace {

using namespace scenario;
using namespace igh_master;
using Pair = std::array<std::int16_t, 2>;
constexpr std::chrono::milliseconds PERIOD(1);
static_assert(!std::is_copy_constructible_v<Master> && !std::is_copy_assignable_v<Input<>> &&
              !std::is_copy_constructible_v<Output<int>> && !std::is_copy_constructible_v<SdoRequest<Pair>>);

class CppFaceTest : public SdoTest {
protected:
  CppFaceTest() : master((bus().addSlave(slaveOf(drive)), Master::open(0, PERIOD))) {
    EXPECT_TRUE(describe({drive}));
    quietly([this] { EXPECT_TRUE(master->scan() == 1U && master->configure()); });
  }
  std::optional<Master> master;
};

TEST_F(CppFaceTest, ValuesCallbacksAndRequests) {
  auto out = master->output<int>(0, "Out");
  auto narrow = master->input<std::int8_t>(0, "In");
  auto request = master->sdoRequest<Pair>(0, 0x4000, 0);
  auto shared = master->sdoRequest<Pair>(0, 0x4000, 0);
  auto alone = master->sdoRequest<std::uint16_t>(0, 0x2000, 1);
  EXPECT_FALSE(master->input(0, "No") || master->output(1, "Out") || master->sdoRequest<int>(1, 0x4000, 0));
  EXPECT_TRUE(master->activate());
  cycleUntil(OP);
  *out = 200;
  std::string told;
  auto handler = [&](ErrorSlave slave, int code) { told += (slave ? "0/" : "*/") + std::to_string(code); };
  master->onError(handler);
  bus().dropFrames(1);
  for (int i = 0; i < 4; bus().setErrorFlag(0, ++i == 3))
    master->exchange([&told] { told += "."; });
  EXPECT_EQ(told, ".*/1..0/3.");
  EXPECT_EQ(narrow->get(), 127);
  for (const auto& [value, held] :
       {std::pair{1e19, INT64_MAX}, {-1e19, INT64_MIN}, {std::nan(""), 0L}, {-7.9, -7L}})
    EXPECT_EQ(detail::convert<std::int64_t>(value), held);

  EXPECT_TRUE(request->read() && !request->done() && !request->read());
  SdoRequest<Pair> moved = std::move(*request);
  cycle(20);
  EXPECT_TRUE(moved.done() && moved.value() == (Pair{-2, 5}) && moved.write({7, -8}) && !moved.done());
  cycle(20);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0), (Bytes{7, 0, 0xF8, 0xFF}));
  EXPECT_TRUE(moved.read() && alone->read());
  alone.reset();                                 // is withdrawn
  { SdoRequest<Pair> ended = std::move(moved); } // goes on for the other user: nothing writes to what is gone
  cycle(20);
  EXPECT_TRUE(shared->read() && shared->write({1, 2}));
  while (!shared->done())
    cycle();
  EXPECT_EQ(shared->value(), (Pair{7, -8}));
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0), (Bytes{1, 0, 2, 0}));
}

TEST_F(CppFaceTest, OwnersGiveBackOnceAndOnlyWhatIsTheirs) {
  EXPECT_FALSE(Master::open(0, PERIOD)) << "there is one";
  double value = 0;
  auto old = master->input(0, "In");
  const std::uint32_t id = old->id();
  quietly([this] { EXPECT_TRUE(master->scan()); });
  auto first = master->input(0, "In");
  auto second = master->input(0, "In");
  EXPECT_EQ(first->id(), id);
  old.reset(); // has given back nothing of theirs
  Input<> moved = std::move(*first);
  first.reset();
  moved = std::move(*second);
  EXPECT_TRUE(igh_master_pdo_recv(0, id, &value));
  { Input<> last = std::move(moved); }
  EXPECT_FALSE(igh_master_pdo_recv(0, id, &value));
  old = master->input(0, "In");
  master = Master(std::move(*master));
  EXPECT_TRUE(old->valid() && bus().reserved());
  quietly([this] {
    master.reset();
    EXPECT_FALSE(Master::open(0, 5000 * PERIOD) || Master::open(0, -4000 * PERIOD));
  });
  EXPECT_FALSE(old->valid() || bus().reserved());
}

} // namespace
