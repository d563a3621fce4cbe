// The scan loop of the tag scanner, kept in a header so that a handler given
// as a template argument is called directly and inlines. Include
// tag_scanner.h, not this file.
//
// The loop never looks at a unit that cannot change its state: between tags
// it jumps to the next '<', inside a tag to the next quote or '>' (a quote
// opens a value when an '=' stands before it), inside a quoted value to the
// closing quote, and inside comments and marked sections to the next '>'.
// The jumps follow a bitmap of the delimiters in a 64-unit window, built with
// vector compares (DelimiterIndex). Script and style bodies are skipped with
// searches whose answers are remembered, so no input makes the scan
// quadratic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "norvane/core/string.h"
#include "norvane/core/types.h"
#include "norvane/text/chars.h"

namespace norvane::markup::detail {

// Index of the first unit in [from, length) equal to one of Units, or
// `length` if there is none.
template <unichar... Units>
inline size_t findFirstOf(const unichar* characters, size_t from, size_t length) {
  size_t i = from;
#if defined(__SSE2__)
  auto matches = [](__m128i block) {
    __m128i hits = _mm_setzero_si128();
    ((hits = _mm_or_si128(hits, _mm_cmpeq_epi16(block, _mm_set1_epi16(static_cast<short>(Units))))), ...);
    return hits;
  };
  while (i + 16 <= length) {
    __m128i low = matches(_mm_loadu_si128(reinterpret_cast<const __m128i*>(characters + i)));
    __m128i high = matches(_mm_loadu_si128(reinterpret_cast<const __m128i*>(characters + i + 8)));
    unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
    if (mask != 0) return i + static_cast<size_t>(__builtin_ctz(mask));
    i += 16;
  }
  if (i + 8 <= length) {
    __m128i hits = matches(_mm_loadu_si128(reinterpret_cast<const __m128i*>(characters + i)));
    unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
    if (mask != 0) return i + static_cast<size_t>(__builtin_ctz(mask)) / 2;
    i += 8;
  }
#endif
  for (; i < length; ++i) {
    const unichar c = characters[i];
    if (((c == Units) || ...)) return i;
  }
  return length;
}

// The positions of '<', '>', '"' and '\'' in a window of 64 units, as bits:
// the scan loop walks from one such unit to the next and never looks at the
// others. A window is computed with vector compares when the walk reaches
// its end, or when the walk jumps past it.
class DelimiterIndex {
 public:
  DelimiterIndex(const unichar* characters, size_t length) : s_(characters), n_(length) { load(0); }

  // Index of the first delimiter at or behind `i`, or the length.
  size_t next(size_t i) {
    for (;;) {
      if (i - base_ < 64) {
        const uint64_t ahead = bits_ & (~uint64_t{0} << (i - base_));
        if (ahead != 0) return base_ + static_cast<size_t>(__builtin_ctzll(ahead));
        i = base_ + 64;
      }
      if (i >= n_) return n_;
      load(i);
    }
  }

 private:
  static bool isDelimiter(unichar c) { return c == '<' || c == '>' || c == '"' || c == '\''; }

  void load(size_t from) {
    base_ = from;
    bits_ = 0;
    size_t k = 0;
#if defined(__SSE2__)
    if (from + 64 <= n_) {
      const __m128i lt = _mm_set1_epi16('<'), gt = _mm_set1_epi16('>');
      const __m128i dq = _mm_set1_epi16('"'), sq = _mm_set1_epi16('\'');
      auto hits = [&](size_t at) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s_ + at));
        return _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(v, lt), _mm_cmpeq_epi16(v, gt)),
                            _mm_or_si128(_mm_cmpeq_epi16(v, dq), _mm_cmpeq_epi16(v, sq)));
      };
      for (; k < 64; k += 16) {
        const __m128i packed = _mm_packs_epi16(hits(from + k), hits(from + k + 8));
        bits_ |= static_cast<uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(packed))) << k;
      }
      return;
    }
#endif
    for (; k < 64 && from + k < n_; ++k) bits_ |= static_cast<uint64_t>(isDelimiter(s_[from + k])) << k;
  }

  const unichar* s_;
  size_t n_;
  size_t base_ = 0;
  uint64_t bits_ = 0;
};

// True if the units at `at` are '<', '/' and then `word` (lower-case ASCII)
// compared by (c | 32). The caller ensures that they lie within the text.
inline bool isClosingTagOf(const unichar* characters, size_t at, const char* word, size_t wordLength) {
  if (characters[at + 1] != '/') return false;
  for (size_t k = 0; k < wordLength; ++k) {
    if ((characters[at + 2 + k] | 32) != static_cast<unichar>(word[k])) return false;
  }
  return true;
}

// Index of the first "</word" in [from, length), case-insensitively, or
// NotFound.
inline size_t findClosingTag(const unichar* characters, size_t from, size_t length, const char* word,
                             size_t wordLength) {
  const size_t needed = wordLength + 2;
  if (length < needed) return NotFound;
  const size_t last = length - needed;  // last index where the match fits
  for (size_t i = findFirstOf<'<'>(characters, from, last + 1); i <= last;
       i = findFirstOf<'<'>(characters, i + 1, last + 1)) {
    if (isClosingTagOf(characters, i, word, wordLength)) return i;
  }
  return NotFound;
}

// Index of the first exact occurrence of the ASCII `needle` (3 units) in
// [from, to), or NotFound.
inline size_t findTriple(const unichar* characters, size_t from, size_t to, const char needle[3]) {
  if (to < from + 3) return NotFound;
  for (size_t i = from; i + 3 <= to; ++i) {
    if (characters[i] == static_cast<unichar>(needle[0]) && characters[i + 1] == static_cast<unichar>(needle[1]) &&
        characters[i + 2] == static_cast<unichar>(needle[2])) {
      return i;
    }
  }
  return NotFound;
}

// A forward search that remembers its last answer: a search from `from`
// that found `found` (or nothing) answers every later search that starts
// between the two alike, so repeated searches over the same stretch (many
// unclosed script tags, say) stay linear in the text.
class RememberedSearch {
 public:
  template <class Search>
  size_t find(size_t from, Search&& search) {
    if (known_ && from >= from_ && (found_ == NotFound || from <= found_)) return found_;
    found_ = search(from);
    from_ = from;
    known_ = true;
    return found_;
  }

 private:
  bool known_ = false;
  size_t from_ = 0;
  size_t found_ = NotFound;
};

// Finds where script and style elements end, for one scan.
class RawElementFinder {
 public:
  RawElementFinder(const unichar* characters, size_t length) : s_(characters), n_(length) {}

  // Where a script (`isScript`) or style element that opens at
  // `tagLocation` ends: the index of the '>' that closes its closing tag,
  // n - 1 if that '>' is missing, or NotFound if there is no closing tag at
  // all. A "<!-" inside the opening part lets the element's closing tag
  // stand inside a comment: then the closing tag after the comment's "-->"
  // counts, if there is one.
  size_t endOfElement(size_t tagLocation, bool isScript) {
    const char* word = isScript ? "script" : "style";
    const size_t wordLength = isScript ? 6 : 5;
    RememberedSearch& closings = isScript ? scriptClosings_ : styleClosings_;
    auto closing = [&](size_t from) { return findClosingTag(s_, from, n_, word, wordLength); };
    size_t close = closings.find(tagLocation + 1, closing);
    if (close == NotFound) return NotFound;
    const size_t commentOpen = findTriple(s_, tagLocation, close, "<!-");
    if (commentOpen != NotFound) {
      const size_t commentClose =
          commentClosings_.find(commentOpen, [&](size_t from) { return findTriple(s_, from, n_, "-->"); });
      if (commentClose != NotFound) {
        const size_t later = closings.find(commentClose, closing);
        if (later != NotFound) close = later;
      }
    }
    const size_t greater = findFirstOf<'>'>(s_, close + wordLength + 2, n_);
    return greater < n_ ? greater : n_ - 1;
  }

 private:
  const unichar* s_;
  size_t n_;
  RememberedSearch scriptClosings_, styleClosings_, commentClosings_;
};

template <class CharT, class Handler>
struct TagScanLoop {
  CharT* characters;
  size_t length;
  Handler handler;

  // Reports one tag; true if the handler asked to stop.
  bool report(size_t nameLocation, size_t nameLength, size_t tagLocation, size_t tagLength, size_t previousTagEnd,
              unsigned kind) {
    return handler(characters, nameLocation, nameLength, tagLocation, tagLength, previousTagEnd, kind);
  }

  void run() {
    const unichar* s = characters;
    const size_t n = length;
    const text::CharacterSetRep letters = text::alphaCharacterSetRep();
    const text::CharacterSetRep white = text::whiteCharacterSetRep();
    DelimiterIndex delimiters(s, n);
    RawElementFinder rawElements(s, n);
    size_t previousTagEnd = 0;
    size_t i = 0;

    for (;;) {
      // Text: jump to the next '<'.
      while ((i = delimiters.next(i)) < n && s[i] != '<') ++i;
      if (i >= n) break;
      const size_t tagLocation = i;
      unsigned mode = 1;
      bool shortComment = false;
      if (i + 2 < n && s[i + 1] == '!' && (s[i + 2] == '[' || s[i + 2] == '-')) {
        mode = s[i + 2] == '[' ? 3 : 2;
        shortComment = mode == 2 && (i + 3 >= n || s[i + 3] != '-');
        i += 3;
      } else {
        i += 1;
      }

      size_t tagEnd;  // index of the '>' that ends the tag
      if (mode == 1) {
        tagEnd = findEndOfTag(delimiters, s, i, n);
        if (tagEnd >= n) break;  // unterminated: the rest is text
      } else {
        tagEnd = findEndOfComment(delimiters, s, i, n, mode, shortComment);
        if (tagEnd >= n) {
          report(NotFound, 0, tagLocation, n - tagLocation, previousTagEnd, mode);
          previousTagEnd = n;
          break;
        }
      }

      size_t tagLength = tagEnd + 1 - tagLocation;
      size_t nameLocation = NotFound;
      size_t nameLength = 0;
      if (mode == 1) {
        size_t k = tagLocation + 1;
        while (k < tagEnd && !text::isInRep(letters, s[k])) ++k;
        if (k < tagEnd) {
          nameLocation = k;
          while (k < tagEnd && s[k] != '/' && s[k] != '=' && !text::isInRep(white, s[k])) ++k;
          nameLength = k - nameLocation;
          tagLength = skipRawElement(rawElements, s, tagLocation, tagLength, nameLocation, nameLength);
        }
      }
      if (report(nameLocation, nameLength, tagLocation, tagLength, previousTagEnd, mode)) return;
      previousTagEnd = tagLocation + tagLength;
      i = previousTagEnd;
    }
    report(NotFound, 0, n, 0, previousTagEnd, 0);
  }

  // Inside an ordinary tag from `i` on: the index of its closing '>', or n.
  // A quote opens a value only if an '=' stands between it and the previous
  // quote (or the tag's start); inside a value only the same quote matters.
  static size_t findEndOfTag(DelimiterIndex& delimiters, const unichar* s, size_t i, size_t n) {
    for (size_t from = i;; ++i) {
      i = delimiters.next(i);
      if (i >= n || s[i] == '>') return i;
      if (s[i] == '<') continue;
      // A quote: it opens a value if an '=' stands between it and `from`.
      size_t k = i;
      while (k > from && s[k - 1] != '=') --k;
      if (k > from) {
        const unichar quote = s[i];
        while ((i = delimiters.next(i + 1)) < n && s[i] != quote) {
        }
        if (i >= n) return n;
      }
      from = i + 1;
    }
  }

  // Inside a comment (mode 2) or marked section (mode 3) from `i` on: the
  // index of the '>' that ends it, or n.
  static size_t findEndOfComment(DelimiterIndex& delimiters, const unichar* s, size_t i, size_t n, unsigned mode,
                                 bool shortComment) {
    for (;; ++i) {
      while ((i = delimiters.next(i)) < n && s[i] != '>') ++i;
      if (i >= n) return n;
      // i >= tagLocation + 3, so three units of look-back stay in the tag.
      const unichar p1 = s[i - 1], p2 = s[i - 2], p3 = s[i - 3];
      if (mode == 2) {
        if (shortComment ? p1 == '-' : (p1 == '-' && p2 == '-') || (p1 == '!' && p2 == '-' && p3 == '-')) return i;
      } else if (p1 == ']' || (p1 == '-' && p2 == '-' && p3 == ']')) {
        return i;
      }
    }
  }

  // A script or style opening tag takes its whole element: the new tag
  // length. Closing and self-closing tags, other names and elements without
  // a closing tag keep `tagLength`.
  static size_t skipRawElement(RawElementFinder& rawElements, const unichar* s, size_t tagLocation, size_t tagLength,
                               size_t nameLocation, size_t nameLength) {
    bool isScript;
    if (nameLength == 6 && (s[nameLocation] | 32) == 's' && (s[nameLocation + 1] | 32) == 'c' &&
        (s[nameLocation + 2] | 32) == 'r' && (s[nameLocation + 3] | 32) == 'i' && (s[nameLocation + 4] | 32) == 'p' &&
        (s[nameLocation + 5] | 32) == 't') {
      isScript = true;
    } else if (nameLength == 5 && (s[nameLocation] | 32) == 's' && (s[nameLocation + 1] | 32) == 't' &&
               (s[nameLocation + 2] | 32) == 'y' && (s[nameLocation + 3] | 32) == 'l' &&
               (s[nameLocation + 4] | 32) == 'e') {
      isScript = false;
    } else {
      return tagLength;
    }
    if (tagLength < 3 || s[tagLocation + 1] == '/' || s[tagLocation + tagLength - 2] == '/') return tagLength;
    const size_t end = rawElements.endOfElement(tagLocation, isScript);
    return end == NotFound ? tagLength : end + 1 - tagLocation;
  }
};

// The buffer of a string scan: the string's own units, or with
// `mutableBuffer` a private page-aligned copy that is freed with this object.
class ScanBuffer {
 public:
  ScanBuffer(const String& string, bool mutableBuffer);
  ~ScanBuffer();
  ScanBuffer(const ScanBuffer&) = delete;
  ScanBuffer& operator=(const ScanBuffer&) = delete;

  bool ok() const { return data_ != nullptr; }
  unichar* data() const { return data_; }
  size_t length() const { return length_; }

 private:
  unichar* data_ = nullptr;
  size_t length_ = 0;
  bool owned_ = false;
};

// Logs an exception that left a scan, in the system's exception format.
void logScanException(const char* operation, std::exception_ptr exception);

}  // namespace norvane::markup::detail
