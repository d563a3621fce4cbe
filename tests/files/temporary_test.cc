#include "norvane/files/temporary.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "norvane/core/log.h"
#include "norvane/files/folders.h"

namespace norvane::files {
namespace {

namespace fs = std::filesystem;

// All tests share one process-wide temporary directory, placed in a cache
// folder of their own.
class TemporaryStorage : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    cache_ = fs::path(::testing::TempDir()) / ("cache-" + std::to_string(::getpid()));
    setenv("XDG_CACHE_HOME", cache_.c_str(), 1);
    testing::forgetKeptFolders();
  }
  static fs::path root() { return cache_ / "norvane/TemporaryItems" / bundleName(); }
  static inline fs::path cache_;
};

TEST_F(TemporaryStorage, SameDirectoryEveryCallAndComesBack) {
  std::string first = temporaryDirectory();
  ASSERT_FALSE(first.empty());
  EXPECT_EQ(fs::path(first).parent_path(), root());
  std::ofstream(first + "/kept.txt") << "x";
  EXPECT_EQ(temporaryDirectory(), first);
  EXPECT_TRUE(fs::exists(first + "/kept.txt"));
  fs::remove_all(first);
  EXPECT_EQ(temporaryDirectory(), first);
  EXPECT_TRUE(fs::is_directory(first));
}

TEST_F(TemporaryStorage, NamedAndUniqueFolders) {
  std::string base = temporaryDirectory();
  EXPECT_EQ(temporaryDirectoryNamed(""), base);
  std::string named = temporaryDirectoryNamed("work");
  EXPECT_EQ(named, base + "/work");
  EXPECT_TRUE(fs::is_directory(named));
  EXPECT_TRUE(removeTemporaryDirectoryNamed("work"));
  EXPECT_FALSE(fs::exists(named));
  std::string unique1 = uniqueTemporaryDirectory(), unique2 = uniqueTemporaryDirectory();
  EXPECT_NE(unique1, unique2);
  EXPECT_TRUE(fs::is_directory(unique1));
  EXPECT_EQ(temporaryFileNamed("a.txt"), base + "/a.txt");
  EXPECT_FALSE(fs::exists(base + "/a.txt"));  // not created
}

TEST_F(TemporaryStorage, NonExistingNames) {
  std::string base = temporaryDirectoryNamed("names");
  std::string path = base + "/report.pdf";
  EXPECT_EQ(nonExistingFilenameAtPath(path), path);
  std::ofstream(path) << "1";
  EXPECT_EQ(nonExistingFilenameAtPath(path), base + "/report-1.pdf");
  std::ofstream(base + "/report-1.pdf") << "2";
  EXPECT_EQ(nonExistingFilenameAtPath(path), base + "/report-2.pdf");
  std::ofstream(base + "/README") << "3";
  EXPECT_EQ(nonExistingFilenameAtPath(base + "/README"), base + "/README-1");
  std::string longName(248, 'n');
  std::ofstream(base + "/" + longName + ".txt") << "4";
  std::string candidate = nonExistingFilenameAtPath(base + "/" + longName + ".txt");
  EXPECT_EQ(fs::path(candidate).filename().string().size(), 250u);
  EXPECT_EQ(nonExistingFilenameAtPath(""), "");
  EXPECT_EQ(nonExistingTemporaryFileNamed("fresh"), temporaryDirectory() + "/fresh");
}

TEST_F(TemporaryStorage, TemporaryFileRemovesItsItem) {
  std::string path = temporaryFileNamed("owned");
  {
    TemporaryFile file(path);
    std::ofstream(path) << "data";
    EXPECT_EQ(file.path(), path);
  }
  EXPECT_FALSE(fs::exists(path));
  LogCapture log;
  { TemporaryFile missing(temporaryFileNamed("never-made")); }
  EXPECT_TRUE(log.messages().empty());
}

TEST_F(TemporaryStorage, PathOperations) {
  std::string base = temporaryDirectoryNamed("ops");
  EXPECT_TRUE(createPath(base + "/a/b/c"));
  EXPECT_TRUE(createPath(base + "/a/b/c"));
  std::ofstream(base + "/file") << "x";
  EXPECT_FALSE(createPath(base + "/file"));
  EXPECT_FALSE(createPath(""));
  std::error_code error;
  EXPECT_TRUE(removePath(base + "/a", &error));
  EXPECT_FALSE(error);
  EXPECT_TRUE(removePath(base + "/a"));  // nothing there any more
  EXPECT_FALSE(removePath(""));
  if (::geteuid() != 0) {  // root may remove anything
    fs::create_directories(base + "/locked/inner");
    fs::permissions(base + "/locked", fs::perms::owner_read | fs::perms::owner_exec);
    LogCapture log;
    EXPECT_FALSE(removePath(base + "/locked/inner", &error));
    EXPECT_TRUE(error);
    EXPECT_TRUE(log.contains("Couldn't remove path " + base + "/locked/inner: "));
    fs::permissions(base + "/locked", fs::perms::owner_all);
  }
}

// Runs `body` in a forked child and answers its exit status.
template <typename Body>
int inChild(Body body) {
  pid_t pid = ::fork();
  if (pid == 0) _exit(body());
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(TemporaryStorage, ConcurrentProcessesKeepTheirFilesDeadOnesAreSwept) {
  std::string mine = temporaryDirectory();
  std::ofstream(mine + "/in-use") << "x";

  // A live sibling: a child that sets up its own directory and waits.
  int ready[2], release[2];
  ASSERT_EQ(::pipe(ready), 0);
  ASSERT_EQ(::pipe(release), 0);
  pid_t live = ::fork();
  if (live == 0) {
    // A forked child starts a directory of its own (its pid differs).
    std::string dir = fs::path(mine).parent_path().string() + "/" + std::to_string(::getpid());
    fs::create_directories(dir);
    int fd = ::open((dir + "/.owner").c_str(), O_RDWR | O_CREAT, 0600);
    ::flock(fd, LOCK_EX);
    std::ofstream(dir + "/busy") << "x";
    char c = 1;
    (void)!::write(ready[1], &c, 1);
    (void)!::read(release[0], &c, 1);
    _exit(0);
  }
  char c;
  ASSERT_EQ(::read(ready[0], &c, 1), 1);
  std::string liveDir = (root() / std::to_string(live)).string();

  // A dead sibling: a directory whose owner lock nobody holds.
  std::string deadDir = (root() / "999999999").string();
  fs::create_directories(deadDir);
  std::ofstream(deadDir + "/.owner") << "";
  std::ofstream(deadDir + "/left-behind") << "x";

  // A new process sweeping at its first call removes only the dead one.
  EXPECT_EQ(inChild([] { return temporaryDirectory().empty() ? 1 : 0; }), 0);
  EXPECT_TRUE(fs::exists(liveDir + "/busy"));
  EXPECT_TRUE(fs::exists(mine + "/in-use"));
  EXPECT_FALSE(fs::exists(deadDir));

  (void)!::write(release[1], &c, 1);
  ::waitpid(live, nullptr, 0);
  EXPECT_EQ(inChild([] { return temporaryDirectory().empty() ? 1 : 0; }), 0);
  EXPECT_FALSE(fs::exists(liveDir));  // its owner is gone now
  EXPECT_TRUE(fs::exists(mine + "/in-use"));
}

TEST_F(TemporaryStorage, LogFileNamesTheProgram) {
  EXPECT_NE(logFile().find("/norvane/logs/com.norvane." + bundleName() + ".log"), std::string::npos);
  EXPECT_EQ(bundleName(), "test_files");
}

}  // namespace
}  // namespace norvane::files
