// Evaluation of query trees and enumeration of their occurrences.
//
// One recursive walk serves both. A group combines its children left to
// right; a leaf that stands right of a proximity operator walks its own
// occurrences and evaluates the term before it (the left term) in the window
// around each, or in the gaps between the windows when it is negated.

#include "norvane/query/evaluation.h"

#include <algorithm>
#include <map>

#include "norvane/query/wildcards.h"
#include "norvane/text/chars.h"

namespace norvane::query {

namespace {

bool isProximity(QueryOperator op) {
  return op >= QueryOperator::Near && op <= QueryOperator::Next;
}

// A child that joins its predecessor by a proximity operator with a distance.
bool isProximityChild(const QueryTerms& term) {
  return isProximity(term.queryOperator()) && term.proximityDistance();
}

struct Occurrence {
  String term;
  bool primary;
};

// Ascending by location; at equal locations the longer first, so that it is
// the one delivered.
struct RangeOrder {
  bool operator()(const Range& a, const Range& b) const {
    return a.location != b.location ? a.location < b.location : a.length > b.length;
  }
};
using OccurrenceMap = std::map<Range, Occurrence, RangeOrder>;

// The proximity context a term is evaluated in: the term before it, the
// operator and the distance. No left term means a plain search.
struct Proximity {
  const QueryTerms* left = nullptr;
  QueryOperator op = QueryOperator::Mixed;
  uint64_t distance = 0;
};

class Evaluator {
 public:
  Evaluator(const FastWordEnumerator& enumerator, bool wildcardMode, unsigned comparison)
      : e_(enumerator), wildcardMode_(wildcardMode), comparison_(comparison) {}

  bool evaluate(const QueryTerms& term, Proximity proximity, size_t start, size_t end);
  bool enumerate(const QueryTerms& term, Proximity proximity, size_t start, size_t end, OccurrenceMap* map);
  bool containsAny(const QueryTerms& term);

 private:
  Range find(const QueryTerms& leaf, size_t start, size_t end) const;
  Range window(const Proximity& proximity, Range occurrence, size_t start, size_t end) const;
  size_t wordsBack(size_t position, uint64_t count, size_t start) const;
  size_t wordsForward(size_t position, uint64_t count, size_t end) const;

  bool evaluateGroup(const QueryTerms& group, Proximity proximity, size_t start, size_t end);
  bool evaluateInWindows(const QueryTerms& leaf, const Proximity& proximity, size_t start, size_t end);
  bool enumerateGroup(const QueryTerms& group, Proximity proximity, size_t start, size_t end, OccurrenceMap* map);
  bool enumerateLeaf(const QueryTerms& leaf, size_t start, size_t end, OccurrenceMap* map);
  bool enumerateInWindows(const QueryTerms& leaf, const Proximity& proximity, size_t start, size_t end,
                          OccurrenceMap* map);

  const FastWordEnumerator& e_;
  bool wildcardMode_;
  unsigned comparison_;  // wildcard mode: the comparison; word mode: search options
};

Range Evaluator::find(const QueryTerms& leaf, size_t start, size_t end) const {
  if (start >= end) return NotFoundRange;
  if (wildcardMode_) {
    return FindWildcardStringInCharacters(e_, start, end, leaf.word(), comparison_, 1, true, true);
  }
  const String& word = leaf.word();
  size_t location =
      FindWordInString(e_, start, end - start, word.data(), word.length(), comparison_, !leaf.querySubstring());
  if (location == NotFound) return NotFoundRange;
  // "*" is found at the start at once and stands for the whole span.
  if (word.length() == 1 && word[0] == u'*') return {start, end - start};
  return {location, word.length()};
}

// The beginning of the `count`-th word in front of the word holding
// `position`, or `start` when fewer words stand there.
size_t Evaluator::wordsBack(size_t position, uint64_t count, size_t start) const {
  size_t p = position;
  while (p > start && !e_.isWordBeginningAtIndex(p) && !e_.isWordSeparatorAtIndex(p)) --p;
  for (uint64_t k = 0; k < count; ++k) {
    do {
      if (p <= start) return start;
      --p;
    } while (!e_.isWordBeginningAtIndex(p));
  }
  return p;
}

// Just behind the end of the `count`-th word after the word holding the unit
// before `position`, or `end` when fewer words stand there.
size_t Evaluator::wordsForward(size_t position, uint64_t count, size_t end) const {
  size_t p = position;
  if (p > 0 && p < end && !e_.isWordEndBeforeIndex(p) && !e_.isWordSeparatorAtIndex(p - 1)) {
    while (p < end && !e_.isWordEndAtIndex(p)) ++p;
    if (p < end) ++p;
  }
  for (uint64_t k = 0; k < count; ++k) {
    while (p < end && !e_.isWordEndAtIndex(p)) ++p;
    if (p >= end) return end;
    ++p;
  }
  return p;
}

Range Evaluator::window(const Proximity& proximity, Range occurrence, size_t start, size_t end) const {
  size_t from = proximity.op == QueryOperator::After ? occurrence.location
                                                     : wordsBack(occurrence.location, proximity.distance, start);
  size_t to = proximity.op == QueryOperator::Near || proximity.op == QueryOperator::After
                  ? wordsForward(occurrence.end(), proximity.distance, end)
                  : occurrence.end();
  from = std::max(from, start);
  to = std::min(to, end);
  return {from, to > from ? to - from : 0};
}

// --- Evaluation ---

bool Evaluator::evaluate(const QueryTerms& term, Proximity proximity, size_t start, size_t end) {
  if (!term.isWord()) return evaluateGroup(term, proximity, start, end);
  if (proximity.left) return evaluateInWindows(term, proximity, start, end);
  return find(term, start, end).found() != term.queryNot();
}

bool Evaluator::evaluateGroup(const QueryTerms& group, Proximity proximity, size_t start, size_t end) {
  const std::vector<QueryTerms>& children = group.children();
  bool negated = group.queryNot();
  if (children.empty()) return negated;
  bool result = evaluate(children[0], proximity, start, end);
  QueryOperator common = group.commonOperator();
  for (size_t i = 1; i < children.size(); ++i) {
    if (!result && (common == QueryOperator::And || isProximity(common))) return negated;
    if (result && common == QueryOperator::Or) return !negated;
    const QueryTerms& child = children[i];
    switch (child.queryOperator()) {
      case QueryOperator::Or:
        if (!result) result = evaluate(child, proximity, start, end);
        break;
      case QueryOperator::Xor:
        result = result != evaluate(child, proximity, start, end);
        break;
      case QueryOperator::Near:
      case QueryOperator::Before:
      case QueryOperator::After:
      case QueryOperator::Next:
        if (child.proximityDistance()) {
          if (result)
            result = evaluate(child, {&children[i - 1], child.queryOperator(), child.proximityDistance()}, start, end);
          break;
        }
        [[fallthrough]];
      case QueryOperator::And:
        if (result) result = evaluate(child, proximity, start, end);
        break;
      default:
        break;  // optional terms change nothing
    }
  }
  return result != negated;
}

bool Evaluator::evaluateInWindows(const QueryTerms& leaf, const Proximity& proximity, size_t start, size_t end) {
  if (start >= end) return false;
  bool negated = leaf.queryNot();
  size_t lastWindowEnd = start;
  size_t position = start;
  for (;;) {
    Range occurrence = find(leaf, position, end);
    if (!occurrence.found()) break;
    Range w = window(proximity, occurrence, start, end);
    if (!negated) {
      if (evaluate(*proximity.left, {}, w.location, w.end())) return true;
    } else {
      if (w.location > lastWindowEnd && evaluate(*proximity.left, {}, lastWindowEnd, w.location)) return true;
      lastWindowEnd = std::max(lastWindowEnd, w.end());
    }
    position = std::max(occurrence.end(), position + 1);
    if (position >= end) return false;
  }
  if (negated && lastWindowEnd < end) return evaluate(*proximity.left, {}, lastWindowEnd, end);
  return false;
}

// --- Enumeration ---

bool Evaluator::enumerate(const QueryTerms& term, Proximity proximity, size_t start, size_t end, OccurrenceMap* map) {
  if (!term.isWord()) return enumerateGroup(term, proximity, start, end, map);
  if (proximity.left) return enumerateInWindows(term, proximity, start, end, map);
  return enumerateLeaf(term, start, end, map);
}

bool Evaluator::enumerateLeaf(const QueryTerms& leaf, size_t start, size_t end, OccurrenceMap* map) {
  bool found = false;
  size_t position = start;
  while (position < end) {
    Range hit = find(leaf, position, end);
    if (!hit.found()) break;
    found = true;
    if (!map || leaf.queryNot()) break;
    (*map)[hit] = {leaf.word(), true};
    position = std::max(hit.end(), position + 1);
  }
  return found != leaf.queryNot();
}

bool Evaluator::enumerateInWindows(const QueryTerms& leaf, const Proximity& proximity, size_t start, size_t end,
                                   OccurrenceMap* map) {
  if (start >= end) return false;
  bool negated = leaf.queryNot();
  bool success = false;
  size_t lastWindowEnd = start;
  size_t position = start;
  while (position < end) {
    Range occurrence = find(leaf, position, end);
    if (!occurrence.found()) break;
    Range w = window(proximity, occurrence, start, end);
    if (!negated) {
      if (enumerate(*proximity.left, {}, w.location, w.end(), map)) {
        success = true;
        if (!map) return true;
        (*map)[occurrence] = {leaf.word(), false};
      }
    } else {
      if (w.location > lastWindowEnd && enumerate(*proximity.left, {}, lastWindowEnd, w.location, map)) {
        success = true;
        if (!map) return true;
      }
      lastWindowEnd = std::max(lastWindowEnd, w.end());
    }
    position = std::max(occurrence.end(), position + 1);
  }
  if (negated && lastWindowEnd < end && enumerate(*proximity.left, {}, lastWindowEnd, end, map)) success = true;
  return success;
}

bool Evaluator::enumerateGroup(const QueryTerms& group, Proximity proximity, size_t start, size_t end,
                               OccurrenceMap* map) {
  const std::vector<QueryTerms>& children = group.children();
  bool negated = group.queryNot();
  if (children.empty()) return negated;
  OccurrenceMap own;
  OccurrenceMap* privateMap = map ? &own : nullptr;
  // A child followed by a proximity child is reached again as its left term,
  // and records nothing by itself.
  auto mapFor = [&](size_t i) {
    return i + 1 < children.size() && isProximityChild(children[i + 1]) ? nullptr : privateMap;
  };
  QueryOperator common = group.commonOperator();
  bool stopsOnFailure = common == QueryOperator::And || isProximity(common);
  bool result = enumerate(children[0], proximity, start, end, mapFor(0));
  if (!result && stopsOnFailure) return negated;
  for (size_t i = 1; i < children.size(); ++i) {
    const QueryTerms& child = children[i];
    switch (child.queryOperator()) {
      case QueryOperator::Or:
        result = enumerate(child, proximity, start, end, mapFor(i)) || result;
        break;
      case QueryOperator::Xor:
        result = result != enumerate(child, proximity, start, end, mapFor(i));
        break;
      case QueryOperator::Near:
      case QueryOperator::Before:
      case QueryOperator::After:
      case QueryOperator::Next:
        if (child.proximityDistance()) {
          Proximity inner{&children[i - 1], child.queryOperator(), child.proximityDistance()};
          result = enumerate(child, inner, start, end, mapFor(i)) && result;
          break;
        }
        [[fallthrough]];
      case QueryOperator::And:
        result = enumerate(child, proximity, start, end, mapFor(i)) && result;
        break;
      default:
        break;  // optional terms change nothing
    }
    if (!result) {
      own.clear();
      if (stopsOnFailure) return negated;
    }
  }
  result = result != negated;
  if (result && map) {
    for (auto& [range, occurrence] : own) (*map)[range] = std::move(occurrence);
  }
  return result;
}

// --- Any term ---

bool Evaluator::containsAny(const QueryTerms& term) {
  if (term.queryNot()) return false;
  if (term.isWord()) return find(term, 0, e_.length()).found();
  for (const QueryTerms& child : term.children()) {
    if (containsAny(child)) return true;
  }
  return false;
}

// The end of a range clipped to a text, without overflow for huge lengths.
size_t clippedEnd(Range range, size_t length) {
  if (range.location >= length) return range.location;
  return range.location + std::min(range.length, length - range.location);
}

void deliver(const FastWordEnumerator& enumerator, const OccurrenceMap& map, const OccurrenceHandler& handler) {
  size_t lastEnd = 0;
  for (const auto& [range, occurrence] : map) {
    if (range.location >= lastEnd) handler(enumerator, occurrence.term, range, occurrence.primary);
    lastEnd = std::max(lastEnd, range.end());
  }
}

}  // namespace

bool matchesString(const QueryTerms& terms, const String& s, bool caseSensitive) {
  if (s.isEmpty()) return false;
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  if (!enumerator) return false;
  return Evaluator(*enumerator, false, caseSensitive ? 0 : kSearchCaseInsensitive)
      .evaluate(terms, {}, 0, enumerator->length());
}

bool matchesStringWithComparison(const QueryTerms& terms, const String& s, unsigned comparison) {
  if (s.isEmpty()) return false;
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  if (!enumerator) return false;
  return matchesEnumerator(terms, *enumerator, {0, enumerator->length()}, comparison);
}

bool matchesEnumerator(const QueryTerms& terms, const FastWordEnumerator& enumerator, Range span, unsigned comparison) {
  size_t end = clippedEnd(span, enumerator.length());
  if (span.location >= end) return false;
  return Evaluator(enumerator, true, comparison).evaluate(terms, {}, span.location, end);
}

bool containsString(const QueryTerms& terms, const String& s, bool caseSensitive) {
  if (s.isEmpty()) return false;
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  if (!enumerator) return false;
  return Evaluator(*enumerator, false, caseSensitive ? 0 : kSearchCaseInsensitive).containsAny(terms);
}

bool containsStringWithComparison(const QueryTerms& terms, const String& s, unsigned comparison) {
  if (s.isEmpty()) return false;
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  if (!enumerator) return false;
  return Evaluator(*enumerator, true, comparison).containsAny(terms);
}

size_t minTermLen(const QueryTerms& terms) {
  if (terms.queryNot()) return 0;
  if (terms.isWord()) return terms.word().length();
  size_t shortest = 0;
  for (const QueryTerms& child : terms.children()) {
    size_t length = minTermLen(child);
    if (length && (!shortest || length < shortest)) shortest = length;
  }
  return shortest;
}

void enumerateQueryTerms(const FastWordEnumerator& enumerator, const std::vector<QueryTerms>& trees, Range range,
                         bool caseSensitive, const OccurrenceHandler& handler) {
  if (!handler || trees.empty()) return;
  size_t end = clippedEnd(range, enumerator.length());
  if (range.location >= end) return;
  Evaluator evaluator(enumerator, true, caseSensitive ? 0 : kComparisonCaseInsensitive);
  OccurrenceMap map;
  for (const QueryTerms& tree : trees) evaluator.enumerate(tree, {}, range.location, end, &map);
  deliver(enumerator, map, handler);
}

void enumerateQueryTerms(const String& s, const std::vector<QueryTerms>& trees, Range range, bool caseSensitive,
                         const OccurrenceHandler& handler) {
  if (s.isEmpty() || !handler || trees.empty() || range.location >= s.length()) return;
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  if (!enumerator) return;
  enumerateQueryTerms(*enumerator, trees, range, caseSensitive, handler);
}

void enumerateString(const QueryTerms& terms, const String& s, Range range, bool caseSensitive,
                     const OccurrenceHandler& handler) {
  if (s.isEmpty() || !handler || range.location >= s.length()) return;
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  if (!enumerator) return;
  size_t end = clippedEnd(range, enumerator->length());
  Evaluator evaluator(*enumerator, true, caseSensitive ? 0 : kComparisonCaseInsensitive);
  OccurrenceMap map;
  evaluator.enumerate(terms, {}, range.location, end, &map);
  deliver(*enumerator, map, handler);
}

}  // namespace norvane::query
