#include "norvane/wire/socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace norvane::wire {

std::string runtimeDirectory() {
  const char* xdg = std::getenv("XDG_RUNTIME_DIR");
  if (xdg && xdg[0] == '/') return xdg;

  const uid_t uid = ::getuid();
  std::string folder = "/tmp/norvane-" + std::to_string(uid);
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return {};
  // Somebody else may have made it first: only a private folder of ours is
  // safe to hold the socket.
  struct stat st;
  if (::lstat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || st.st_uid != uid || (st.st_mode & 0077) != 0)
    return {};
  return folder;
}

std::string namedSocketPath(std::string_view name) {
  if (name.empty() || name.find('/') != std::string_view::npos) return {};
  std::string folder = runtimeDirectory();
  if (folder.empty()) return {};
  std::string path = folder + "/" + std::string(name);
  if (path.size() >= sizeof(sockaddr_un::sun_path)) return {};
  return path;
}

std::string namedLockPath(std::string_view name) {
  std::string path = namedSocketPath(name);
  return path.empty() ? path : path + ".lock";
}

std::optional<PeerCredentials> peerCredentials(int fd) {
  ucred credentials{};
  socklen_t length = sizeof credentials;
  if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0) return std::nullopt;
  return PeerCredentials{credentials.pid, credentials.uid};
}

bool isPeerSameUser(int fd) {
  auto credentials = peerCredentials(fd);
  return credentials && credentials->uid == ::getuid();
}

int connectUnixSocket(const std::string& path) {
  sockaddr_un address{};
  if (path.empty() || path.size() >= sizeof address.sun_path) return -1;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());

  int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || !isPeerSameUser(fd)) {
    ::close(fd);
    return -1;
  }
  return fd;
}

int connectNamedSocket(std::string_view name) {
  return connectUnixSocket(namedSocketPath(name));
}

}  // namespace norvane::wire
