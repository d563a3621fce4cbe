#include "norvane/text/summarize.h"

#include <unicode/ubrk.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "norvane/text/chars.h"
#include "norvane/text/strings.h"

namespace norvane::text {

namespace {

constexpr size_t kMinimumWordLength = 3;

struct Piece {
  size_t begin;
  size_t end;
  double score = 0;
};

// Calls visit(word) for each run of alphanumeric units of at least
// kMinimumWordLength units in [begin, end), folded to lower case.
template <typename Visit>
void forEachWord(const unichar* text, size_t begin, size_t end, std::u16string& word, Visit visit) {
  CharacterSetRep alphaNum = alphaNumCharacterSetRep();
  ConversionTable lower = lowerCharsTable();
  for (size_t i = begin; i < end;) {
    if (!isInRep(alphaNum, text[i])) {
      ++i;
      continue;
    }
    word.clear();
    while (i < end && isInRep(alphaNum, text[i])) word.push_back(lower[text[i++]]);
    if (word.size() >= kMinimumWordLength) visit(word);
  }
}

// Trims white units off the piece; false if nothing is left.
bool trimPiece(const unichar* text, Piece& piece) {
  CharacterSetRep white = whiteCharacterSetRep();
  while (piece.begin < piece.end && isInRep(white, text[piece.begin])) ++piece.begin;
  while (piece.end > piece.begin && isInRep(white, text[piece.end - 1])) --piece.end;
  return piece.begin < piece.end;
}

// Scores the pieces by mean word frequency and joins the n best, in text
// order, with `separator`.
String summaryOf(const String& s, std::vector<Piece>& pieces, long n, std::u16string_view separator) {
  if (pieces.empty()) return String();
  const unichar* text = s.data();
  std::unordered_map<std::u16string, size_t> frequencies;
  std::u16string word;
  forEachWord(text, 0, s.length(), word, [&](const std::u16string& w) { ++frequencies[w]; });
  for (Piece& piece : pieces) {
    size_t total = 0;
    size_t words = 0;
    forEachWord(text, piece.begin, piece.end, word, [&](const std::u16string& w) {
      total += frequencies[w];
      ++words;
    });
    piece.score = words ? static_cast<double>(total) / static_cast<double>(words) : 0;
  }
  size_t keep = std::min(pieces.size(), static_cast<size_t>(n));
  std::vector<size_t> order(pieces.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return pieces[a].score > pieces[b].score; });
  order.resize(keep);
  std::sort(order.begin(), order.end());
  std::u16string out;
  for (size_t index : order) {
    if (!out.empty()) out.append(separator);
    out.append(text + pieces[index].begin, pieces[index].end - pieces[index].begin);
  }
  return String::fromU16(std::move(out));
}

}  // namespace

String summarizeInSentences(const String& s, long n) {
  if (n < 1 || s.isEmpty()) return String();
  UErrorCode status = U_ZERO_ERROR;
  UBreakIterator* breaks = ubrk_open(UBRK_SENTENCE, "", s.data(), static_cast<int32_t>(s.length()), &status);
  if (U_FAILURE(status)) return String();
  std::vector<Piece> sentences;
  int32_t begin = ubrk_first(breaks);
  for (int32_t end = ubrk_next(breaks); end != UBRK_DONE; begin = end, end = ubrk_next(breaks)) {
    Piece piece{static_cast<size_t>(begin), static_cast<size_t>(end)};
    if (trimPiece(s.data(), piece)) sentences.push_back(piece);
  }
  ubrk_close(breaks);
  return summaryOf(s, sentences, n, u" ");
}

String summarizeInParagraphs(const String& s, long n) {
  if (n < 1 || s.isEmpty()) return String();
  std::vector<Piece> paragraphs;
  const unichar* text = s.data();
  for (size_t i = 0; i < s.length();) {
    Piece piece{i, i};
    while (piece.end < s.length() && !isFeedCharacter(text[piece.end])) ++piece.end;
    i = piece.end + 1;
    if (trimPiece(text, piece)) paragraphs.push_back(piece);
  }
  return summaryOf(s, paragraphs, n, u"\n");
}

}  // namespace norvane::text
