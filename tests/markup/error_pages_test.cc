#include "norvane/markup/error_pages.h"

#include <gtest/gtest.h>

namespace norvane::markup {
namespace {

struct Case {
  const char* name;
  const char16_t* title;  // null for a null string
  const char16_t* text;
  const char16_t* url;
  bool error;
};

String maybe(const char16_t* s) {
  return s ? String(s) : String();
}

TEST(ErrorPagesTest, IsErrorPage) {
  const Case cases[] = {
      {"title alone", u"404 Not Found", u"", u"", true},
      {"suffix title, text begins with an error title", u"Not Found - 404 Not Found", u"404 not found: sorry", u"",
       true},
      {"suffix title, text mentions the status", u"Not Found - 404 Not Found", u"The server said 404 Not Found.", u"",
       true},
      {"suffix title, other text", u"Not Found - 404 Not Found", u"Welcome to our shop", u"", false},
      {"punctuated title", u"404: not found!", u"", u"", true},
      {"ordinary title, empty text", u"Welcome", u"", u"", false},
      {"German missing page", nullptr, u"Seite nicht gefunden", u"http://a/404.php", true},
      {"no error file name", nullptr, u"Seite nicht gefunden", u"http://a/404/page", false},
      {"error file name in upper case", nullptr, u"Page NOT FOUND", u"http://a/404.HTML", true},
      {"busy server", u"anything", u"SORRY, server is too busy! Please try again later.", u"x", true},
      {"null text behind the title rules", u"Welcome", nullptr, u"http://a/404.php", false},
      {"404 page phrase", u"Oops - 404 page - Example", u"This page doesn't exist on this server.", u"", true},
      {"access denied", u"Error: 403 Access Denied here", u"x", u"http://a/403.PHP", true},
      {"spanish error", u"La pagina solicitada no existe", u"x", u"http://a/error.php", true},
      {"spanish error needs exact ending", u"La pagina solicitada no existe", u"x", u"http://a/ERROR.PHP", false},
      {"everything null", nullptr, nullptr, nullptr, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(isErrorPageTitle(maybe(c.title), maybe(c.text), maybe(c.url)), c.error);
  }
}

TEST(ErrorPagesTest, PageLoadFrequency) {
  EXPECT_TRUE(exceededPageLoadFrequencyTitle(
      String(), String(u"woah slow down you have exceeded the allowed page load frequency")));
  EXPECT_TRUE(
      exceededPageLoadFrequencyTitle(String(u"x"), String(u"YOU HAVE EXCEEDED the allowed page-load frequency!!! 42")));
  EXPECT_FALSE(exceededPageLoadFrequencyTitle(
      String(), String(u"woah slow down you have exceeded the allowed page load frequency today")));
  EXPECT_FALSE(exceededPageLoadFrequencyTitle(String(), String(u"")));
  EXPECT_FALSE(exceededPageLoadFrequencyTitle(String(), String()));
}

}  // namespace
}  // namespace norvane::markup
