#include "fake_helper.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include "norvane/wire/frame.h"
#include "norvane/wire/message.h"
#include "norvane/wire/socket.h"

namespace norvane::client::testing {

namespace {

int listenOn(const std::string& path) {
  ::unlink(path.c_str());
  int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || ::listen(fd, 16) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

// The answers: "ping" nil; "supportsFile:" true for a path ending in ".txt";
// "metaDataForFile:" {"path": the argument}; "slow:" replies after 0.5 s;
// "garbage:" answers with bytes that are no reply; anything else an error.
// Answers false when the connection should close.
bool answer(int fd, const wire::Request& request) {
  wire::Reply reply;
  reply.id = request.id;
  const Value* first = request.arguments.empty() ? nullptr : wire::argumentValue(request.arguments[0]);
  std::string_view op = request.operation;
  if (op == "terminate") ::_exit(0);
  if (op == "ping") {
  } else if (op == "supportsFile:" || op == "supportsFile:handler:") {
    std::u16string_view path = first ? first->asString().view() : std::u16string_view();
    reply.result = Value(path.ends_with(u".txt"));
    reply.boxed = op.ends_with("handler:");
  } else if (op == "metaDataForFile:" || op == "metaDataForFile:handler:") {
    Dictionary d;
    d.set(String::fromLatin1("path"), first ? *first : Value());
    reply.result = Value(d);
  } else if (op == "slow:") {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
  } else if (op == "garbage:") {
    const uint8_t junk[] = {0x01, 0x00, 0x00, 0x00, 0xc1};
    return ::write(fd, junk, sizeof junk) == sizeof junk;
  } else {
    reply.error = "unknown operation: " + request.operation;
  }
  if (request.noReply) return true;
  wire::Bytes body;
  wire::encodeReply(reply, body);
  return wire::writeFrame(fd, body, 5000) == wire::IoStatus::Ok;
}

void serveConnection(int fd) {
  wire::Bytes body;
  wire::Request request;
  while (wire::readFrame(fd, body) == wire::IoStatus::Ok && wire::decodeRequest(body, request) && answer(fd, request)) {
  }
  ::close(fd);
}

// Runs before main() in a child started as a fake helper.
[[maybe_unused]] const bool kRanAsHelper = [] {
  const char* name = std::getenv("NORVANE_FAKE_HELPER");
  if (!name) return false;
  if (const char* log = std::getenv("NORVANE_FAKE_HELPER_LOG")) std::ofstream(log, std::ios::app) << ::getpid() << "\n";
  const char* mode = std::getenv("NORVANE_FAKE_HELPER_MODE");
  if (mode && std::strcmp(mode, "exit") == 0) {
    // Seen running by the launcher, gone before it could connect.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    ::_exit(0);
  }
  int listener = listenOn(wire::namedSocketPath(name));
  if (listener < 0) ::_exit(1);
  for (;;) {
    int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd >= 0) std::thread(serveConnection, fd).detach();
  }
}();

}  // namespace

std::string selfExecutable() {
  char path[4096];
  ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
  return n > 0 ? std::string(path, static_cast<size_t>(n)) : std::string();
}

FakeServer::FakeServer(const std::string& name) {
  path_ = wire::namedSocketPath(name);
  listenFd_ = listenOn(path_);
  thread_ = std::thread([this] {
    std::vector<int> open;
    std::vector<std::thread> workers;
    int seenGeneration = 0;
    while (!stopping_) {
      pollfd p{listenFd_, POLLIN, 0};
      if (::poll(&p, 1, 10) > 0) {
        int fd = ::accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd >= 0) {
          connections_.fetch_add(1);
          int copy = ::dup(fd);  // kept to be shut down on request
          open.push_back(copy);
          workers.emplace_back(serveConnection, fd);
        }
      }
      if (dropGeneration_ != seenGeneration) {
        seenGeneration = dropGeneration_;
        for (int fd : open) ::shutdown(fd, SHUT_RDWR);
      }
    }
    for (int fd : open) ::shutdown(fd, SHUT_RDWR);
    for (std::thread& worker : workers) worker.join();
    for (int fd : open) ::close(fd);
  });
}

void FakeServer::dropConnections() {
  dropGeneration_.fetch_add(1);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

FakeServer::~FakeServer() {
  stopping_ = true;
  thread_.join();
  ::close(listenFd_);
  ::unlink(path_.c_str());
}

}  // namespace norvane::client::testing
