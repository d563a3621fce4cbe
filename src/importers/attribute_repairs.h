// Repairs of what importers leave in an attribute dictionary: markup in
// place of text, text hidden under private keys, and values that are bare
// tags. Runs after the importers and before the dictionary is made safe to
// send.
#pragma once

#include <string>

#include "norvane/core/value.h"

namespace norvane::importers {

// By the path's ending, without regard to case (an empty path takes the
// last rule):
//   .mellel  removes every value (or one-element array) that is a single
//            bare tag such as "<tag>"; nothing else runs
//   .mht     replaces kMDItemTextContent by its plain text
//   .scap    kMDItemTextContent from the notes of a Scapple document
//   others   when kMDItemTextContent is missing, the plain text of
//            kMDItemHTMLContent or else of kMDItemHTMLContentData (UTF-8),
//            which is then kept as kMDItemHTMLContent
// Plain text is taken from the body, obeying crawl comments.
void repairAttributes(const std::string& path, Dictionary& attributes);

}  // namespace norvane::importers
