#include "service/transport.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include "norvane/wire/frame.h"
#include "norvane/wire/message.h"
#include "norvane/wire/socket.h"
#include "service/dispatch.h"

namespace norvane::service {
namespace {

using Clock = std::chrono::steady_clock;

// Request and reply timeouts of both channels.
constexpr int kTimeoutMs = 15000;
constexpr size_t kReadChunk = 64 * 1024;

bool isListeningSocket(int fd) {
  int accepting = 0;
  socklen_t length = sizeof accepting;
  return ::getsockopt(fd, SOL_SOCKET, SO_ACCEPTCONN, &accepting, &length) == 0 && accepting;
}

// Decodes one frame body, runs it and writes the reply. False when the
// connection has to close.
bool answer(int fd, std::span<const uint8_t> body, NorvaneHelper& helper, wire::Protocol channel, wire::Bytes& out) {
  wire::Request request;
  if (!wire::decodeRequest(body, request)) return false;
  std::optional<wire::Reply> reply = handleRequest(helper, request, channel);
  if (!reply) return true;
  out.clear();
  wire::encodeReply(*reply, out);
  return wire::writeFrame(fd, out, kTimeoutMs) == wire::IoStatus::Ok;
}

// The main thread's queue of work from other threads.
struct MainQueue {
  std::mutex mutex;
  std::vector<std::pair<std::function<void()>, std::promise<void>>> tasks;
  int eventFd = -1;
  std::thread::id thread;
};
MainQueue* mainQueue = nullptr;

void drainMainQueue(MainQueue& queue) {
  uint64_t count = 0;
  while (::read(queue.eventFd, &count, sizeof count) < 0 && errno == EINTR) {
  }
  std::vector<std::pair<std::function<void()>, std::promise<void>>> tasks;
  {
    std::lock_guard<std::mutex> lock(queue.mutex);
    tasks.swap(queue.tasks);
  }
  for (auto& [work, done] : tasks) {
    try {
      work();
      done.set_value();
    } catch (...) {
      done.set_exception(std::current_exception());
    }
  }
}

// One connection of the named channel, read without blocking.
struct NamedPeer {
  int fd;
  wire::Bytes input;
  Clock::time_point partialSince;
};

// Reads what is there and answers every complete frame; bytes of a frame
// not yet complete wait in the peer's buffer. False when the connection has
// to close.
bool serviceNamedPeer(NamedPeer& peer, NorvaneHelper& helper, wire::Bytes& chunk, wire::Bytes& out) {
  ssize_t n;
  do n = ::recv(peer.fd, chunk.data(), chunk.size(), MSG_DONTWAIT);
  while (n < 0 && errno == EINTR);
  if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return true;
  if (n <= 0) return false;

  bool buffered = !peer.input.empty();
  if (buffered) peer.input.insert(peer.input.end(), chunk.begin(), chunk.begin() + n);
  std::span<const uint8_t> pending =
      buffered ? std::span<const uint8_t>(peer.input) : std::span<const uint8_t>(chunk.data(), static_cast<size_t>(n));
  size_t offset = 0;
  for (;;) {
    std::span<const uint8_t> body;
    size_t consumed = 0;
    wire::IoStatus status = wire::parseFrame(pending.subspan(offset), body, consumed);
    if (status == wire::IoStatus::Truncated) break;
    if (status != wire::IoStatus::Ok) return false;
    if (!answer(peer.fd, body, helper, wire::Protocol::ServiceObject, out)) return false;
    offset += consumed;
  }
  if (buffered) {
    peer.input.erase(peer.input.begin(), peer.input.begin() + static_cast<ptrdiff_t>(offset));
  } else {
    peer.input.assign(pending.begin() + static_cast<ptrdiff_t>(offset), pending.end());
  }
  // A partial frame is timed from when it began.
  if (!peer.input.empty() && (offset > 0 || !buffered)) peer.partialSince = Clock::now();
  return true;
}

}  // namespace

int obtainServiceListener() {
  int count = sd_listen_fds(1);
  return count > 0 ? SD_LISTEN_FDS_START : -1;
}

void serveConnection(int fd, NorvaneHelper& helper) {
  wire::Bytes body, out;
  for (;;) {
    pollfd ready{fd, POLLIN, 0};
    if (::poll(&ready, 1, -1) < 0) {
      if (errno == EINTR) continue;
      break;
    }
    if (wire::readFrame(fd, body, kTimeoutMs) != wire::IoStatus::Ok) break;
    if (!answer(fd, body, helper, wire::Protocol::ImExportXPC, out)) break;
  }
  ::close(fd);
}

void resumeListener(int listenerFd, NorvaneHelper& helper) {
  ::fcntl(listenerFd, F_SETFD, FD_CLOEXEC);
  if (!isListeningSocket(listenerFd)) {
    std::thread(serveConnection, listenerFd, std::ref(helper)).detach();
    return;
  }
  std::thread([listenerFd, &helper] {
    for (;;) {
      int fd = ::accept4(listenerFd, nullptr, nullptr, SOCK_CLOEXEC);
      if (fd < 0) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
          std::this_thread::sleep_for(std::chrono::milliseconds(100));
        else if (errno != EINTR && errno != ECONNABORTED && errno != EPROTO)
          return;
        continue;
      }
      if (!wire::isPeerSameUser(fd)) {
        ::close(fd);
        continue;
      }
      std::thread(serveConnection, fd, std::ref(helper)).detach();
    }
  }).detach();
}

NamedConnection::~NamedConnection() {
  if (listenFd_ >= 0) ::close(listenFd_);
  if (lockFd_ >= 0) ::close(lockFd_);
}

bool NamedConnection::registerName(std::string_view name) {
  std::string socketPath = wire::namedSocketPath(name);
  std::string lockPath = wire::namedLockPath(name);
  if (socketPath.empty() || lockPath.empty()) return false;
  lockFd_ = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lockFd_ < 0 || ::flock(lockFd_, LOCK_EX | LOCK_NB) != 0) return false;

  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, socketPath.data(), socketPath.size());
  ::unlink(socketPath.c_str());  // left by an owner that is gone
  listenFd_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  return listenFd_ >= 0 && ::bind(listenFd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
         ::listen(listenFd_, SOMAXCONN) == 0;
}

void runMainLoop(NorvaneHelper& helper, int namedListenFd) {
  static MainQueue queue;
  queue.eventFd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  queue.thread = std::this_thread::get_id();
  mainQueue = &queue;

  std::vector<NamedPeer> peers;
  std::vector<pollfd> polled;
  wire::Bytes chunk(kReadChunk), out;
  for (;;) {
    polled.clear();
    polled.push_back({queue.eventFd, POLLIN, 0});
    polled.push_back({namedListenFd, POLLIN, 0});  // ignored by poll when -1
    for (const NamedPeer& peer : peers) polled.push_back({peer.fd, POLLIN, 0});
    bool waiting = std::any_of(peers.begin(), peers.end(), [](const NamedPeer& p) { return !p.input.empty(); });
    if (::poll(polled.data(), polled.size(), waiting ? 1000 : -1) < 0) continue;

    if (polled[0].revents) drainMainQueue(queue);
    if (polled[1].revents & POLLIN) {
      for (;;) {
        int fd = ::accept4(namedListenFd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (fd < 0) break;
        if (wire::isPeerSameUser(fd))
          peers.push_back({fd, {}, Clock::now()});
        else
          ::close(fd);
      }
    }
    // Peers accepted just now are not in `polled` yet.
    size_t polledPeers = polled.size() - 2;
    Clock::time_point now = Clock::now();
    for (size_t i = peers.size(); i-- > 0;) {
      NamedPeer& peer = peers[i];
      bool keep = true;
      if (i < polledPeers && polled[i + 2].revents) keep = serviceNamedPeer(peer, helper, chunk, out);
      if (keep && !peer.input.empty() && now - peer.partialSince > std::chrono::milliseconds(kTimeoutMs)) keep = false;
      if (!keep) {
        ::close(peer.fd);
        peers.erase(peers.begin() + static_cast<ptrdiff_t>(i));
      }
    }
  }
}

void performOnMainThread(const std::function<void()>& work) {
  MainQueue* queue = mainQueue;
  if (!queue || queue->thread == std::this_thread::get_id()) {
    work();
    return;
  }
  std::promise<void> done;
  std::future<void> finished = done.get_future();
  {
    std::lock_guard<std::mutex> lock(queue->mutex);
    queue->tasks.emplace_back(work, std::move(done));
  }
  uint64_t one = 1;
  while (::write(queue->eventFd, &one, sizeof one) < 0 && errno == EINTR) {
  }
  finished.get();
}

}  // namespace norvane::service
