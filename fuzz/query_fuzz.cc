// Fuzzes the query parser, the writers and evaluation on a small fixed text.
// The input is read as UTF-16 units; its first unit chooses the write flags
// and the comparison.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "norvane/query/evaluation.h"
#include "norvane/query/extracts.h"
#include "norvane/query/query_terms.h"

namespace {

const norvane::String& sampleText() {
  static const norvane::String text = norvane::String::fromUtf8(
      "Lorem ipsum dolor sit amet, consetetur sadipscing elitr. Sed diam nonumy eirmod tempor invidunt ut "
      "labore et dolore magna aliquyam erat! E-mail: a[b]c* \"quoted\" (x) \xE6\xBC\xA2\xE5\xAD\x97 caf\xC3\xA9.\n"
      "Zweite Zeile; tempor tempor labore.");
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace norvane;
  using namespace norvane::query;
  if (size < 2) return 0;
  uint16_t control = static_cast<uint16_t>(data[0] | data[1] << 8);
  std::u16string units;
  for (size_t i = 2; i + 1 < size; i += 2) units.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8));

  const String& text = sampleText();
  for (bool wildcard : {false, true}) {
    QueryTerms tree = wildcard ? QueryTerms::withWildcard(units) : QueryTerms::withString(units);
    uint32_t flags = static_cast<uint32_t>(control) << 2 | (control & 3);
    (void)tree.queryTermForOperators(flags & 0x3FFFF);
    String standardized = tree.standardizedQueryTerm();
    (void)tree.normalizedQueryTerm();
    (void)tree.description();
    (void)tree.plusWildcards();
    (void)tree.extendedPlusWildcards();
    (void)tree.plusWords();
    // The standardized form of a standardized form is itself.
    String again = QueryTerms::withString(standardized).standardizedQueryTerm();
    if (!wildcard && again.view() != QueryTerms::withString(again).standardizedQueryTerm().view()) __builtin_trap();

    unsigned comparison = control & 7;
    if (wildcard) {
      (void)matchesStringWithComparison(tree, text, comparison);
      (void)containsStringWithComparison(tree, text, comparison);
      size_t delivered = 0;
      size_t lastEnd = 0;
      enumerateString(tree, text, {0, text.length()}, comparison & 1,
                      [&](const FastWordEnumerator&, const String&, Range range, bool) {
                        if (range.location < lastEnd || range.end() > text.length()) __builtin_trap();
                        lastEnd = range.end();
                        ++delivered;
                      });
      std::vector<QueryTerms> trees = {tree};
      (void)assembleOccurrencesOfQueryTerms(text, trees, true, control & 8, comparison, 1, sentenceSeparators(),
                                            String(), control >> 8);
      (void)getOccurrencesOfQueryTerms(text, trees, comparison, 1, sentenceSeparators(), control >> 12);
    } else {
      (void)matchesString(tree, text, comparison & 1);
      (void)containsString(tree, text, comparison & 1);
      (void)minTermLen(tree);
    }
  }
  (void)queryTermWithoutSiteOperator(String(units));
  return 0;
}
