#include "norvane/text/summarize.h"

#include <unicode/ubrk.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>
#include <vector>

#include "norvane/text/chars.h"
#include "norvane/text/strings.h"
#include "strings_internal.h"

namespace norvane::text {

namespace {

constexpr size_t kMinimumWordLength = 3;

struct Piece {
  size_t begin;
  size_t end;
  double score = 0;
};

struct WordStats {
  size_t occurrences = 0;
  size_t pieces = 0;     // how many pieces hold the word
  size_t lastPiece = 0;  // 1-based index of the last piece counted
};

// Calls visit(word) for each run of alphanumeric units of at least
// kMinimumWordLength units in [begin, end), folded to lower case.
template <typename Visit>
void forEachWord(std::u16string_view text, size_t begin, size_t end, std::u16string& word, Visit visit) {
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
bool trimPiece(std::u16string_view text, Piece& piece) {
  CharacterSetRep white = whiteCharacterSetRep();
  while (piece.begin < piece.end && isInRep(white, text[piece.begin])) ++piece.begin;
  while (piece.end > piece.begin && isInRep(white, text[piece.end - 1])) --piece.end;
  return piece.begin < piece.end;
}

// Scores the pieces of `text` and joins the n best, in text order, with
// `separator`, each with its runs of white space collapsed. A word weighs its
// number of occurrences in the whole text, or nothing when more than half of
// the pieces hold it; a piece scores the sum over its words divided by the
// square root of their number.
String summaryOf(std::u16string_view text, std::vector<Piece>& pieces, long n, std::u16string_view separator) {
  if (pieces.empty()) return String();
  std::unordered_map<std::u16string, WordStats> stats;
  std::u16string word;
  for (size_t k = 0; k < pieces.size(); ++k) {
    forEachWord(text, pieces[k].begin, pieces[k].end, word, [&](const std::u16string& w) {
      WordStats& entry = stats[w];
      ++entry.occurrences;
      if (entry.lastPiece != k + 1) {
        ++entry.pieces;
        entry.lastPiece = k + 1;
      }
    });
  }
  for (Piece& piece : pieces) {
    double total = 0;
    size_t words = 0;
    forEachWord(text, piece.begin, piece.end, word, [&](const std::u16string& w) {
      const WordStats& entry = stats[w];
      if (entry.pieces * 2 <= pieces.size()) total += static_cast<double>(entry.occurrences);
      ++words;
    });
    piece.score = words ? total / std::sqrt(static_cast<double>(words)) : 0;
  }
  size_t keep = std::min(pieces.size(), static_cast<size_t>(n));
  std::vector<size_t> order(pieces.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return pieces[a].score > pieces[b].score; });
  order.resize(keep);
  std::sort(order.begin(), order.end());
  CharacterSetRep white = whiteCharacterSetRep();
  std::u16string out;
  std::u16string collapsed;
  for (size_t index : order) {
    if (!out.empty()) out.append(separator);
    std::u16string_view piece = text.substr(pieces[index].begin, pieces[index].end - pieces[index].begin);
    internal::collapseRuns(
        piece, [=](unichar u) { return isInRep(white, u); }, ' ', collapsed);
    out.append(collapsed);
  }
  return String::fromU16(std::move(out));
}

// The text with each single line end (not part of a blank line) turned into
// blanks, so that hard-wrapped sentences read as one. Keeps the length.
std::u16string unwrapped(const String& s) {
  std::u16string text = s.toU16();
  for (size_t i = 0; i < text.size();) {
    if (!isFeedCharacter(text[i])) {
      ++i;
      continue;
    }
    size_t begin = i;
    size_t lineEnds = 0;
    while (i < text.size() && isFeedCharacter(text[i])) {
      i += text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n' ? 2 : 1;
      ++lineEnds;
    }
    if (lineEnds == 1) std::fill(text.begin() + begin, text.begin() + i, u' ');
  }
  return text;
}

}  // namespace

String summarizeInSentences(const String& s, long n) {
  if (n < 1 || s.isEmpty()) return String();
  std::u16string text = unwrapped(s);
  UErrorCode status = U_ZERO_ERROR;
  UBreakIterator* breaks = ubrk_open(UBRK_SENTENCE, "", text.data(), static_cast<int32_t>(text.size()), &status);
  if (U_FAILURE(status)) return String();
  std::vector<Piece> sentences;
  int32_t begin = ubrk_first(breaks);
  for (int32_t end = ubrk_next(breaks); end != UBRK_DONE; begin = end, end = ubrk_next(breaks)) {
    Piece piece{static_cast<size_t>(begin), static_cast<size_t>(end)};
    if (trimPiece(text, piece)) sentences.push_back(piece);
  }
  ubrk_close(breaks);
  return summaryOf(text, sentences, n, u" ");
}

String summarizeInParagraphs(const String& s, long n) {
  if (n < 1 || s.isEmpty()) return String();
  std::vector<Piece> paragraphs;
  std::u16string_view text = s.view();
  for (size_t i = 0; i < text.size();) {
    Piece piece{i, i};
    while (piece.end < text.size() && !isFeedCharacter(text[piece.end])) ++piece.end;
    i = piece.end + 1;
    if (trimPiece(text, piece)) paragraphs.push_back(piece);
  }
  return summaryOf(text, paragraphs, n, u"\n");
}

}  // namespace norvane::text
