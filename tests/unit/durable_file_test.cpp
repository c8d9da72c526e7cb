#include "platform/DurableFile.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"
#include "support/Files.hpp"
#include "support/OtherProcess.hpp"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace lumoscad {
namespace {

using testing::HasSubstr;
using testing::UnorderedElementsAre;

class DurableFile : public testing::Test {
 protected:
  [[nodiscard]] std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }
  static std::size_t Descriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }
  /// The text of what `action` raises.
  template <typename Action> static std::string Failure(Action action) {
    try {
      action();
    } catch (const RuntimeError& error) {
      return error.Text();
    }
    return "";
  }

  test::TemporaryFolder folder_;
  std::string path_ = folder_ / "file";
  std::string beside_ = folder_ / "beside";
};

TEST_F(DurableFile, IsReplacedWholeAndPrivate) {
  const mode_t before = ::umask(0);
  ReplaceLocalFile(path_, beside_, "one");
  ReplaceLocalFile(path_, beside_, "two");
  ::umask(before);
  EXPECT_EQ(test::FileText(path_), "two");
  EXPECT_THAT(Names(), UnorderedElementsAre("file"));
  struct stat state {};
  ASSERT_EQ(::stat(path_.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0600U);
}

TEST_F(DurableFile, LeavesTheOldContentWhereTheNewOneCannotBeWritten) {
  ReplaceLocalFile(path_, beside_, "one");
  std::filesystem::create_directory(beside_);
  EXPECT_THAT(Failure([&] { ReplaceLocalFile(path_, beside_, "two"); }), HasSubstr(beside_));
  std::filesystem::remove(beside_);
  std::filesystem::create_symlink(path_, beside_);
  EXPECT_THAT(Failure([&] { ReplaceLocalFile(path_, beside_, "two"); }), HasSubstr(beside_));
  EXPECT_EQ(test::FileText(path_), "one");
}

TEST_F(DurableFile, LeavesNothingBesideWhereTheNameIsADirectory) {
  std::filesystem::create_directory(path_);
  EXPECT_THAT(Failure([&] { ReplaceLocalFile(path_, beside_, "two"); }), HasSubstr("c'è una cartella"));
  EXPECT_THAT(Names(), UnorderedElementsAre("file"));
}

TEST_F(DurableFile, FollowsNoLinkInItsPlace) {
  const std::string other = folder_ / "other";
  WriteLocalFile(other, "other");
  std::filesystem::create_symlink(other, path_);
  ReplaceLocalFile(path_, beside_, "mine");
  EXPECT_EQ(test::FileText(other), "other");
  EXPECT_EQ(test::FileText(path_), "mine");
  EXPECT_FALSE(std::filesystem::is_symlink(path_));
}

TEST_F(DurableFile, OverTheLimitOfTheProcessIsRefusedWithoutASignal) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit small = before;
  small.rlim_cur = 10;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::string failure = Failure([&] { ReplaceLocalFile(path_, beside_, "eleven byte"); });
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_THAT(failure, HasSubstr("troppo grande"));
  EXPECT_THAT(Names(), UnorderedElementsAre());
}

class HeldFileTest : public DurableFile {};

TEST_F(HeldFileTest, IsNewAndLeavesWhatStandsInItsPlace) {
  for (const auto& make : std::vector<std::function<void()>>{
           [&] { WriteLocalFile(path_, "there"); }, [&] { std::filesystem::create_directory(path_); },
           [&] { std::filesystem::create_symlink("/nowhere", path_); }}) {
    make();
    EXPECT_FALSE(HeldFile::Publish(path_, beside_, "mine"));
    EXPECT_THAT(Names(), UnorderedElementsAre("file"));
    std::filesystem::remove(path_);
  }
  EXPECT_TRUE(HeldFile::Publish(path_, beside_, "mine"));
  EXPECT_EQ(test::FileText(path_), "mine");
}

TEST_F(HeldFileTest, IsHeldAsLongAsItsObjectLives) {
  auto held = HeldFile::Publish(path_, beside_, "mine");
  ASSERT_TRUE(held);
  EXPECT_TRUE(HeldBySomebody(path_));
  EXPECT_FALSE(HeldFile::Take(path_));
  HeldFile moved = std::move(*held);
  held.reset();
  EXPECT_TRUE(HeldBySomebody(path_));
  moved.LetGo();
  EXPECT_FALSE(HeldBySomebody(path_));
  EXPECT_TRUE(HeldFile::Take(path_));
}

TEST_F(HeldFileTest, GoesWithTheProcessThatHeldIt) {
  test::OtherProcess other([&] {
    static const auto Held = HeldFile::Publish(path_, beside_, "theirs");
    if (!Held) {
      throw RuntimeError(errors::FileAccess, "not held");
    }
  });
  ASSERT_TRUE(other.Succeeded());
  EXPECT_TRUE(HeldBySomebody(path_));
  other.Kill();
  EXPECT_FALSE(HeldBySomebody(path_));
  EXPECT_EQ(test::FileText(path_), "theirs");
}

TEST_F(HeldFileTest, IsNotHeldByAChildForkedMeanwhile) {
  auto held = HeldFile::Publish(path_, beside_, "mine");
  ASSERT_TRUE(held);
  const test::OtherProcess child([&] {
    if (held->Held()) {
      throw RuntimeError(errors::FileAccess, "held by the child");
    }
    held.reset();
  });
  EXPECT_TRUE(child.Succeeded());
  EXPECT_TRUE(HeldBySomebody(path_)) << "the child let go of it";
  held.reset();
  EXPECT_FALSE(HeldBySomebody(path_)) << "the child holds it";
}

TEST_F(HeldFileTest, ClosesNoFileThatHasGotItsNumberMeanwhile) {
  auto held = HeldFile::Publish(path_, beside_, "mine");
  ASSERT_TRUE(held);
  // A calling program that closes all it does not know, and opens others.
  std::vector<int> others;
  ::closefrom(3);
  for (int count = 0; count < 10; ++count) {
    others.push_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  }
  held.reset();
  for (const int other : others) {
    EXPECT_EQ(::close(other), 0);
  }
}

TEST_F(HeldFileTest, LeavesNoDescriptorBehind) {
  const std::size_t before = Descriptors();
  for (int count = 0; count < 200; ++count) {
    const auto held = HeldFile::Publish(path_, beside_, "mine");
    ASSERT_TRUE(held);
    EXPECT_FALSE(HeldFile::Publish(path_, beside_, "again"));
    ReplaceLocalFile(folder_ / "phase", beside_, "phase");
    ASSERT_TRUE(RemoveLocalFile(path_));
  }
  EXPECT_EQ(Descriptors(), before);
}

TEST_F(HeldFileTest, StandsClearOfTheStandardStreams) {
  const int input = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  const auto held = HeldFile::Publish(path_, beside_, "mine");
  const int free = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::dup2(input, STDIN_FILENO);
  ::close(input);
  ASSERT_TRUE(held);
  EXPECT_EQ(free, STDIN_FILENO);
}

TEST(LocalFileReading, IsOfAWholeFileUpToAMaximum) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "file";
  WriteLocalFile(path, std::string("a\0b\n", 4));
  EXPECT_EQ(ReadLocalFile(path, 4), std::string("a\0b\n", 4));
  EXPECT_THROW(static_cast<void>(ReadLocalFile(path, 3)), RuntimeError);
  WriteLocalFile(path, "");
  EXPECT_EQ(ReadLocalFile(path, 3), "");
}

TEST_F(DurableFile, IsMarkedInItsPlaceByItsHolderAlone) {
  ReplaceLocalFile(path_, beside_, "one");
  auto held = HeldFile::Take(path_);
  ASSERT_TRUE(held);
  EXPECT_FALSE(MarkedInPlace(path_));
  held->MarkInPlace();
  EXPECT_TRUE(MarkedInPlace(path_));
  EXPECT_EQ(test::FileText(path_), "one");
  struct stat state {};
  ASSERT_EQ(::stat(path_.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 07777U, static_cast<unsigned>(S_IRUSR | S_IWUSR | S_ISVTX)) << "still nobody else's";
  ReplaceLocalFile(path_, beside_, "two");
  held->MarkInPlace();
  EXPECT_FALSE(MarkedInPlace(path_)) << "another file than the one that is held";
  held->LetGo();
  held->MarkInPlace();
  EXPECT_FALSE(MarkedInPlace(path_));
}

} // namespace
} // namespace lumoscad
