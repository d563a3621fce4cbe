// The built-in self-check: a fixed text and the table of queries it must
// and must not match.

#include <string>

#include "norvane/core/log.h"
#include "norvane/core/unicode.h"
#include "norvane/query/evaluation.h"
#include "norvane/query/wildcards.h"

namespace norvane::query {

namespace {

// Between tempor and labore stand two words; "missing" is in no text.
constexpr QueryTestCase kCases[] = {
    {true, "tempor AND duo"},
    {false, "tempor AND NOT duo"},
    {false, "tempor AND missing"},
    {true, "tempor AND NOT missing"},
    {true, "tempor OR duo"},
    {true, "tempor OR NOT duo"},
    {true, "tempor OR missing"},
    {true, "tempor OR NOT missing"},
    {false, "tempor XOR duo"},
    {true, "tempor XOR NOT duo"},
    {true, "tempor XOR missing"},
    {false, "tempor XOR NOT missing"},
    {true, "tempor NEAR labore"},
    {false, "tempor NEAR/2 labore"},
    {true, "tempor BEFORE labore"},
    {false, "tempor BEFORE/2 labore"},
    {false, "tempor AFTER labore"},
    {false, "tempor AFTER/2 labore"},
    {true, "labore AFTER tempor"},
    {false, "labore AFTER/2 tempor"},
    {true, "tempor NEXT invidunt"},
    {false, "tempor NEXT NOT invidunt"},
    {false, "tempor NEXT missing"},
    {true, "tempor NEXT NOT missing"},
    {false, "tempor NOT NEAR labore"},
    {true, "tempor NOT NEAR/2 labore"},
    {false, "tempor NOT BEFORE labore"},
    {true, "tempor NOT BEFORE/2 labore"},
    {true, "tempor NOT AFTER labore"},
    {true, "tempor NOT AFTER/2 labore"},
    {false, "labore NOT AFTER tempor"},
    {true, "labore NOT AFTER/2 tempor"},
    {false, "tempor NEAR missing"},
    {false, "tempor NEAR/2 missing"},
    {false, "tempor BEFORE missing"},
    {false, "tempor BEFORE/2 missing"},
    {false, "tempor AFTER missing"},
    {false, "tempor AFTER/2 missing"},
    {false, "labore AFTER missing"},
    {false, "labore AFTER/2 missing"},
    {true, "tempor NOT NEAR missing"},
    {true, "tempor NOT NEAR/2 missing"},
    {true, "tempor NOT BEFORE missing"},
    {true, "tempor NOT BEFORE/2 missing"},
    {true, "tempor NOT AFTER missing"},
    {true, "tempor NOT AFTER/2 missing"},
    {true, "labore NOT AFTER missing"},
    {true, "labore NOT AFTER/2 missing"},
};

}  // namespace

const String& queryTestString() {
  static const String text = String::fromLatin1(
      "Lorem ipsum dolor sit amet, consetetur sadipscing elitr, sed diam nonumy eirmod tempor invidunt ut labore "
      "et dolore magna aliquyam erat. At vero eos et accusam et justo duo dolores et ea rebum.");
  return text;
}

std::span<const QueryTestCase> queryTestCases() {
  return kCases;
}

bool testQueryTerms() {
  bool allHold = true;
  for (const QueryTestCase& c : kCases) {
    QueryTerms tree = QueryTerms::withWildcard(utf8ToUtf16(c.query));
    bool matched = matchesStringWithComparison(tree, queryTestString(), kComparisonCaseInsensitive);
    logFormat("{}: {} => {}", matched == c.expected ? "Success" : "Failed", c.query, matched ? "Yes" : "No");
    allHold = allHold && matched == c.expected;
  }
  return allHold;
}

}  // namespace norvane::query
