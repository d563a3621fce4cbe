// Cleaning, standardising and host forms of string URLs.

#include "norvane/urls/normal_forms.h"

#include <zlib.h>

#include <algorithm>

#include "norvane/urls/url_parts.h"
#include "urls/url_text.h"

namespace norvane::urls {
namespace {

using detail::View;

bool isLineEndOrBracket(unichar u) {
  switch (u) {
    case 0x0003:
    case 0x000A:
    case 0x000C:
    case 0x000D:
    case '<':
    case '>':
    case 0x2028:
    case 0x2029:
    case 0xFEFF:
    case 0xFFFC:
      return true;
    default:
      return false;
  }
}

View trimWhite(View s) {
  text::CharacterSetRep white = text::whiteCharacterSetRep();
  while (!s.empty() && text::isInRep(white, s.front())) s.remove_prefix(1);
  while (!s.empty() && text::isInRep(white, s.back())) s.remove_suffix(1);
  return s;
}

View withoutTrailingSlashes(View s) {
  while (!s.empty() && s.back() == '/') s.remove_suffix(1);
  return s;
}

// Anchor dropped, standardised and trailing "/" dropped: the form in which
// two URLs are compared.
String comparableForm(const String& url) {
  String standardized = standardizedStringURL(stringURLWithoutAnchor(url));
  View trimmed = withoutTrailingSlashes(standardized.view());
  return trimmed.size() == standardized.length() ? standardized : String(trimmed);
}

}  // namespace

String stringByFormattingURL(const String& url) {
  if (url.isNull()) return url;
  View s = trimWhite(url.view());
  if (detail::hasPrefixNoCase(s, "message:")) return s.size() == url.length() ? url : String(s);
  if (s.size() >= 2) {
    size_t open = s.find(u'<');
    size_t close = open == View::npos ? View::npos : s.rfind(u'>');
    if (close != View::npos && close < open) close = View::npos;
    size_t at = s.find(u'@');
    if (open != View::npos && close != View::npos) {
      bool addressInside = at != View::npos && at > open && at < close;
      bool wholeWrapped = at == View::npos && open == 0 && close == s.size() - 1;
      if (addressInside || wholeWrapped) s = s.substr(open + 1, close - open - 1);
    }
  }
  std::u16string out;
  out.reserve(s.size());
  for (unichar u : s) {
    if (!isLineEndOrBracket(u)) out.push_back(u);
  }
  return detail::sameOrNew(url, std::move(out));
}

namespace {

// True when standardizedStringURL would change the text. Up to the first
// dropped slash the output equals the input, so the input tells.
bool needsStandardizing(View s) {
  bool inQuery = false;
  for (size_t i = 0; i < s.size() && !inQuery; ++i) {
    if (s[i] == '?' || s[i] == ';') {
      inQuery = true;
    } else if (s[i] == '/' && i > 0 && s[i - 1] == '/' && !(i >= 2 && s[i - 2] == ':')) {
      return true;
    }
  }
  return !inQuery && (s == u"." || s == u".." || s.ends_with(u"/.") || s.ends_with(u"/.."));
}

}  // namespace

String standardizedStringURL(const String& url) {
  if (url.isNull() || !needsStandardizing(url.view())) return url;
  View s = url.view();
  std::u16string out;
  out.reserve(s.size());
  bool inQuery = false;
  for (unichar u : s) {
    if (!inQuery) {
      if (u == '?' || u == ';') {
        inQuery = true;
      } else if (u == '/' && !out.empty() && out.back() == '/' && !(out.size() >= 2 && out[out.size() - 2] == ':')) {
        continue;
      }
    }
    out.push_back(u);
  }
  if (!inQuery) {
    for (;;) {
      View v = out;
      if (v == u"." || v == u"..") {
        out.clear();
      } else if (v.ends_with(u"/.")) {
        out.resize(out.size() - 2);
      } else if (v.ends_with(u"/..")) {
        out.resize(out.size() - 3);
      } else {
        break;
      }
    }
  }
  return detail::sameOrNew(url, std::move(out));
}

String stringURLWithoutAnchor(const String& url) {
  if (url.isNull()) return url;
  View s = url.view();
  size_t hash = s.find(u'#');
  if (hash == View::npos) return url;
  bool route = hash + 2 < s.size() && (s[hash + 1] == '!' || s[hash + 1] == '/');
  return route ? url : String(s.substr(0, hash));
}

String stringURLWithoutCredentials(const String& url) {
  if (url.isEmpty()) return url;
  View s = url.view();
  if (s[0] == '/' || s[0] == '~') return url;
  std::optional<UrlParts> parts = parseUrl(s);
  if (!parts || !parts->hasUser) return url;
  std::u16string out(s.substr(0, parts->userInfoStart));
  out += s.substr(parts->hostStart);
  return String::fromU16(std::move(out));
}

String stringURLScheme(const String& url) {
  if (url.isNull()) return url;
  View s = url.view();
  size_t stop = detail::findFirstOf(s, ":/;?");
  if (stop == NotFound || s[stop] != ':') return String();
  return String(s.substr(0, stop));
}

String stringURLWithoutScheme(const String& url) {
  if (url.isNull()) return url;
  View s = url.view();
  size_t stop = detail::findFirstOf(s, ":/;?");
  if (stop == NotFound || s[stop] != ':') return url;
  size_t start = stop + 1;
  while (start < s.size() && s[start] == '/') ++start;
  return String(s.substr(start));
}

String stringURLPathExtension(const String& url) {
  if (url.length() < 2) return String();
  View s = url.view();
  if (s[0] != '.' && s[0] != '/') {
    size_t separator = detail::find(s, "://");
    if (separator != NotFound) {
      size_t pathStart = detail::findFirstOf(s, "/?", separator + 3);
      if (pathStart == NotFound) return String();
      s = s.substr(pathStart);
    }
  }
  View extension = detail::pathExtensionOf(s);
  if (extension.empty()) return String();
  size_t cut = detail::findFirstOf(extension, "?&;=#");
  if (cut == 0) return String();
  return String(cut == NotFound ? extension : extension.substr(0, cut));
}

bool stringURLMatchingExtensions(const String& url, const std::vector<String>& extensions) {
  String extension = stringURLPathExtension(url);
  if (extension.isNull()) return false;
  return std::any_of(extensions.begin(), extensions.end(),
                     [&](const String& e) { return text::isEqualToStringNoCase(e, extension); });
}

String displayStringURL(const String& url) {
  if (url.isNull()) return url;
  String withoutScheme = stringURLWithoutScheme(stringURLWithoutCredentials(url));
  View s = withoutTrailingSlashes(withoutScheme.view());
  if (detail::hasPrefixNoCase(s, "www.")) s.remove_prefix(4);
  if (s.size() == withoutScheme.length()) return withoutScheme;
  return String(s);
}

bool isEqualToStringURL(const String& url, const String& other) {
  if (url.isNull() || other.isNull()) return false;
  String a = comparableForm(url);
  String b = comparableForm(other);
  if (a.length() != b.length()) return false;
  return a.length() == 0 || text::isEqualToStringNoCase(a, b);
}

// ---- Host forms ----------------------------------------------------------

std::vector<String> hostComponents(const String& host) {
  std::vector<String> components;
  if (host.isEmpty()) return components;
  View s = host.view();
  for (size_t start = 0;;) {
    size_t dot = s.find(u'.', start);
    components.emplace_back(s.substr(start, dot == View::npos ? View::npos : dot - start));
    if (dot == View::npos) break;
    start = dot + 1;
  }
  return components;
}

String invertedHost(const String& host) {
  if (host.isEmpty()) return String();
  std::vector<String> components = hostComponents(host);
  std::u16string out;
  for (size_t i = components.size(); i-- > 0;) {
    out += components[i].view();
    if (i > 0) out.push_back('.');
  }
  return text::stringByApplyingConversionTable(String::fromU16(std::move(out)), text::lowerCharsTable());
}

std::vector<String> invertedHostComponents(const String& host, size_t maximum) {
  std::vector<String> inverted;
  if (host.isEmpty()) return inverted;
  std::vector<String> components = hostComponents(host);
  for (size_t i = components.size(); i-- > 0;) {
    if (!components[i].isEmpty()) {
      inverted.push_back(text::stringByApplyingConversionTable(components[i], text::lowerCharsTable()));
    }
  }
  if (maximum == 0 || inverted.size() <= maximum) return inverted;
  std::u16string last;
  for (size_t i = maximum - 1; i < inverted.size(); ++i) {
    if (!last.empty()) last.push_back('.');
    last += inverted[i].view();
  }
  if (last.size() >= 251) {
    std::string utf8 = String(last).toUtf8();
    uLong crc = crc32(0L, reinterpret_cast<const Bytef*>(utf8.data()), uInt(utf8.size()));
    char digits[9];
    snprintf(digits, sizeof digits, "%08lx", crc & 0xffffffffUL);
    last.resize(242);
    last += detail::widen(digits);
  }
  inverted.resize(maximum - 1);
  inverted.push_back(String::fromU16(std::move(last)));
  return inverted;
}

String stringByAppendingInvertedHostComponentsToPath(const String& host, const String& path, size_t maximum) {
  if (path.isNull() || host.isEmpty()) return path;
  std::vector<String> components = invertedHostComponents(host, maximum);
  if (components.empty()) return path;
  std::u16string out = path.toU16();
  for (const String& component : components) {
    if (!out.empty() && out.back() != '/') out.push_back('/');
    out += component.view();
  }
  return String::fromU16(std::move(out));
}

}  // namespace norvane::urls
