// Finding substrings, and finding strings in arrays.
//
// Case-insensitive substring search compares unit by unit through
// upperCharsTable(), so that hit positions and lengths are those of the text.
// A null or empty receiver or argument gives false, 0 or NotFound.
#pragma once

#include <initializer_list>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/types.h"

namespace norvane::text {

bool containsSubstring(const String& s, const String& substring, bool caseSensitive = true);
// Whether any of the strings (up to the first null one) occurs.
bool containsSubstrings(const String& s, std::initializer_list<String> substrings, bool caseSensitive = true);
// Non-overlapping occurrences: the search goes on behind each hit.
size_t countSubstring(const String& s, const String& substring, bool caseSensitive = true);

// Finds `needle` relative to the current selection `range` (clamped to the
// text), never inside it. Forward: from the selection's end to the text's
// end, then with `wrap` from 0 up to the selection. Backward: the hit nearest
// in front of the selection, then with `wrap` the last hit behind it. A miss
// gives NotFoundRange.
Range findString(const String& s, const String& needle, Range range, bool caseSensitive, bool forward, bool wrap);

// The first index of an equal string; NotFound for a null or empty argument.
// The no-case forms compare with full case folding.
size_t indexOfStringEqualTo(const std::vector<String>& array, const String& s);
size_t indexOfStringEqualToNoCase(const std::vector<String>& array, const String& s);
bool containsString(const std::vector<String>& array, const String& s);
bool containsStringNoCase(const std::vector<String>& array, const String& s);

}  // namespace norvane::text
