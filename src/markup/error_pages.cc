#include "norvane/markup/error_pages.h"

#include <cstring>

#include "norvane/text/chars.h"

namespace norvane::markup {
namespace {

const char16_t* const kFrequencyPhrases[] = {
    u"You have exceeded the allowed page load frequency.",
    u"Sorry. You have exceeded the allowed page load frequency. Come back later...",
    u"You have exceeded the allowed page load frequency. Please try again in a minute.",
    u"You have exceeded the allowed page load frequency. Please reload the page in 15 seconds.",
    u"You have exceeded the allowed page load frequency. Wait a few seconds, then you can refresh and continue.",
    u"You have exceeded the allowed page load frequency. Please wait a few seconds before reloading the page.",
    u"Due to spam, we limit the number of times a page can be loaded. You have exceeded the allowed page load "
    u"frequency.",
    u"You have exceeded the allowed page load frequency. Please wait a moment then try again. Thank you.",
    u"Woah, slow down! You have exceeded the allowed page load frequency.",
};

const char16_t* const kErrorTitles[] = {
    u"403 Forbidden",
    u"403 Access Denied",
    u"404 Not Found",
    u"404 Page Not Found",
    u"404 File Not Found",
    u"404 Error File Not Found",
    u"Error 404 Page Not found",
    u"Page Not Found",
    u"Sorry Page Not Found",
    u"Error 404",
};

const char16_t* const kErrorFileNames[] = {u"/404.php", u"/404.htm", u"/404.html", u"/404.shtml", u"/404-index.html"};

const char* const kMissingPagePhrases[] = {"not found",      "does not exist",  "doesn't exist",
                                           "nicht gefunden", "nicht vorhanden", nullptr};

bool containsNoCase(const String& s, const char* needle) {
  return text::fastCaseInsensitiveUnicharsContainChars(s.data(), s.length(), needle, std::strlen(needle)) != nullptr;
}

bool endsWithNoCase(const String& s, std::u16string_view suffix) {
  return text::hasSuffixNoCase(s, String(suffix));
}

bool hasErrorTitlePrefix(const String& s) {
  text::CharacterSetRep alphaNum = text::alphaNumCharacterSetRep();
  for (const char16_t* title : kErrorTitles) {
    if (text::hasPrefixNoCaseUsingCharacterSetRep(s, String(title), alphaNum)) return true;
  }
  return false;
}

}  // namespace

bool exceededPageLoadFrequencyTitle(const String&, const String& text) {
  if (text.isEmpty()) return false;
  text::CharacterSetRep alpha = text::alphaCharacterSetRep();
  for (const char16_t* phrase : kFrequencyPhrases) {
    if (text::equalStringsNoCaseUsingCharacterSetRep(text, String(phrase), alpha)) return true;
  }
  return false;
}

bool isErrorPageTitle(const String& title, const String& text, const String& url) {
  if (!title.isEmpty()) {
    bool titleMatches = hasErrorTitlePrefix(title);
    for (size_t i = 0; !titleMatches && i < std::size(kErrorTitles); ++i) {
      titleMatches = endsWithNoCase(title, kErrorTitles[i]);
    }
    bool textMatches = text.isEmpty() || hasErrorTitlePrefix(text);
    if (titleMatches && textMatches) return true;
    if (titleMatches && (containsNoCase(text, "404 Not Found") || containsNoCase(text, "404 (Page not found)"))) {
      return true;
    }
    if (containsNoCase(title, "- 404 page -") && containsNoCase(text, "page doesn't exist on this server")) {
      return true;
    }
    if (endsWithNoCase(url, u"/403.php") && containsNoCase(title, "403 Access Denied")) return true;
    if (url.view().ends_with(u"/error.php") && containsNoCase(title, "solicitada no existe")) return true;
  }
  if (text.isEmpty()) return false;
  if (url.view().find(u"/404") != std::u16string_view::npos) {
    for (const char16_t* name : kErrorFileNames) {
      if (endsWithNoCase(url, name) && text::containsSubCStrings(text, kMissingPagePhrases, false)) return true;
    }
  }
  return text::equalStringsNoCaseUsingCharacterSetRep(text, String(u"Sorry server is too busy please try again later"),
                                                      text::alphaNumCharacterSetRep());
}

}  // namespace norvane::markup
