// Removing session ids, tracking parameters, index pages and empty
// parameters, and the simplified form built from them.

#include <string>

#include "norvane/urls/classification.h"
#include "norvane/urls/normal_forms.h"
#include "urls/url_text.h"

namespace norvane::urls {
namespace {

using detail::View;

// Host fragments that name outside sites: a discussion-group host whose
// links carry a tracking "ei=", and a patent search whose links carry "ved=".
constexpr std::string_view kGroupHostFragment = "groups.google.";
constexpr std::string_view kPatentSearchFragment = "patents.google.";

// Removes the parameter whose delimiter stands at `delimiter`: through the
// next terminator when one follows that is not the last unit (the delimiter
// in front then introduces the next parameter), else to the end.
void removeParameterAt(std::u16string& s, size_t delimiter) {
  std::string_view terminators = s[delimiter] == ';' ? ";&?" : "&?";
  size_t next = detail::findFirstOf(s, terminators, delimiter + 1);
  if (next != NotFound && next + 1 < s.size()) {
    s.erase(delimiter + 1, next - delimiter);
  } else {
    s.erase(delimiter);
  }
}

// The first occurrence of a parameter name, and whether it qualifies.
struct Occurrence {
  size_t location = NotFound;
  bool behindDelimiter(View s) const {
    return location != NotFound && location > 0 && detail::isQueryDelimiter(s[location - 1]);
  }
};

Occurrence firstOccurrence(View s, std::string_view name, bool ignoreCase) {
  return {ignoreCase ? detail::findNoCase(s, name) : detail::find(s, name)};
}

// True when the value starting at `valueStart` holds a letter.
bool valueHoldsLetter(View s, size_t valueStart) {
  text::CharacterSetRep alpha = text::alphaCharacterSetRep();
  for (size_t i = valueStart; i < s.size() && !detail::isQueryDelimiter(s[i]) && s[i] != '#'; ++i) {
    if (text::isInRep(alpha, s[i])) return true;
  }
  return false;
}

struct SessionPage {
  bool html = false;   // ".html?" or ".htm?"
  bool php = false;    // ".php?"
  bool asp = false;    // ".asp?" or ".aspx?"
  bool forum = false;  // a php topic or thread
  bool group = false;  // the discussion-group host
};

SessionPage classifySessionPage(const String& url) {
  View s = url.view();
  SessionPage page;
  page.html = detail::containsNoCase(s, ".html?") || detail::containsNoCase(s, ".htm?");
  page.php = !page.html && detail::containsNoCase(s, ".php?");
  page.asp = !page.html && !page.php && (detail::containsNoCase(s, ".asp?") || detail::containsNoCase(s, ".aspx?"));
  page.forum = page.php && stringURLIsTopicOrThread(url);
  page.group = detail::containsNoCase(s, kGroupHostFragment);
  return page;
}

struct Name {
  std::string_view text;
  bool ignoreCase;
};

constexpr Name kSessionNames[] = {
    {"phpsessionid=", true}, {"phpsessid=", true}, {"jsessionid=", true}, {"jsessid=", true},
    {"sessionid=", true},    {"wgsessid=", true},  {"sessid=", true},     {"CFID=", true},
    {"CFTOKEN=", true},      {"affid=", true},     {"REFFID=", true},
};

// One pass: removes the first qualifying parameter. `sessionFlag` is the
// flag carried between passes.
bool removeOneSessionParameter(std::u16string& s, const SessionPage& page, bool& sessionFlag) {
  bool flag = sessionFlag;
  auto tryRemove = [&](std::string_view name, bool ignoreCase, bool needsLetter = false) {
    Occurrence hit = firstOccurrence(s, name, ignoreCase);
    if (!hit.behindDelimiter(s)) return false;
    if (needsLetter && !valueHoldsLetter(s, hit.location + name.size())) return false;
    removeParameterAt(s, hit.location - 1);
    return true;
  };
  auto removed = [&] {
    sessionFlag = flag;
    return true;
  };

  bool holdsId = detail::containsNoCase(s, "id=");
  if (holdsId) {
    for (const Name& name : kSessionNames) {
      if (tryRemove(name.text, name.ignoreCase)) {
        flag = true;
        return removed();
      }
    }
    // Of "cid=" and "sid=" only a value with a letter is a session id.
    if (tryRemove("cid=", false, true) || tryRemove("p_sid=", false) || tryRemove("sid=", false, true)) {
      return removed();
    }
    flag = true;
  } else if (page.forum && detail::contains(s, "&p=") && tryRemove("s=", false)) {
    return removed();
  }
  for (std::string_view name : {"ccbill=", "nats=", "_fb_noscript="}) {
    if (tryRemove(name, false)) return removed();
  }
  if ((page.html || page.php) && (tryRemove("pi=", false) || tryRemove("cache=", true))) return removed();
  if (page.html && (tryRemove("CMP=", false) || tryRemove("ATT=", false))) return removed();
  if ((page.php || page.asp) && tryRemove("lsrc=", true)) return removed();
  if (page.forum && (tryRemove("highlight=", true) || tryRemove("hilit=", false))) return removed();
  if (page.group && tryRemove("ei=", false)) return removed();
  if (flag && tryRemove("random=", true)) return removed();
  return false;
}

// Login, register and widget pages lose their whole query.
bool cutQueryOfPage(std::u16string& s) {
  static constexpr std::pair<std::string_view, size_t> kPages[] = {
      {"/login?", 6}, {"/register?", 9}, {".html?widgetType=", 5}};
  for (auto [marker, keep] : kPages) {
    size_t at = detail::find(s, marker);
    if (at != NotFound) {
      s.resize(at + keep);
      return true;
    }
  }
  return false;
}

}  // namespace

String stringURLByRemovingSessionIDs(const String& url) {
  // Every parameter removed has a "=", every query cut a "?".
  if (url.isNull() || (url.view().find(u'=') == View::npos && url.view().find(u'?') == View::npos)) return url;
  SessionPage page = classifySessionPage(url);
  std::u16string s = url.toU16();
  bool sessionFlag = false;
  while (removeOneSessionParameter(s, page, sessionFlag)) {
  }
  while (cutQueryOfPage(s)) {
  }
  return detail::sameOrNew(url, std::move(s));
}

String stringURLByRemovingAnalytics(const String& url) {
  if (url.isNull() || !detail::containsNoCase(url.view(), "utm_")) return url;
  static constexpr std::string_view kNames[] = {
      "utm_source=", "utm_medium=", "utm_campaign=", "utm_term=", "utm_content=", "utm_nooverride="};
  std::u16string s = url.toU16();
  for (bool removed = true; removed && detail::containsNoCase(s, "utm_");) {
    removed = false;
    for (std::string_view name : kNames) {
      Occurrence hit = firstOccurrence(s, name, true);
      if (hit.behindDelimiter(s)) {
        removeParameterAt(s, hit.location - 1);
        removed = true;
        break;
      }
    }
  }
  return detail::sameOrNew(url, std::move(s));
}

String stringURLByRemovingQueryParam(const String& url, View param) {
  if (url.isNull() || param.empty()) return url;
  std::u16string s = url.toU16();
  for (;;) {
    const unichar* hit = text::fastCaseInsensitiveContainsUnichars(s.data(), s.size(), param.data(), param.size());
    if (!hit) break;
    size_t location = size_t(hit - s.data());
    if (location == 0 || !detail::isQueryDelimiter(s[location - 1])) break;
    removeParameterAt(s, location - 1);
  }
  return detail::sameOrNew(url, std::move(s));
}

String stringURLByRemovingIndexPages(const String& url) {
  if (url.length() < 10) return url;
  View s = url.view();
  if (!detail::containsNoCase(s, "/index.")) return url;
  static constexpr std::string_view kIndexPages[] = {"/index.shtml", "/index.phtml", "/index.jhtml",
                                                     "/index.html",  "/index.htm",   "/index.php",
                                                     "/index.chm",   "/index.asp",   "/index.cgi"};
  for (std::string_view page : kIndexPages) {
    if (detail::hasSuffixNoCase(s, page)) return String(s.substr(0, s.size() - page.size()));
  }
  return url;
}

String stringURLByRemovingEmptyParams(const String& url) {
  if (url.isNull() || url.view().find(u'=') == View::npos) return url;
  std::u16string s = url.toU16();
  size_t i = 0;
  while ((i = s.find(u'=', i)) != std::u16string::npos) {
    bool atEnd = i + 1 == s.size();
    bool emptyValue = atEnd || detail::isQueryDelimiter(s[i + 1]) || s[i + 1] == 0;
    size_t start = NotFound;
    if (emptyValue && i >= 2) {
      for (size_t k = i; k-- > 0;) {
        if (detail::isQueryDelimiter(s[k])) {
          start = k + 1;
          break;
        }
        if (s[k] == '=') break;
      }
    }
    if (start == NotFound) {
      ++i;
      continue;
    }
    if (atEnd) {
      s.erase(start);
    } else {
      s.erase(start, i + 2 - start);
    }
    // The walk goes on at the same index, now in the shorter string.
  }
  for (size_t at; (at = s.find(u"?&")) != std::u16string::npos;) s.erase(at + 1, 1);
  return detail::sameOrNew(url, std::move(s));
}

String simplifiedStringURL(const String& url) {
  return simplifiedStringURL(url, true, true, true, true, true);
}

String simplifiedStringURL(const String& url, bool sessionIDs, bool analytics, bool indexPages, bool emptyParams,
                           bool anchors) {
  if (url.isNull()) return url;
  String s = stringByReplacingStandardPercentEscapesOfURL(url);
  if (anchors) s = stringURLWithoutAnchor(s);
  s = standardizedStringURL(s);
  if (sessionIDs) s = stringURLByRemovingSessionIDs(s);
  if (analytics) s = stringURLByRemovingAnalytics(s);
  if (emptyParams) s = stringURLByRemovingEmptyParams(s);
  if (detail::containsNoCase(url.view(), kPatentSearchFragment)) s = stringURLByRemovingQueryParam(s, u"ved=");
  if (indexPages) {
    constexpr std::string_view kMainPage = "/?page=main.php";
    if (sessionIDs && s.length() >= 15 && detail::hasSuffixNoCase(s.view(), kMainPage)) {
      s = s.substring(Range{0, s.length() - kMainPage.size() + 1});
    } else {
      s = stringURLByRemovingIndexPages(s);
    }
  }

  View v = s.view();
  std::u16string out;
  if (detail::hasPrefixNoCase(v, "http://www.")) {
    out = u"http://" + std::u16string(v.substr(11));
  } else if (detail::hasPrefixNoCase(v, "https://www.")) {
    out = u"http://" + std::u16string(v.substr(12));
  } else if (detail::hasPrefixNoCase(v, "https:")) {
    out = u"http:" + std::u16string(v.substr(6));
  } else {
    out = std::u16string(v);
  }
  while (!out.empty() && out.back() == '/') out.pop_back();
  const unichar* lower = text::lowerCharsTable();
  for (unichar& u : out) u = lower[u];
  return detail::sameOrNew(url, std::move(out));
}

}  // namespace norvane::urls
