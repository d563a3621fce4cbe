// Where the named connection lives and how both ends check each other.
//
// A registered name maps to a Unix stream socket in the user's runtime
// directory: $XDG_RUNTIME_DIR/<name>, or, when that variable is unset or not
// an absolute path, /tmp/norvane-<uid>, a folder that must belong to the user
// with mode 0700 (created so when missing). The lock file that guards the
// name is the socket path with ".lock" appended.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace norvane::wire {

// The service's registered name.
inline constexpr std::string_view kServiceName = "com.norvane.archive-helper";

// The runtime directory as described above; empty when the fallback folder
// cannot be made or is not safe (wrong owner or mode).
std::string runtimeDirectory();
// <runtime directory>/<name>; empty when there is no runtime directory or the
// path is too long for a socket address.
std::string namedSocketPath(std::string_view name);
std::string namedLockPath(std::string_view name);

// Connects to the socket registered under `name`. Answers the connected
// descriptor (close-on-exec), or -1 when nothing listens there or the peer
// runs under another user id.
int connectNamedSocket(std::string_view name);
// Connects to a socket path; -1 on failure. Checks the peer's user id.
int connectUnixSocket(const std::string& path);

// The peer's process id and user id of a connected Unix socket.
struct PeerCredentials {
  pid_t pid = 0;
  uid_t uid = 0;
};
std::optional<PeerCredentials> peerCredentials(int fd);
// True when the peer runs under this process's user id.
bool isPeerSameUser(int fd);

}  // namespace norvane::wire
