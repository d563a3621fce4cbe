// Connection: one client connection to a named helper socket, and the
// per-thread cache that holds one connection for each registered name.
//
// A connection is used by one thread at a time; the cache is private to each
// thread (thread_local), so two threads asking for the same name hold two
// connections. A connection that fails (peer gone, timeout, malformed reply)
// closes itself and leaves the cache of the thread that used it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "norvane/wire/frame.h"
#include "norvane/wire/message.h"

namespace norvane::client {

// Why a call failed.
enum class TransportError {
  None,
  Timeout,  // no progress within the request or reply timeout
  Send,     // the request could not be written
  Receive,  // the reply could not be read, or was malformed
  Invalid,  // the connection was already closed
  Refused,  // the service answered with an error: it cannot take the request
};

// True for failures of the transport itself (all but None and Refused).
bool isPortException(TransportError error);
bool isPortTimeoutException(TransportError error);

class Connection {
 public:
  // Connects to the socket registered under `name`; null when no helper of
  // this user listens there.
  static std::shared_ptr<Connection> connectToName(std::string_view name);
  // Takes an already connected descriptor.
  Connection(int fd, std::string name);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  const std::string& name() const { return name_; }
  // The helper's process id, as the socket tells it.
  pid_t peerProcessIdentifier() const { return peerPid_; }

  // True while open and the peer has not hung up.
  bool isValid() const;
  // Closes the connection.
  void invalidate();

  // Seconds; 0 or less waits without limit. The request timeout bounds
  // writing a request, the reply timeout waiting for its reply.
  void setRequestTimeout(double seconds) { requestTimeout_ = seconds; }
  void setReplyTimeout(double seconds);
  double requestTimeout() const { return requestTimeout_; }
  double replyTimeout() const { return replyTimeout_; }

  // Sends `request` (its id is assigned here) and, unless it asks for no
  // reply, waits for the reply with the same id. Any transport failure
  // closes the connection. An error reply gives Refused and keeps it open.
  TransportError call(wire::Request& request, wire::Reply& reply);

 private:
  int fd_;
  std::string name_;
  pid_t peerPid_ = 0;
  uint64_t nextId_ = 1;
  double requestTimeout_ = 0;
  double replyTimeout_ = 0;
  wire::Bytes buffer_;
  wire::FrameReader reader_;
};

// The per-thread cache. Names that are empty are ignored.

// The connection stored under `name` on this thread if it is still valid;
// an invalid one is removed and null answered.
std::shared_ptr<Connection> connectionRegisteredWithName(std::string_view name);
// Stores `connection` under `name`; an invalid or null connection removes
// what is stored instead.
void setConnectionRegisteredWithName(std::shared_ptr<Connection> connection, std::string_view name);
void removeConnectionRegisteredWithName(std::string_view name);
// Removes the first entry holding this very connection.
void removeConnection(const Connection* connection);

}  // namespace norvane::client
