#include "importers/content_types.h"

#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>

namespace norvane::importers {
namespace {

// Enough for every magic rule of shared-mime-info that matters in practice.
constexpr size_t kSniffBytes = 4096;

std::string lowerCased(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

}  // namespace

std::string typeIdentifierOfFileAtPath(const std::string& path) {
  struct stat st;
  if (path.empty() || ::stat(path.c_str(), &st) != 0) return {};
  if (S_ISDIR(st.st_mode)) return "inode/directory";

  unsigned char buffer[kSniffBytes];
  ssize_t length = 0;
  if (S_ISREG(st.st_mode)) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
      do length = ::read(fd, buffer, sizeof buffer);
      while (length < 0 && errno == EINTR);
      ::close(fd);
    }
    if (length < 0) length = 0;
  }
  gboolean uncertain = FALSE;
  gchar* type =
      g_content_type_guess(path.c_str(), length > 0 ? buffer : nullptr, static_cast<gsize>(length), &uncertain);
  if (!type) return {};
  std::string result = lowerCased(type);
  g_free(type);
  return result;
}

bool typeConformsTo(const std::string& type, const std::string& declaredType) {
  if (type.empty() || declaredType.empty()) return false;
  if (type == declaredType) return true;
  return g_content_type_is_a(type.c_str(), declaredType.c_str());
}

}  // namespace norvane::importers
