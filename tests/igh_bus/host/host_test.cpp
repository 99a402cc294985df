// The rhythm of the cycles, and what makes their thread a real-time one.
#include "Program.h"
#include "host/RealTime.h"

#include <chrono>
#include <filesystem>
#include <sys/mman.h>
#include <thread>

using namespace igh_bus;

namespace {

TEST(Pacemaker, LeavesMissedPeriodsOutAndStaysOnItsGrid) {
  using namespace std::chrono;
  const auto start = steady_clock::now();
  Pacemaker pacemaker(2000000);
  std::this_thread::sleep_for(milliseconds(9));
  EXPECT_TRUE(pacemaker.wait()); // due after 2 ms: late by three periods at least
  EXPECT_GE(pacemaker.leftOut(), 3U);
  EXPECT_GE(pacemaker.latestNs(), 7000000);
  const auto periods = static_cast<std::int64_t>(pacemaker.leftOut()) + 2; // with the two waited for
  pacemaker.shift(5000000);
  EXPECT_TRUE(pacemaker.wait());
  EXPECT_GE(steady_clock::now() - start, milliseconds(2) * periods + milliseconds(5));
}

// The request holds for as long as its file is open.
TEST(RealTime, HoldsDeepIdleStatesOffWhileItLivesUnlessLeftToTheSystem) {
  const auto file = scratch("latency", "as it was");
  const auto isOpen = [&file] {
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      if (std::filesystem::read_symlink(descriptor, gone) == file)
        return true;
    }
    return false;
  };
  // In a thread of its own: it may become a real-time one.
  const auto inThread = [&](std::optional<int> priority, const std::string& request, bool open, bool hint) {
    std::thread([&] {
      const RealTime realTime(priority, std::nullopt, request);
      EXPECT_EQ(isOpen(), open) << request;
      EXPECT_EQ(realTime.hint().find(request + ": No such file") != std::string::npos, hint) << request;
    }).join();
  };
  inThread(std::nullopt, file, false, false);
  inThread(1, "", false, false);
  EXPECT_EQ(readFile(file), "as it was");
  inThread(1, file, true, false);
  EXPECT_FALSE(isOpen());
  EXPECT_EQ(readFile(file), std::string(4, '\0') + "t was"); // 0 us, as 32 bits
  inThread(1, file + "/none", false, false);
  inThread(1, file + ".none", false, true);
  munlockall();
  std::remove(file.c_str());
}

} // namespace
