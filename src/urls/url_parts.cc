#include "norvane/urls/url_parts.h"

#include "urls/url_text.h"

namespace norvane::urls {
namespace {

using detail::View;

bool isSchemeUnit(unichar u) {
  return detail::isAsciiAlnum(u) || u == '+' || u == '-' || u == '.';
}

}  // namespace

std::optional<UrlParts> parseUrl(View s) {
  for (unichar u : s) {
    if (u <= 0x20 || u == 0x7F) return std::nullopt;
  }
  UrlParts parts;
  size_t i = 0;
  if (!s.empty() && detail::isAsciiLetter(s[0])) {
    size_t k = 1;
    while (k < s.size() && isSchemeUnit(s[k])) ++k;
    if (k < s.size() && s[k] == ':') {
      parts.scheme = s.substr(0, k);
      i = k + 1;
    }
  }
  if (s.substr(i).starts_with(u"//")) {
    parts.hasAuthority = true;
    size_t start = i + 2;
    size_t end = detail::findFirstOf(s, "/?#", start);
    if (end == NotFound) end = s.size();
    View authority = s.substr(start, end - start);
    parts.userInfoStart = parts.hostStart = start;
    size_t at = authority.rfind(u'@');
    if (at != View::npos) {
      View userInfo = authority.substr(0, at);
      size_t colon = userInfo.find(u':');
      parts.hasUser = true;
      parts.user = userInfo.substr(0, colon);
      if (colon != View::npos) {
        parts.hasPassword = true;
        parts.password = userInfo.substr(colon + 1);
      }
      parts.hostStart = start + at + 1;
      authority.remove_prefix(at + 1);
    }
    View port;
    if (!authority.empty() && authority[0] == '[') {
      size_t close = authority.find(u']');
      if (close == View::npos) return std::nullopt;
      parts.host = authority.substr(1, close - 1);
      View rest = authority.substr(close + 1);
      if (!rest.empty()) {
        if (rest[0] != ':') return std::nullopt;
        port = rest.substr(1);
      }
    } else {
      size_t colon = authority.rfind(u':');
      parts.host = authority.substr(0, colon);
      if (colon != View::npos) port = authority.substr(colon + 1);
    }
    for (unichar u : port) {
      if (!detail::isAsciiDigit(u)) return std::nullopt;
    }
    parts.port = port;
    i = end;
  }
  size_t pathEnd = detail::findFirstOf(s, "?#", i);
  if (pathEnd == NotFound) pathEnd = s.size();
  parts.path = s.substr(i, pathEnd - i);
  i = pathEnd;
  if (i < s.size() && s[i] == '?') {
    size_t queryEnd = s.find(u'#', i);
    if (queryEnd == View::npos) queryEnd = s.size();
    parts.hasQuery = true;
    parts.query = s.substr(i + 1, queryEnd - i - 1);
    i = queryEnd;
  }
  if (i < s.size() && s[i] == '#') {
    parts.hasFragment = true;
    parts.fragment = s.substr(i + 1);
  }
  return parts;
}

}  // namespace norvane::urls
