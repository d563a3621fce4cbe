// The two channels of the service and the main thread's loop.
//
// The service listener is a Unix stream socket handed over by the launcher
// under the socket-activation convention (LISTEN_FDS). Its connections are
// served each on a thread of its own. The named connection is a Unix socket
// in the user's runtime folder, claimed under an exclusive flock on a lock
// file beside it; its connections are served on the main thread, which
// also runs the main queue. Every connection must come from a process of
// this user; others are closed at once. A malformed frame or message closes
// only its own connection.
#pragma once

#include <functional>
#include <string_view>

#include "service/norvane_helper.h"

namespace norvane::service {

// The first descriptor passed through LISTEN_FDS, or -1 when there is none.
int obtainServiceListener();

// Serves the listener on threads and returns at once. A listening socket is
// accepted from; a connected socket is served as the one connection.
void resumeListener(int listenerFd, NorvaneHelper& helper);

// The named connection's listening socket.
class NamedConnection {
 public:
  NamedConnection() = default;
  ~NamedConnection();
  NamedConnection(const NamedConnection&) = delete;
  NamedConnection& operator=(const NamedConnection&) = delete;

  // Claims `name`: false when a live process holds it or the socket cannot
  // be made. A socket left by a dead owner is replaced.
  bool registerName(std::string_view name);
  int listeningFd() const { return listenFd_; }

 private:
  int lockFd_ = -1;
  int listenFd_ = -1;
};

// Runs the named connection (if `namedListenFd` >= 0) and the main queue on
// the calling thread, for good.
[[noreturn]] void runMainLoop(NorvaneHelper& helper, int namedListenFd);

// Runs `work` on the main thread and waits for it; directly when called
// there, or when no main loop runs. An exception of `work` passes on.
void performOnMainThread(const std::function<void()>& work);

// Serves one connected socket until it closes or misbehaves, then closes
// it. Used for listener connections.
void serveConnection(int fd, NorvaneHelper& helper);

}  // namespace norvane::service
