// Writing a query tree back as text, and the flat lists of what it asks for.

#include "norvane/query/query_terms.h"

#include <algorithm>
#include <set>
#include <string>

#include "norvane/query/wildcards.h"
#include "norvane/text/chars.h"
#include "norvane/text/strings.h"

namespace norvane::query {

bool QueryTerms::usesProximity() const {
  if (queryOperator_ >= QueryOperator::Near && queryOperator_ <= QueryOperator::Next) return true;
  for (const QueryTerms& child : children_) {
    if (child.usesProximity()) return true;
  }
  return false;
}

// ---------------------------------------------------------------------------
// Writing back

namespace {

struct WriteContext {
  uint32_t flags;
  const Dictionary* words;
  std::u16string out;

  bool has(uint32_t flag) const { return (flags & flag) != 0; }

  // The target's word for a keyword, else the keyword itself.
  void appendKeyword(std::string_view keyword) {
    if (words) {
      std::u16string key(keyword.begin(), keyword.end());
      if (const Value* value = words->find(key); value && value->isString()) {
        out.append(value->asString().view());
        return;
      }
    }
    out.append(keyword.begin(), keyword.end());
  }
  void appendSpaced(std::string_view keyword) {
    out.push_back(u' ');
    appendKeyword(keyword);
    out.push_back(u' ');
  }
  void appendWithDistance(std::string_view keyword, uint64_t distance) {
    out.push_back(u' ');
    appendKeyword(keyword);
    out.push_back(u'/');
    std::string digits = std::to_string(distance);
    out.append(digits.begin(), digits.end());
    out.push_back(u' ');
  }
  void appendWord(std::u16string_view word) {
    text::ConversionTable table = has(kWriteUpperCase)   ? text::upperCharsTable()
                                  : has(kWriteLowerCase) ? text::lowerCharsTable()
                                                         : nullptr;
    if (!table) {
      out.append(word);
      return;
    }
    for (unichar u : word) out.push_back(table[u]);
  }
};

void writeTerm(const QueryTerms& term, WriteContext& context, bool topLevel);

// Group writing state: the plus form puts a "+" in front of the group's first
// child at the first and-join.
struct GroupWriter {
  WriteContext& context;
  size_t firstChildAt;
  bool plusPending;

  void andJoin(const QueryTerms& child) {
    if (context.has(kWriteAndKeyword) && context.has(kWriteNotKeyword)) {
      if (child.queryNot()) {
        context.out.push_back(u' ');
      } else {
        context.appendSpaced("AND");
      }
      return;
    }
    if (plusPending) {
      context.out.insert(context.out.begin() + firstChildAt, u'+');
      plusPending = false;
    }
    if (child.queryNot()) {
      context.out.push_back(u' ');
    } else if (context.has(kWritePlusForm)) {
      context.out.append(u" +");
    } else {
      context.out.push_back(u' ');
    }
  }
  void orJoin() {
    if (context.has(kWriteOr) && !context.has(kWritePlusForm)) {
      if (context.has(kWriteOrBar)) {
        context.appendKeyword("|");
      } else {
        context.appendSpaced("OR");
      }
    } else {
      context.out.push_back(u' ');
    }
  }
  void proximityJoin(const QueryTerms& child, uint32_t flag, std::string_view keyword) {
    if (context.has(flag)) {
      context.appendWithDistance(keyword, child.proximityDistance());
    } else {
      andJoin(child);
    }
  }
  // Writes the join in front of `child`.
  void join(const QueryTerms& child) {
    switch (child.queryOperator()) {
      case QueryOperator::Or:
        orJoin();
        return;
      case QueryOperator::Xor:
        if (context.has(kWriteXor)) {
          context.appendSpaced("XOR");
        } else {
          orJoin();
        }
        return;
      case QueryOperator::Near:
        proximityJoin(child, kWriteNear, "NEAR");
        return;
      case QueryOperator::After:
        proximityJoin(child, kWriteAfter, "AFTER");
        return;
      case QueryOperator::Before:
        proximityJoin(child, kWriteBefore, "BEFORE");
        return;
      case QueryOperator::Next:
        if (context.has(kWriteNext) && child.proximityDistance() == 1) {
          context.appendSpaced("NEXT");
        } else {
          proximityJoin(child, kWriteBefore, "BEFORE");
        }
        return;
      case QueryOperator::Optional:
        context.appendSpaced("OPT");
        return;
      default:
        andJoin(child);
        return;
    }
  }
};

bool isWritten(const QueryTerms& term, const WriteContext& context) {
  if (term.queryNot() && !context.has(kWriteNegated)) return false;
  if (term.queryOperator() == QueryOperator::Optional && !context.has(kWriteOptional)) return false;
  return true;
}

void writeLeaf(const QueryTerms& term, WriteContext& context) {
  std::u16string_view word = term.word().view();
  if (!term.queryPhrase()) {
    context.appendWord(word);
  } else if (context.has(kWritePhraseQuotes)) {
    context.out.push_back(u'"');
    context.appendWord(word);
    context.out.push_back(u'"');
  } else if (context.has(kWriteGroups)) {
    context.out.push_back(u'(');
    bool first = true;
    for (const String& part : wordsUsingWildcardSeparation(term.word())) {
      if (!first) context.out.push_back(u' ');
      context.appendWord(part.view());
      first = false;
    }
    context.out.push_back(u')');
  } else {
    context.appendWord(word);
  }
}

void writeTerm(const QueryTerms& term, WriteContext& context, bool topLevel) {
  if (term.queryNot()) {
    if (context.has(kWriteAndNot)) {
      context.appendKeyword("ANDNOT");
      context.out.push_back(u' ');
    } else if (context.has(kWriteNotKeyword)) {
      context.appendKeyword("NOT");
      context.out.push_back(u' ');
    } else {
      context.appendKeyword("-");
    }
  }
  if (term.querySubstring() && context.has(kWriteSubstring)) context.out.push_back(u'~');
  if (term.isWord()) {
    writeLeaf(term, context);
    return;
  }
  bool parentheses = context.has(kWriteGroups) && !topLevel;
  if (parentheses) context.out.push_back(u'(');
  GroupWriter group{context, context.out.size(),
                    context.has(kWritePlusForm) && !term.queryNot() && term.children().size() >= 2};
  bool first = true;
  for (const QueryTerms& child : term.children()) {
    if (!isWritten(child, context)) continue;
    if (first) {
      group.firstChildAt = context.out.size();
    } else {
      group.join(child);
    }
    writeTerm(child, context, false);
    first = false;
  }
  if (parentheses) context.out.push_back(u')');
}

}  // namespace

String QueryTerms::queryTermForOperators(uint32_t flags, const Dictionary* operatorWords) const {
  WriteContext context{flags, operatorWords, {}};
  writeTerm(*this, context, true);
  return String::fromU16(std::move(context.out));
}

String QueryTerms::description() const {
  std::u16string text = u"QueryTerms <";
  text.append(queryTermForOperators(kDescriptionFlags).view());
  text.push_back(u'>');
  return String::fromU16(std::move(text));
}

// ---------------------------------------------------------------------------
// Flat lists

namespace {

template <typename Visit>
void forEachPlusLeaf(const QueryTerms& term, Visit&& visit) {
  if (term.queryNot()) return;
  if (term.isWord()) {
    visit(term);
    return;
  }
  for (const QueryTerms& child : term.children()) forEachPlusLeaf(child, visit);
}

std::u16string joined(const std::vector<String>& parts, std::u16string_view separator) {
  std::u16string text;
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i) text.append(separator);
    text.append(parts[i].view());
  }
  return text;
}

// Shortest first; equal lengths in unit order, so the result is stable.
std::vector<String> sortedByLength(const std::set<std::u16string>& strings) {
  std::vector<String> sorted;
  sorted.reserve(strings.size());
  for (const std::u16string& s : strings) sorted.emplace_back(s);
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const String& a, const String& b) { return a.length() < b.length(); });
  return sorted;
}

// The search strings of one leaf: its words alone or joined by " ", and a
// compound also written solid.
void addLeafWildcards(const QueryTerms& leaf, std::set<std::u16string>& strings) {
  bool compound = false;
  std::vector<String> words = wordsUsingWildcardSeparation(leaf.word(), &compound);
  if (words.empty()) return;
  strings.insert(joined(words, u" "));
  if (compound && !leaf.queryPhrase()) strings.insert(joined(words, u""));
}

void addNeighbourPairs(const QueryTerms& group, std::set<std::u16string>& strings) {
  // The string a child contributes to a pair: a leaf's words joined by " ".
  auto pairString = [](const QueryTerms& term) -> std::u16string {
    if (!term.isWord()) return {};
    return joined(wordsUsingWildcardSeparation(term.word()), u" ");
  };
  const std::vector<QueryTerms>& children = group.children();
  for (size_t i = 0; i < children.size(); ++i) {
    const QueryTerms& child = children[i];
    if (child.queryNot()) continue;
    if (!child.isWord()) {
      addNeighbourPairs(child, strings);
      continue;
    }
    addLeafWildcards(child, strings);
    if (i == 0 || children[i - 1].queryNot()) continue;
    QueryOperator op = child.queryOperator();
    if (op != QueryOperator::And && (op < QueryOperator::Near || op > QueryOperator::Next)) continue;
    std::u16string left = pairString(children[i - 1]);
    std::u16string right = pairString(child);
    if (left.empty() || right.empty()) continue;
    strings.insert(left + u" " + right);
  }
}

}  // namespace

String QueryTerms::plusString() const {
  std::u16string text;
  forEachPlusLeaf(*this, [&](const QueryTerms& leaf) {
    if (!text.empty()) text.push_back(u' ');
    text.append(leaf.word().view());
  });
  return String::fromU16(std::move(text));
}

std::vector<const QueryTerms*> QueryTerms::plusTerms() const {
  std::vector<const QueryTerms*> terms;
  forEachPlusLeaf(*this, [&](const QueryTerms& leaf) { terms.push_back(&leaf); });
  return terms;
}

std::vector<String> QueryTerms::plusParts() const {
  std::vector<String> parts;
  forEachPlusLeaf(*this, [&](const QueryTerms& leaf) { parts.push_back(leaf.word()); });
  return parts;
}

std::vector<String> QueryTerms::plusWords() const {
  std::vector<String> words;
  forEachPlusLeaf(*this, [&](const QueryTerms& leaf) {
    for (String& word : wordsUsingWildcardSeparation(leaf.word())) words.push_back(std::move(word));
  });
  return words;
}

std::vector<String> QueryTerms::plusWildcards() const {
  if (!isValid()) return {};
  std::set<std::u16string> strings;
  forEachPlusLeaf(*this, [&](const QueryTerms& leaf) {
    strings.insert(std::u16string(leaf.word().view()));
    addLeafWildcards(leaf, strings);
  });
  return sortedByLength(strings);
}

std::vector<String> QueryTerms::extendedPlusWildcards() const {
  if (!isValid()) return {};
  std::set<std::u16string> strings;
  if (isWord()) {
    if (!queryNot()) addLeafWildcards(*this, strings);
  } else if (!queryNot()) {
    addNeighbourPairs(*this, strings);
  }
  return sortedByLength(strings);
}

// ---------------------------------------------------------------------------
// String forms

String plusString(const String& query) {
  return QueryTerms::withString(query).plusString();
}
std::vector<String> plusParts(const String& query) {
  return QueryTerms::withString(query).plusParts();
}
std::vector<String> plusWords(const String& query) {
  return QueryTerms::withString(query).plusWords();
}
String standardizedQueryTerm(const String& query) {
  return QueryTerms::withString(query).standardizedQueryTerm();
}
String normalizedQueryTerm(const String& query) {
  return QueryTerms::withString(query).normalizedQueryTerm();
}
String queryTermForOperators(const String& query, uint32_t flags, const Dictionary* operatorWords) {
  return QueryTerms::withString(query).queryTermForOperators(flags, operatorWords);
}

String plusWildcardString(const String& query) {
  return QueryTerms::withWildcard(query).plusString();
}
std::vector<String> plusWildcardParts(const String& query) {
  return QueryTerms::withWildcard(query).plusParts();
}
std::vector<String> plusWildcardWords(const String& query) {
  return QueryTerms::withWildcard(query).plusWords();
}
std::vector<String> plusWildcards(const String& query) {
  return QueryTerms::withWildcard(query).plusWildcards();
}
std::vector<String> extendedPlusWildcards(const String& query) {
  return QueryTerms::withWildcard(query).extendedPlusWildcards();
}
String standardizedWildcardQueryTerm(const String& query) {
  return QueryTerms::withWildcard(query).standardizedQueryTerm();
}
String normalizedWildcardQueryTerm(const String& query) {
  return QueryTerms::withWildcard(query).normalizedQueryTerm();
}
String wildcardQueryTermForOperators(const String& query, uint32_t flags, const Dictionary* operatorWords) {
  return QueryTerms::withWildcard(query).queryTermForOperators(flags, operatorWords);
}

String queryTermWithoutSiteOperator(const String& query) {
  std::u16string kept;
  for (const String& component : text::componentsUsingWhiteSeparation(query)) {
    if (component.view().starts_with(u"site:")) continue;
    if (!kept.empty()) kept.push_back(u' ');
    kept.append(component.view());
  }
  if (kept == query.view()) return query;
  return String::fromU16(std::move(kept));
}

namespace {

std::vector<String> unionOf(const std::vector<QueryTerms>& trees, std::vector<String> (QueryTerms::*list)() const) {
  std::set<std::u16string> strings;
  for (const QueryTerms& tree : trees) {
    for (const String& s : (tree.*list)()) strings.insert(std::u16string(s.view()));
  }
  std::vector<String> result;
  for (const std::u16string& s : strings) result.emplace_back(s);
  return result;
}

}  // namespace

std::vector<String> plusParts(const std::vector<QueryTerms>& trees) {
  return unionOf(trees, &QueryTerms::plusParts);
}
std::vector<String> plusWords(const std::vector<QueryTerms>& trees) {
  return unionOf(trees, &QueryTerms::plusWords);
}
std::vector<String> plusWildcards(const std::vector<QueryTerms>& trees) {
  return unionOf(trees, &QueryTerms::plusWildcards);
}

}  // namespace norvane::query
