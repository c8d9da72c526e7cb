#include "platform/base/Descriptor.hpp"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <utility>

using lumoscad::base::Descriptor;

namespace {

Descriptor Open() {
  return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

bool InUse(int number) {
  return ::fcntl(number, F_GETFD) >= 0;
}

} // namespace

TEST(Descriptor, ClosesWhatItOwnsAtItsEnd) {
  int number = -1;
  {
    const Descriptor file = Open();
    number = file.Number();
    ASSERT_TRUE(file.Opened());
    ASSERT_TRUE(InUse(number));
  }
  EXPECT_FALSE(InUse(number));
}

TEST(Descriptor, IsNotOpenWithoutANumber) {
  Descriptor none;
  EXPECT_FALSE(none.Opened());
  EXPECT_FALSE(Descriptor(-1).Opened());
  EXPECT_EQ(none.Close(), 0);
}

TEST(Descriptor, HandsItsNumberOnWhenMoved) {
  Descriptor first = Open();
  const int number = first.Number();
  Descriptor second(std::move(first));
  EXPECT_EQ(second.Number(), number);
  Descriptor third = Open();
  const int replaced = third.Number();
  third = std::move(second);
  EXPECT_EQ(third.Number(), number);
  EXPECT_FALSE(InUse(replaced));
  EXPECT_TRUE(InUse(number));
}

TEST(Descriptor, KeepsItsNumberWhenMovedOntoItself) {
  Descriptor file = Open();
  Descriptor& same = file;
  file = std::move(same);
  EXPECT_TRUE(file.Opened());
  EXPECT_TRUE(InUse(file.Number()));
}

TEST(Descriptor, LeavesOpenWhatItReleases) {
  Descriptor file = Open();
  const int number = file.Release();
  EXPECT_FALSE(file.Opened());
  EXPECT_TRUE(InUse(number));
  EXPECT_EQ(Descriptor(number).Close(), 0);
  EXPECT_FALSE(InUse(number));
}

TEST(Descriptor, TellsThatTheClosingFailed) {
  Descriptor file = Open();
  ASSERT_EQ(::close(file.Number()), 0);
  errno = 0;
  EXPECT_EQ(file.Close(), -1);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(file.Close(), 0) << "it is tried once";
}
