// Recognising error and rate-limit pages from a page's title, plain text
// and URL, by fixed phrase lists in English, German and Spanish. Any
// argument may be null.
#pragma once

#include "norvane/core/string.h"

namespace norvane::markup {

// The text is one of the "You have exceeded the allowed page load frequency"
// notices, comparing letters only and ignoring case. The title plays no part.
bool exceededPageLoadFrequencyTitle(const String& title, const String& text);

// The page is a "not found", "forbidden" or "server too busy" page.
bool isErrorPageTitle(const String& title, const String& text, const String& url);

}  // namespace norvane::markup
