#include "text/Redirection.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <unistd.h>

namespace {

TEST(KeptStdout, InPassingItWritesWhatAPipeHasRoomForEvenWhileSilencedAndWaitsForNobody) {
  int ends[2] = {};
  ASSERT_EQ(pipe(ends), 0);
  fcntl(ends[1], F_SETPIPE_SZ, 16384);
  const std::size_t room = static_cast<std::size_t>(fcntl(ends[1], F_GETPIPE_SZ));
  const int before = dup(STDOUT_FILENO);
  dup2(ends[1], STDOUT_FILENO);
  std::optional<igh_bus::KeptStdout> kept(std::in_place);
  {
    const igh_bus::StdoutSilencer silence;
    kept->writeInPassing("begin");
  }
  kept->writeInPassing(std::string(3 * room, '.')); // would block
  kept.reset();
  dup2(before, STDOUT_FILENO);
  close(ends[1]);
  std::string read(4 * room, '\0');
  std::size_t length = 0;
  for (ssize_t count = 0; (count = ::read(ends[0], read.data() + length, read.size() - length)) > 0;)
    length += static_cast<std::size_t>(count);
  EXPECT_EQ(read.substr(0, 5), "begin");
  EXPECT_LE(length, room);
  close(before);
  close(ends[0]);
}

} // namespace
