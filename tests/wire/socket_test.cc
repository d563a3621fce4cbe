#include "norvane/wire/socket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace norvane::wire {
namespace {

namespace fs = std::filesystem;

// Sets or unsets an environment variable for one test.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    had_ = std::getenv(name) != nullptr;
    if (value) {
      ::setenv(name, value, 1);
    } else {
      ::unsetenv(name);
    }
  }
  ~ScopedEnv() {
    if (had_) {
      ::setenv(name_, old_.c_str(), 1);
    } else {
      ::unsetenv(name_);
    }
  }

 private:
  const char* name_;
  std::string old_;
  bool had_ = false;
};

fs::path makeTempDir() {
  std::string pattern = (fs::temp_directory_path() / "wire-socket-XXXXXX").string();
  EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
  return pattern;
}

TEST(Socket, NamedPathLivesInTheRuntimeDirectory) {
  fs::path dir = makeTempDir();
  ScopedEnv env("XDG_RUNTIME_DIR", dir.c_str());
  EXPECT_EQ(runtimeDirectory(), dir.string());
  EXPECT_EQ(namedSocketPath(kServiceName), (dir / "com.norvane.archive-helper").string());
  EXPECT_EQ(namedLockPath(kServiceName), (dir / "com.norvane.archive-helper.lock").string());
  EXPECT_EQ(namedSocketPath(""), "");
  EXPECT_EQ(namedSocketPath("a/b"), "");
  EXPECT_EQ(namedSocketPath(std::string(200, 'n')), "");  // too long for sun_path
  fs::remove_all(dir);
}

TEST(Socket, FallbackIsAPrivateFolderUnderTmp) {
  ScopedEnv env("XDG_RUNTIME_DIR", nullptr);
  std::string dir = runtimeDirectory();
  ASSERT_EQ(dir, "/tmp/norvane-" + std::to_string(::getuid()));
  struct stat st;
  ASSERT_EQ(::stat(dir.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0700u);
  EXPECT_EQ(st.st_uid, ::getuid());
}

TEST(Socket, RelativeRuntimeDirectoryIsIgnored) {
  ScopedEnv env("XDG_RUNTIME_DIR", "relative/dir");
  EXPECT_EQ(runtimeDirectory(), "/tmp/norvane-" + std::to_string(::getuid()));
}

TEST(Socket, ConnectsToAListenerAndSeesItsCredentials) {
  fs::path dir = makeTempDir();
  ScopedEnv env("XDG_RUNTIME_DIR", dir.c_str());
  const std::string path = namedSocketPath("test.name");
  int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, path.c_str());
  ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listener, 4), 0);

  int fd = connectNamedSocket("test.name");
  ASSERT_GE(fd, 0);
  auto credentials = peerCredentials(fd);
  ASSERT_TRUE(credentials.has_value());
  EXPECT_EQ(credentials->pid, ::getpid());
  EXPECT_EQ(credentials->uid, ::getuid());
  EXPECT_TRUE(isPeerSameUser(fd));
  ::close(fd);
  ::close(listener);

  // Nobody listens any more.
  EXPECT_EQ(connectNamedSocket("test.name"), -1);
  EXPECT_EQ(connectNamedSocket("missing.name"), -1);
  fs::remove_all(dir);
}

TEST(Socket, CredentialsOfANonSocketAreUnknown) {
  int fds[2];
  ASSERT_EQ(::pipe(fds), 0);
  EXPECT_FALSE(peerCredentials(fds[0]).has_value());
  EXPECT_FALSE(isPeerSameUser(fds[0]));
  ::close(fds[0]);
  ::close(fds[1]);
}

}  // namespace
}  // namespace norvane::wire
