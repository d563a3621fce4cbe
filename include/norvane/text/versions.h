// Version numbers such as "2.9.2", "1.0beta3" or "4.1rc2".
//
// A pre-release word becomes a negative component, so "1.0beta1" reads as
// 1.0.-3.1: alpha -5, build -4, beta -3, rc -2, pb -1. A missing component
// counts as 0, so a release is newer than any of its pre-releases.
#pragma once

#include <vector>

#include "norvane/core/string.h"

namespace norvane::text {

// The receiver trimmed of white units, the pre-release words (ignoring case)
// replaced by ".-5." ... ".-1.", split at ".".
std::vector<String> comparableComponentsOfVersionNumber(const String& s);
// -1, 0 or 1 as the receiver is older than, equal to or newer than `other`.
// Components compare by their leading integer (0 when there is none).
int compareToVersionNumber(const String& s, const String& other);
// Checks a fixed list of known orderings; logs each one that fails and
// answers whether all held.
bool testVersionNumberComparison();

}  // namespace norvane::text
