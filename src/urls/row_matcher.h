// Tells which of a few URL tables have a row occurring in a lower-cased
// text, in one walk over the text: for each table the same answer as
// text::fastContainsSubCStrings over its rows, without a pass per row.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "norvane/core/types.h"

namespace norvane::urls::detail {

class RowMatcher {
 public:
  // Each table is a null-terminated array of non-empty ASCII rows, kept by
  // reference; table i answers with bit i (at most 32 tables).
  explicit RowMatcher(const char* const* table) : RowMatcher({table}) {}
  explicit RowMatcher(std::initializer_list<const char* const*> tables);

  // The bits of the tables of `wanted` that have a row in the text; the walk
  // stops once all of them are found.
  uint32_t matchingTables(const unichar* text, size_t length, uint32_t wanted = ~0u) const;
  bool matches(const unichar* text, size_t length) const { return matchingTables(text, length) != 0; }

 private:
  struct Row {
    const char* text;
    uint32_t length;
    uint32_t bit;
  };
  static constexpr size_t kPairs = 128 * 128;
  static constexpr size_t kTripleBits = 1 << 15;
  static size_t pairKey(unichar a, unichar b) { return (size_t(a) << 7) | b; }
  static size_t tripleKey(unichar a, unichar b, unichar c) { return (pairKey(a, b) * 131 + c) & (kTripleBits - 1); }

  std::vector<Row> singles_;               // rows of one unit
  std::vector<Row> rows_;                  // rows of two or more, ordered by their first two units
  std::vector<uint16_t> pairStart_;        // rows_[pairStart_[k] .. pairStart_[k + 1]) start with pair k
  std::bitset<kPairs> pairHasShortRow_;    // a row of exactly two units starts with the pair
  std::bitset<kTripleBits> firstTriples_;  // hashed first three units of the longer rows
  size_t minimumLength_ = SIZE_MAX;
  uint32_t allTables_ = 0;
};

}  // namespace norvane::urls::detail
