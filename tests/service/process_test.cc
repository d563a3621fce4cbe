// The norvane-helper process over real Unix sockets: both channels, the
// reply rules, misbehaving peers, a second helper, terminate, and crashing
// importers. Each test has a private runtime folder, so it never meets a
// user's own helper.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "bundle_fixture.h"
#include "norvane/wire/frame.h"
#include "norvane/wire/message.h"
#include "norvane/wire/socket.h"

extern char** environ;

namespace norvane::service {
namespace {

using namespace std::chrono_literals;
using testing_support::BundleSpec;
using testing_support::pluginLibrary;
using testing_support::TemporaryFolder;
using testing_support::writeBundle;
using testing_support::writeFile;

constexpr const char* kServiceName = "com.norvane.archive-helper";

// A running norvane-helper; killed when the object goes, if still alive.
class HelperProcess {
 public:
  HelperProcess(const std::string& runtime, const std::string& importerPath, const std::string& logPath,
                int listenerFd = -1) {
    std::vector<std::string> env;
    for (char** e = environ; *e; ++e) {
      std::string_view entry = *e;
      bool ours = entry.starts_with("XDG_RUNTIME_DIR=") || entry.starts_with("NORVANE_IMPORTER_PATH=") ||
                  entry.starts_with("LISTEN_") || entry.starts_with("NOTIFY_SOCKET=");
      if (!ours) env.emplace_back(entry);
    }
    env.push_back("XDG_RUNTIME_DIR=" + runtime);
    env.push_back("NORVANE_IMPORTER_PATH=" + importerPath);
    if (listenerFd >= 0) env.push_back("LISTEN_FDS=1");
    std::vector<char*> envp;
    for (std::string& e : env) envp.push_back(e.data());
    char listenPid[32] = "LISTEN_PID=";
    envp.push_back(listenerFd >= 0 ? listenPid : nullptr);
    envp.push_back(nullptr);
    int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    char* argv[] = {const_cast<char*>(NORVANE_HELPER_PATH), nullptr};

    pid_ = ::fork();
    if (pid_ == 0) {
      if (listenerFd >= 0) {
        // LISTEN_PID names this very process.
        char digits[16];
        int n = 0;
        for (pid_t p = ::getpid(); p > 0; p /= 10) digits[n++] = static_cast<char>('0' + p % 10);
        char* out = listenPid + 11;
        while (n > 0) *out++ = digits[--n];
        *out = 0;
        if (listenerFd == 3)
          ::fcntl(3, F_SETFD, 0);
        else
          ::dup2(listenerFd, 3);
      }
      ::dup2(log, STDERR_FILENO);
      ::execve(argv[0], argv, envp.data());
      ::_exit(127);
    }
    ::close(log);
  }
  ~HelperProcess() {
    if (pid_ > 0 && !exited_) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
  }
  pid_t pid() const { return pid_; }

  // The wait status once the process ended within `timeout`.
  std::optional<int> waitExit(std::chrono::milliseconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (std::chrono::steady_clock::now() < deadline) {
      int status = 0;
      if (::waitpid(pid_, &status, WNOHANG) == pid_) {
        exited_ = true;
        return status;
      }
      std::this_thread::sleep_for(10ms);
    }
    return std::nullopt;
  }

 private:
  pid_t pid_ = -1;
  bool exited_ = false;
};

// One client connection speaking frames.
class Client {
 public:
  explicit Client(int fd) : fd_(fd) {}
  ~Client() {
    if (fd_ >= 0) ::close(fd_);
  }
  Client(Client&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  bool connected() const { return fd_ >= 0; }
  int fd() const { return fd_; }

  bool send(const std::string& operation, std::vector<wire::Argument> arguments = {}, bool noReply = false) {
    wire::Bytes body;
    wire::encodeRequest({operation, ++id_, std::move(arguments), noReply}, body);
    return wire::writeFrame(fd_, body, 5000) == wire::IoStatus::Ok;
  }
  bool sendRaw(const std::string& bytes) {
    return ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
  }
  // The next reply, or nullopt with `status` telling why.
  std::optional<wire::Reply> receive(int timeoutMs = 20000) {
    wire::Bytes body;
    status = wire::readFrame(fd_, body, timeoutMs);
    wire::Reply reply;
    if (status != wire::IoStatus::Ok || !wire::decodeReply(body, reply)) return std::nullopt;
    return reply;
  }
  std::optional<wire::Reply> call(const std::string& operation, std::vector<wire::Argument> arguments = {}) {
    if (!send(operation, std::move(arguments))) return std::nullopt;
    return receive();
  }
  uint64_t lastId() const { return id_; }
  // True when the service closed this connection.
  bool closedByPeer(int timeoutMs = 20000) {
    wire::Bytes body;
    wire::IoStatus s = wire::readFrame(fd_, body, timeoutMs);
    return s == wire::IoStatus::Closed || s == wire::IoStatus::Error || s == wire::IoStatus::Truncated;
  }

  wire::IoStatus status = wire::IoStatus::Ok;

 private:
  int fd_;
  uint64_t id_ = 100;
};

std::string littleEndian32(uint32_t v) {
  std::string s(4, '\0');
  for (int i = 0; i < 4; ++i) s[i] = static_cast<char>(v >> (8 * i));
  return s;
}

int listeningSocket(const std::string& path) {
  int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || ::listen(fd, 16) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

std::string readAll(const std::string& path) {
  std::ifstream in(path);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

class ProcessTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string user = folder_ / "importers";
    const char* factory = "C0000000-0000-0000-0000-00000000000C";
    const char* slowFactory = "50000000-0000-0000-0000-000000000005";
    writeBundle(user, "crash.mdimporter",
                {"org.example.crash", pluginLibrary("crash"), {{factory, "CrashFactory"}}, {}, {"crash"}});
    writeBundle(user, "slow.mdimporter",
                {"org.example.slow", pluginLibrary("take"), {{slowFactory, "SlowFactory"}}, {}, {"slow"}});
    importerPath_ = user + "::" + NORVANE_BINARY_DIR "/lib/norvane/importers";
    runtime_ = folder_ / "runtime";
    std::filesystem::create_directories(runtime_);
    ::chmod(runtime_.c_str(), 0700);
    logPath_ = folder_ / "helper.log";
  }

  std::string socketPath() const { return runtime_ + "/" + kServiceName; }

  // Starts a helper and waits until its named connection answers.
  std::unique_ptr<HelperProcess> start(int listenerFd = -1) {
    auto helper = std::make_unique<HelperProcess>(runtime_, importerPath_, logPath_, listenerFd);
    auto deadline = std::chrono::steady_clock::now() + 30s;
    while (std::chrono::steady_clock::now() < deadline) {
      struct stat st;
      if (::stat(socketPath().c_str(), &st) == 0) {
        Client probe(wire::connectUnixSocket(socketPath()));
        if (probe.connected() && probe.call("ping")) return helper;
      }
      std::this_thread::sleep_for(20ms);
    }
    ADD_FAILURE() << "the helper did not come up; its log:\n" << readAll(logPath_);
    return helper;
  }

  Client named() { return Client(wire::connectUnixSocket(socketPath())); }

  // A listener socket to hand over, and a way to connect to it.
  int makeListener() {
    listenerPath_ = folder_ / "listener.sock";
    return listeningSocket(listenerPath_);
  }
  Client viaListener() { return Client(wire::connectUnixSocket(listenerPath_)); }

  std::string textFile(const std::string& name, const std::string& contents) {
    std::string path = folder_ / ("files/" + name);
    writeFile(path, contents);
    return path;
  }

  TemporaryFolder folder_;
  std::string importerPath_, runtime_, logPath_, listenerPath_;
};

std::string textContentOf(const std::optional<wire::Reply>& reply) {
  const Dictionary* d = reply ? reply->result.dictionary() : nullptr;
  const Value* text = d ? d->find(u"kMDItemTextContent") : nullptr;
  return text ? text->asString().toUtf8() : "<absent>";
}

TEST_F(ProcessTest, BothChannelsServeMetadata) {
  int listener = makeListener();
  auto helper = start(listener);
  ::close(listener);
  std::string file = textFile("hello.txt", "Hello from a file\n");
  Client a = named(), b = viaListener();
  ASSERT_TRUE(a.connected() && b.connected());
  auto viaNamed = a.call("metaDataForFile:", {Value(String::fromUtf8(file))});
  EXPECT_EQ(textContentOf(viaNamed), "Hello from a file\n");
  EXPECT_EQ(viaNamed->id, a.lastId());
  auto viaHandler = b.call("metaDataForFile:handler:", {Value(Url{String::fromUtf8("file://" + file)})});
  EXPECT_EQ(textContentOf(viaHandler), "Hello from a file\n");
  auto supported = b.call("supportsFile:handler:", {Value(String::fromUtf8(file))});
  ASSERT_TRUE(supported);
  EXPECT_TRUE(supported->boxed);
  EXPECT_EQ(supported->result, Value(true));
  auto missing = a.call("metaDataForFile:", {Value(u"/no/such/file.txt")});
  ASSERT_TRUE(missing);
  EXPECT_TRUE(missing->result.isNull());
}

TEST_F(ProcessTest, RefusedRequestsKeepTheConnection) {
  auto helper = start();
  Client c = named();
  auto unknown = c.call("makeCoffee:", {Value(true)});
  ASSERT_TRUE(unknown);
  EXPECT_THAT(unknown->error, testing::HasSubstr("unknown operation"));
  auto wrongTypes = c.call("previewForFile:maxThumbnailSize:asIcon:", {Value(u"/x"), Value(1.5), Value(u"yes")});
  ASSERT_TRUE(wrongTypes);
  EXPECT_FALSE(wrongTypes->error.empty());
  auto ping = c.call("ping");
  ASSERT_TRUE(ping);
  EXPECT_TRUE(ping->error.empty());
  EXPECT_EQ(ping->id, c.lastId());
}

TEST_F(ProcessTest, NoReplyRequestsAnswerNothing) {
  auto helper = start();
  Client c = named();
  ASSERT_TRUE(c.send("ping", {}, true));
  ASSERT_TRUE(c.send("metaDataForFile:handler:", {Value(u"/etc/hostname")}, true));
  auto reply = c.call("ping");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->id, c.lastId());  // the first reply belongs to the last request
}

TEST_F(ProcessTest, FramesMayArriveInPiecesOrTogether) {
  int listener = makeListener();
  auto helper = start(listener);
  ::close(listener);
  for (bool useListener : {false, true}) {
    Client c = useListener ? viaListener() : named();
    wire::Bytes first, second, frames;
    wire::encodeRequest({"ping", 1, {}, false}, first);
    wire::encodeRequest({"supportsFile:", 2, {Value(u"/no/such/file")}, false}, second);
    wire::appendFrame(frames, first);
    wire::appendFrame(frames, second);
    std::string bytes(frames.begin(), frames.end());
    // Byte by byte at first, then the rest at once.
    for (size_t i = 0; i < 3; ++i) {
      ASSERT_TRUE(c.sendRaw(bytes.substr(i, 1)));
      std::this_thread::sleep_for(20ms);
    }
    ASSERT_TRUE(c.sendRaw(bytes.substr(3)));
    auto one = c.receive(), two = c.receive();
    ASSERT_TRUE(one && two) << (useListener ? "listener" : "named");
    EXPECT_EQ(one->id, 1u);
    EXPECT_EQ(two->id, 2u);
    EXPECT_EQ(two->result, Value(false));
  }
}

TEST_F(ProcessTest, AFrameThatStallsIsDroppedAfterTheRequestTimeout) {
  int listener = makeListener();
  auto helper = start(listener);
  ::close(listener);
  Client stalledNamed = named(), stalledListener = viaListener(), idle = named();
  ASSERT_TRUE(stalledNamed.sendRaw(littleEndian32(50) + "begun"));
  ASSERT_TRUE(stalledListener.sendRaw(littleEndian32(50) + "begun"));
  auto begun = std::chrono::steady_clock::now();
  EXPECT_TRUE(stalledNamed.closedByPeer(25000));
  EXPECT_TRUE(stalledListener.closedByPeer(25000));
  EXPECT_GE(std::chrono::steady_clock::now() - begun, 14s);
  // A connection that sent nothing may wait as long as it likes.
  EXPECT_TRUE(idle.call("ping"));
}

struct BadFrame {
  const char* name;
  std::string bytes;
  bool closeWriteSide;
};

class BadFrameTest : public ProcessTest, public testing::WithParamInterface<BadFrame> {};

TEST_P(BadFrameTest, ClosesOnlyItsOwnConnection) {
  int listener = makeListener();
  auto helper = start(listener);
  ::close(listener);
  for (bool useListener : {false, true}) {
    Client bystander = useListener ? viaListener() : named();
    Client bad = useListener ? viaListener() : named();
    ASSERT_TRUE(bystander.call("ping"));
    ASSERT_TRUE(bad.sendRaw(GetParam().bytes));
    if (GetParam().closeWriteSide) ::shutdown(bad.fd(), SHUT_WR);
    EXPECT_TRUE(bad.closedByPeer()) << (useListener ? "listener" : "named");
    auto stillServed = bystander.call("ping");
    ASSERT_TRUE(stillServed);
    EXPECT_EQ(stillServed->id, bystander.lastId());
  }
  EXPECT_FALSE(helper->waitExit(0ms).has_value());
}

INSTANTIATE_TEST_SUITE_P(Kinds, BadFrameTest,
                         testing::Values(BadFrame{"truncated", littleEndian32(100) + "only ten..", true},
                                         BadFrame{"oversized", littleEndian32((256u << 20) + 1) + "x", false},
                                         BadFrame{"empty", littleEndian32(0), false},
                                         BadFrame{"notmessagepack", littleEndian32(3) + "\xc1\xc1\xc1", false},
                                         BadFrame{"notarequest", littleEndian32(1) + "\x2a", false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(ProcessTest, PeersOfAnotherUserAreRefused) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root to act as another user";
  int listener = makeListener();
  auto helper = start(listener);
  ::close(listener);
  ::chmod(folder_.path().c_str(), 0755);
  ::chmod(runtime_.c_str(), 0755);
  ::chmod(socketPath().c_str(), 0777);
  ::chmod(listenerPath_.c_str(), 0777);
  for (const std::string& path : {socketPath(), listenerPath_}) {
    pid_t child = ::fork();
    if (child == 0) {
      // As nobody: connect, ask, and tell by the exit status what came back.
      if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(10);
      int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
      if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) ::_exit(11);
      wire::Bytes body;
      wire::encodeRequest({"ping", 1, {}, false}, body);
      wire::writeFrame(fd, body, 5000);
      ::_exit(wire::readFrame(fd, body, 20000) == wire::IoStatus::Ok ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1) << path << ": 0 means served, 11 means it could not even connect";
  }
  Client own = named();
  EXPECT_TRUE(own.call("ping"));
}

TEST_F(ProcessTest, ASecondHelperGivesUpAfterASecond) {
  auto first = start();
  int listener = makeListener();
  std::string secondLog = folder_ / "second.log";
  auto begun = std::chrono::steady_clock::now();
  HelperProcess second(runtime_, importerPath_, secondLog, listener);
  ::close(listener);
  Client unserved = viaListener();  // accepted by the kernel, never by the second helper
  ASSERT_TRUE(unserved.send("ping"));
  std::optional<int> status = second.waitExit(20s);
  auto took = std::chrono::steady_clock::now() - begun;
  ASSERT_TRUE(status.has_value());
  EXPECT_TRUE(WIFEXITED(*status));
  EXPECT_EQ(WEXITSTATUS(*status), 0);
  EXPECT_GE(took, 1s);
  EXPECT_THAT(readAll(secondLog), testing::HasSubstr("Couldn't register service com.norvane.archive-helper"));
  EXPECT_FALSE(unserved.receive(2000).has_value());
  Client c = named();
  EXPECT_TRUE(c.call("ping"));  // the first one still serves
}

TEST_F(ProcessTest, ASocketLeftByADeadHelperIsReplaced) {
  int stale = listeningSocket(socketPath());
  ::close(stale);  // the file stays, nobody listens
  auto helper = start();
  Client c = named();
  EXPECT_TRUE(c.call("ping"));
}

TEST_F(ProcessTest, TerminateEndsTheProcessDuringALongRequest) {
  int listener = makeListener();
  auto helper = start(listener);
  ::close(listener);
  std::string slow = textFile("wait.slow", "takes a while\n");
  Client busy = viaListener(), other = viaListener();
  ASSERT_TRUE(busy.send("metaDataForFile:", {Value(String::fromUtf8(slow))}));
  std::this_thread::sleep_for(300ms);
  auto begun = std::chrono::steady_clock::now();
  ASSERT_TRUE(other.send("terminate"));
  std::optional<int> status = helper->waitExit(10s);
  ASSERT_TRUE(status.has_value());
  EXPECT_LT(std::chrono::steady_clock::now() - begun, 10s);
  EXPECT_TRUE(WIFEXITED(*status));
  EXPECT_EQ(WEXITSTATUS(*status), 0);
  EXPECT_TRUE(busy.closedByPeer(2000));
  EXPECT_TRUE(other.closedByPeer(2000));  // terminate has no reply
}

TEST_F(ProcessTest, TerminateWithAnArgumentKeepsServing) {
  auto helper = start();
  Client c = named();
  auto reply = c.call("terminate:", {Value(u"please")});
  ASSERT_TRUE(reply);
  EXPECT_TRUE(reply->error.empty());
  EXPECT_FALSE(helper->waitExit(500ms).has_value());
  EXPECT_TRUE(c.call("ping"));
  ASSERT_TRUE(c.send("terminate"));
  std::optional<int> status = helper->waitExit(10s);
  ASSERT_TRUE(status.has_value());
  EXPECT_TRUE(WIFEXITED(*status) && WEXITSTATUS(*status) == 0);
}

TEST_F(ProcessTest, ACrashingImporterTakesTheProcessDown) {
  auto helper = start();
  std::string file = textFile("boom.crash", "x");
  Client c = named();
  ASSERT_TRUE(c.call("supportsFile:", {Value(String::fromUtf8(file))}));  // asks, imports nothing
  ASSERT_TRUE(c.send("metaDataForFile:", {Value(String::fromUtf8(file))}));
  EXPECT_TRUE(c.closedByPeer());
  std::optional<int> status = helper->waitExit(20s);
  ASSERT_TRUE(status.has_value());
  // Killed by the signal, or ended by the address sanitizer's report.
  EXPECT_TRUE(WIFSIGNALED(*status) || (WIFEXITED(*status) && WEXITSTATUS(*status) != 0));
}

TEST_F(ProcessTest, ManyConnectionsAtOnce) {
  int listener = makeListener();
  auto helper = start(listener);
  ::close(listener);
  std::string file = textFile("shared.txt", "shared text\n");
  std::vector<std::thread> threads;
  std::atomic<int> good{0};
  for (int t = 0; t < 6; ++t)
    threads.emplace_back([&, t] {
      Client c = t % 2 ? viaListener() : named();
      for (int i = 0; i < 20; ++i)
        if (textContentOf(c.call("metaDataForFile:", {Value(String::fromUtf8(file))})) == "shared text\n") ++good;
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(good.load(), 120);
}

}  // namespace
}  // namespace norvane::service
