#include "urls/row_matcher.h"

#include <algorithm>
#include <cstring>

namespace norvane::urls::detail {

RowMatcher::RowMatcher(std::initializer_list<const char* const*> tables) : pairStart_(kPairs + 1, 0) {
  uint32_t bit = 1;
  for (const char* const* table : tables) {
    for (const char* const* row = table; *row; ++row) {
      uint32_t length = uint32_t(strlen(*row));
      if (length == 0) continue;
      minimumLength_ = std::min<size_t>(minimumLength_, length);
      (length == 1 ? singles_ : rows_).push_back({*row, length, bit});
    }
    allTables_ |= bit;
    bit <<= 1;
  }
  auto keyOf = [](const Row& r) { return pairKey(r.text[0] & 127, r.text[1] & 127); };
  std::stable_sort(rows_.begin(), rows_.end(), [&](const Row& a, const Row& b) { return keyOf(a) < keyOf(b); });
  for (const Row& r : rows_) {
    ++pairStart_[keyOf(r) + 1];
    if (r.length == 2) {
      pairHasShortRow_.set(keyOf(r));
    } else {
      firstTriples_.set(tripleKey(r.text[0] & 127, r.text[1] & 127, r.text[2] & 127));
    }
  }
  for (size_t k = 0; k < kPairs; ++k) pairStart_[k + 1] += pairStart_[k];
}

uint32_t RowMatcher::matchingTables(const unichar* text, size_t length, uint32_t wanted) const {
  uint32_t found = 0;
  wanted &= allTables_;
  if (length < minimumLength_ || wanted == 0) return found;
  for (size_t i = 0; i < length; ++i) {
    unichar a = text[i];
    if (a >= 128) continue;
    for (const Row& r : singles_) {
      if (r.text[0] == a) found |= r.bit & wanted;
    }
    if (i + 1 >= length || text[i + 1] >= 128) continue;
    size_t pair = pairKey(a, text[i + 1]);
    size_t begin = pairStart_[pair];
    size_t end = pairStart_[pair + 1];
    if (begin == end) continue;
    bool tripleMatch =
        i + 2 < length && text[i + 2] < 128 && firstTriples_.test(tripleKey(a, text[i + 1], text[i + 2]));
    if (!tripleMatch && !pairHasShortRow_.test(pair)) continue;
    size_t left = length - i;
    for (size_t k = begin; k < end; ++k) {
      const Row& r = rows_[k];
      if (!(r.bit & wanted) || (found & r.bit) || r.length > left) continue;
      size_t m = 2;
      while (m < r.length && text[i + m] == static_cast<unsigned char>(r.text[m])) ++m;
      if (m == r.length) found |= r.bit;
    }
    if (found == wanted) break;
  }
  return found;
}

}  // namespace norvane::urls::detail
