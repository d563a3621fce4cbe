// Helpers shared by the urls tests.
#pragma once

#include <string>
#include <vector>

#include "norvane/core/string.h"

namespace norvane::urls::testing {

inline String S(const char* utf8) {
  return String::fromUtf8(utf8);
}
inline std::string U(const String& s) {
  return s.isNull() ? "<null>" : s.toUtf8();
}

// URLs found at run time in Debian's documentation: the copyright files and
// the Python manual. Empty when neither is installed.
const std::vector<String>& corpusURLs();

}  // namespace norvane::urls::testing
