// QueryTerms: the parsed form of a search query that users type.
//
// The language: words, "quoted phrases" and (groups), joined by AND (BUT, &),
// OR (|), XOR (EOR, ^), NEAR, NEAR/n, BEFORE[/n], AFTER[/n], NEXT[/n] and
// OPT; NOT, "!" and a leading "-" negate the term behind them, a leading "+"
// is ignored and "~" lets a word match inside a longer word. Keywords are
// recognised without regard to case. There is no precedence: terms of a group
// are taken from left to right and only parentheses change the order. An
// operator belongs to the term behind it; after each term operator, negation
// and distance fall back to their defaults.
//
// The parser never fails: any text gives a tree, possibly an empty one
// (`isValid()` false). A tree is immutable once parsed and may be shared
// between threads.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/value.h"

namespace norvane::query {

// How a term joins the one before it in its group. `Mixed` is only ever the
// common operator of a group whose children join in different ways.
enum class QueryOperator : uint8_t {
  And = 0,
  Or = 1,
  Xor = 2,
  Near = 3,
  Before = 4,
  After = 5,
  Next = 6,
  Optional = 7,
  Mixed = 8,
};

inline constexpr uint64_t kDefaultProximityDistance = 10;

// Flags of `queryTermForOperators`: which operators the target syntax has and
// how terms are written.
enum QueryWriteFlags : uint32_t {
  kWriteAndKeyword = 0x00001,    // with kWriteNotKeyword: " AND " between terms
  kWriteOr = 0x00002,            // or-joins are written (" OR " or "|")
  kWriteXor = 0x00004,           // " XOR "
  kWriteNegated = 0x00008,       // negated terms are written, else left out
  kWritePhraseQuotes = 0x00010,  // phrases in quotation marks
  kWriteGroups = 0x00020,        // groups in parentheses below the top level
  kWriteNear = 0x00040,          // " NEAR/d "
  kWriteAfter = 0x00080,         // " AFTER/d "
  kWriteBefore = 0x00100,        // " BEFORE/d " (and NEXT with a distance)
  kWriteSubstring = 0x00200,     // "~" in front of substring terms
  kWriteNext = 0x00400,          // " NEXT " for a next-join of distance 1
  kWriteAndNot = 0x00800,        // negation as "ANDNOT "
  kWriteLowerCase = 0x01000,
  kWriteUpperCase = 0x02000,   // wins over kWriteLowerCase
  kWritePlusForm = 0x04000,    // and-joins as " +", "+" before a group's first term
  kWriteNotKeyword = 0x08000,  // negation as "NOT "
  kWriteOrBar = 0x10000,       // or-joins as "|"
  kWriteOptional = 0x20000,    // " OPT " terms, else left out
};

inline constexpr uint32_t kStandardizedFlags = 0x2003F;
inline constexpr uint32_t kNormalizedFlags = 0x313FF;
inline constexpr uint32_t kDescriptionFlags = 0x287FF;

class QueryTerms {
 public:
  // An empty, invalid group.
  QueryTerms() = default;

  // Parses in plain mode: "[...]" is dropped and "~word" sets the substring
  // flag of the word.
  static QueryTerms withString(std::u16string_view query, QueryOperator defaultOperator = QueryOperator::And,
                               uint64_t defaultDistance = kDefaultProximityDistance);
  // Parses in wildcard mode: "[...]" stays inside its word (a bracket
  // expression) and "~word" becomes "*word*".
  static QueryTerms withWildcard(std::u16string_view query, QueryOperator defaultOperator = QueryOperator::And,
                                 uint64_t defaultDistance = kDefaultProximityDistance);

  bool isWord() const { return isWord_; }
  // A leaf is valid; a group is valid when it has children.
  bool isValid() const { return isWord_ || !children_.empty(); }
  // The leaf's word or phrase; null for a group.
  const String& word() const { return word_; }
  // The group's children; empty for a leaf.
  const std::vector<QueryTerms>& children() const { return children_; }
  QueryOperator queryOperator() const { return queryOperator_; }
  QueryOperator commonOperator() const { return commonOperator_; }
  bool queryNot() const { return queryNot_; }
  bool querySubstring() const { return querySubstr_; }
  bool queryPhrase() const { return queryPhrase_; }
  uint64_t proximityDistance() const { return proximityDistance_; }
  // The term's own operator is a proximity operator, or, for a group, that of
  // some child.
  bool usesProximity() const;

  // Flat lists of what is looked for. Negated terms are skipped with
  // everything under them.
  String plusString() const;                         // leaf texts joined by one blank
  std::vector<const QueryTerms*> plusTerms() const;  // the leaves, owned by this tree
  std::vector<String> plusParts() const;             // the leaf texts
  std::vector<String> plusWords() const;             // the words of the leaf texts
  // Each leaf text, its words alone or joined by " ", and a hyphen compound or
  // dotted abbreviation also written solid; distinct, shortest first. Empty
  // for an invalid tree.
  std::vector<String> plusWildcards() const;
  // As `plusWildcards` without the whole leaf texts, plus "a b" for two
  // neighbouring leaves joined by and or a proximity operator.
  std::vector<String> extendedPlusWildcards() const;

  // Writes the tree back under `flags` (QueryWriteFlags). `operatorWords`, when
  // given, maps the keys "-", "NOT", "ANDNOT", "XOR", "NEAR", "BEFORE",
  // "AFTER", "NEXT", "OPT", "|", "OR" and "AND" to the target's own words.
  String queryTermForOperators(uint32_t flags, const Dictionary* operatorWords = nullptr) const;
  // One blank for and, " OR ", "-" negation, quoted phrases, parentheses,
  // "OPT"; proximity is dropped.
  String standardizedQueryTerm() const { return queryTermForOperators(kStandardizedFlags); }
  // Lower case, "|" for or, proximity with distances, "~" substrings.
  String normalizedQueryTerm() const { return queryTermForOperators(kNormalizedFlags); }
  // "QueryTerms <...>" with every operator spelled out.
  String description() const;

  friend bool operator==(const QueryTerms&, const QueryTerms&) = default;

 private:
  friend class QueryParser;

  static QueryTerms parse(std::u16string_view query, bool wildcard, QueryOperator defaultOperator,
                          uint64_t defaultDistance);

  void addChild(QueryTerms&& child);

  String word_;
  std::vector<QueryTerms> children_;
  uint64_t proximityDistance_ = 0;
  QueryOperator queryOperator_ = QueryOperator::And;
  QueryOperator commonOperator_ = QueryOperator::Mixed;
  bool queryNot_ = false;
  bool querySubstr_ = false;
  bool queryPhrase_ = false;
  bool isWord_ = false;
};

// The same operations on query strings: parse in plain mode, then act.
String plusString(const String& query);
std::vector<String> plusParts(const String& query);
std::vector<String> plusWords(const String& query);
String standardizedQueryTerm(const String& query);
String normalizedQueryTerm(const String& query);
String queryTermForOperators(const String& query, uint32_t flags, const Dictionary* operatorWords = nullptr);

// ... and in wildcard mode.
String plusWildcardString(const String& query);
std::vector<String> plusWildcardParts(const String& query);
std::vector<String> plusWildcardWords(const String& query);
std::vector<String> plusWildcards(const String& query);
std::vector<String> extendedPlusWildcards(const String& query);
String standardizedWildcardQueryTerm(const String& query);
String normalizedWildcardQueryTerm(const String& query);
String wildcardQueryTermForOperators(const String& query, uint32_t flags, const Dictionary* operatorWords = nullptr);

// The query split at white units without the components that begin with
// "site:", joined by one blank. Works on the raw text, not on a tree; the
// receiver itself when nothing was dropped.
String queryTermWithoutSiteOperator(const String& query);

// The union of the lists of several queries (plain mode for strings), in no
// particular order; empty when nothing remains.
std::vector<String> plusParts(const std::vector<QueryTerms>& trees);
std::vector<String> plusWords(const std::vector<QueryTerms>& trees);
std::vector<String> plusWildcards(const std::vector<QueryTerms>& trees);

}  // namespace norvane::query
