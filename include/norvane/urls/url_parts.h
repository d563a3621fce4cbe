// The components of a URL string, found without copying.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace norvane::urls {

// Views into the parsed text. A component that is absent is empty and its
// `has...` flag is false.
struct UrlParts {
  std::u16string_view scheme;
  std::u16string_view user;
  std::u16string_view password;
  std::u16string_view host;  // without the brackets of an IPv6 literal
  std::u16string_view port;
  std::u16string_view path;
  std::u16string_view query;     // without "?"
  std::u16string_view fragment;  // without "#"
  bool hasAuthority = false;
  bool hasUser = false;
  bool hasPassword = false;
  bool hasQuery = false;
  bool hasFragment = false;
  // Where the user information starts and the host starts, for cutting it
  // out; equal when there is none.
  size_t userInfoStart = 0;
  size_t hostStart = 0;
};

// Splits `url` into its components (RFC 3986 generic syntax). Answers nullopt
// for text that is no URL: white or control units, a malformed scheme or
// IPv6 literal, a port that is not a number.
std::optional<UrlParts> parseUrl(std::u16string_view url);

}  // namespace norvane::urls
