#include "norvane/client/connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <unordered_map>
#include <utility>
#include <vector>

#include "norvane/wire/frame.h"
#include "norvane/wire/socket.h"

namespace norvane::client {

bool isPortException(TransportError error) {
  return error != TransportError::None && error != TransportError::Refused;
}

bool isPortTimeoutException(TransportError error) {
  return error == TransportError::Timeout;
}

std::shared_ptr<Connection> Connection::connectToName(std::string_view name) {
  int fd = wire::connectNamedSocket(name);
  if (fd < 0) return nullptr;
  return std::make_shared<Connection>(fd, std::string(name));
}

Connection::Connection(int fd, std::string name) : fd_(fd), name_(std::move(name)), reader_(fd) {
  if (auto credentials = wire::peerCredentials(fd)) peerPid_ = credentials->pid;
}

Connection::~Connection() {
  if (fd_ >= 0) ::close(fd_);
}

bool Connection::isValid() const {
  if (fd_ < 0) return false;
  pollfd p{fd_, POLLIN, 0};
  int n;
  do {
    n = ::poll(&p, 1, 0);
  } while (n < 0 && errno == EINTR);
  // Anything to read between calls is either the end of the stream or bytes
  // nobody asked for; both leave the connection unusable, as do hang-ups.
  return n == 0;
}

void Connection::invalidate() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

namespace {

int milliseconds(double seconds) {
  return seconds > 0 ? static_cast<int>(seconds * 1000 + 0.5) : -1;
}

}  // namespace

void Connection::setReplyTimeout(double seconds) {
  replyTimeout_ = seconds;
  // Replies are read with plain blocking calls; the socket itself enforces
  // the timeout, which saves a poll per reply.
  timeval limit{};
  if (seconds > 0) {
    limit.tv_sec = static_cast<time_t>(seconds);
    limit.tv_usec = static_cast<suseconds_t>((seconds - static_cast<double>(limit.tv_sec)) * 1e6);
    if (limit.tv_sec == 0 && limit.tv_usec == 0) limit.tv_usec = 1;
  }
  if (fd_ >= 0) ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

TransportError Connection::call(wire::Request& request, wire::Reply& reply) {
  if (fd_ < 0) return TransportError::Invalid;
  request.id = nextId_++;
  buffer_.clear();
  wire::encodeRequest(request, buffer_);

  TransportError error = TransportError::None;
  wire::IoStatus status = wire::writeFrame(fd_, buffer_, milliseconds(requestTimeout_));
  if (status != wire::IoStatus::Ok) {
    error = status == wire::IoStatus::Timeout ? TransportError::Timeout : TransportError::Send;
  } else if (!request.noReply) {
    std::span<const uint8_t> body;
    status = reader_.next(body);
    if (status != wire::IoStatus::Ok) {
      error = status == wire::IoStatus::Timeout ? TransportError::Timeout : TransportError::Receive;
    } else if (!wire::decodeReply(body, reply) || reply.id != request.id) {
      error = TransportError::Receive;
    } else if (!reply.error.empty()) {
      return TransportError::Refused;
    }
  }
  if (error != TransportError::None) {
    // The stream's state is unknown after a failure: a late reply could
    // arrive for the wrong request. Close it and forget it on this thread.
    invalidate();
    removeConnection(this);
  }
  return error;
}

// ---- Per-thread cache ----

namespace {

// A short list beats a hash map for the one or two names a thread uses.
using Cache = std::vector<std::pair<std::string, std::shared_ptr<Connection>>>;

Cache& threadCache() {
  thread_local Cache cache;
  return cache;
}

Cache::iterator findEntry(Cache& cache, std::string_view name) {
  for (auto it = cache.begin(); it != cache.end(); ++it)
    if (it->first == name) return it;
  return cache.end();
}

}  // namespace

std::shared_ptr<Connection> connectionRegisteredWithName(std::string_view name) {
  if (name.empty()) return nullptr;
  Cache& cache = threadCache();
  auto it = findEntry(cache, name);
  if (it == cache.end()) return nullptr;
  if (it->second->isValid()) return it->second;
  cache.erase(it);
  return nullptr;
}

void setConnectionRegisteredWithName(std::shared_ptr<Connection> connection, std::string_view name) {
  if (name.empty()) return;
  if (!connection || !connection->isValid()) return removeConnectionRegisteredWithName(name);
  Cache& cache = threadCache();
  auto it = findEntry(cache, name);
  if (it != cache.end()) {
    it->second = std::move(connection);
  } else {
    cache.emplace_back(std::string(name), std::move(connection));
  }
}

void removeConnectionRegisteredWithName(std::string_view name) {
  if (name.empty()) return;
  Cache& cache = threadCache();
  auto it = findEntry(cache, name);
  if (it != cache.end()) cache.erase(it);
}

void removeConnection(const Connection* connection) {
  if (!connection) return;
  Cache& cache = threadCache();
  for (auto it = cache.begin(); it != cache.end(); ++it) {
    if (it->second.get() == connection) {
      cache.erase(it);
      return;
    }
  }
}

}  // namespace norvane::client
