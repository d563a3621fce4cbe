// The query parser: one walk over the units of the query, with a small state
// record, handing each stretch of pending text to addPart. Words are tested
// for keywords on the raw units; only a term that is kept makes a String.

#include <algorithm>
#include <string>

#include "norvane/query/query_terms.h"
#include "norvane/text/chars.h"

namespace norvane::query {

namespace {

bool isQuotationMark(unichar u) {
  return u == u'"' || (u >= 0x201C && u <= 0x201F);
}

// ASCII-insensitive compare of units against an upper-case keyword.
bool equalsKeyword(const unichar* units, const char* keyword, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    unichar u = units[i];
    if (u >= u'a' && u <= u'z') u -= 32;
    if (u != static_cast<unichar>(keyword[i])) return false;
  }
  return true;
}

// The integer value of a text as a number reader sees it: leading white
// space, an optional sign, digits up to the first other unit. Nothing
// readable is 0; a negative value is 0 too, as a distance.
uint64_t distanceValue(const unichar* units, size_t length) {
  size_t i = 0;
  while (i < length && (units[i] == u' ' || units[i] == u'\t')) ++i;
  bool negative = false;
  if (i < length && (units[i] == u'+' || units[i] == u'-')) negative = units[i++] == u'-';
  uint64_t value = 0;
  for (; i < length && units[i] >= u'0' && units[i] <= u'9'; ++i) {
    uint64_t next = value * 10 + (units[i] - u'0');
    value = next < value || value > (UINT64_MAX / 10) ? UINT64_MAX : next;
  }
  return negative ? 0 : value;
}

// A word that may match inside longer words, as a pattern: "*word*",
// unless it begins and ends with "*" already.
String substringPattern(std::u16string_view word) {
  if (!word.empty() && word.front() == u'*' && word.back() == u'*') return String(word);
  std::u16string wrapped;
  wrapped.reserve(word.size() + 2);
  wrapped.push_back(u'*');
  wrapped.append(word);
  wrapped.push_back(u'*');
  return String::fromU16(std::move(wrapped));
}

}  // namespace

// The parser of one group. Groups in parentheses are parsed by a parser of
// their own over the inner text.
class QueryParser {
 public:
  QueryParser(const unichar* units, size_t length, bool wildcard, QueryOperator defaultOperator,
              uint64_t defaultDistance)
      : units_(units),
        length_(length),
        wildcard_(wildcard),
        defaultOperator_(defaultOperator),
        defaultDistance_(defaultDistance),
        white_(text::whiteCharacterSetRep()),
        operator_(defaultOperator),
        distance_(defaultDistance) {}

  // Parses into `group`, whose own fields the caller has set.
  void parse(QueryTerms& group);

 private:
  void reset() {
    negation_ = false;
    substring_ = false;
    groupSubstring_ = false;
    operator_ = defaultOperator_;
    distance_ = defaultDistance_;
  }
  // Hands the pending text before `position` to addPart; the pending text
  // then starts behind `position`.
  void flush(QueryTerms& group, size_t position) {
    if (addPart(group, pendingStart_, position, false)) reset();
    pendingStart_ = position + 1;
  }
  bool addPart(QueryTerms& group, size_t begin, size_t end, bool phrase);
  // Applies a keyword; false if the text is no keyword.
  bool applyKeyword(const unichar* word, size_t length);
  size_t readGroup(QueryTerms& group, size_t open);

  const unichar* units_;
  size_t length_;
  bool wildcard_;
  QueryOperator defaultOperator_;
  uint64_t defaultDistance_;
  text::CharacterSetRep white_;

  QueryOperator operator_;
  uint64_t distance_;
  bool negation_ = false;
  bool substring_ = false;
  bool groupSubstring_ = false;
  size_t pendingStart_ = 0;
};

void QueryParser::parse(QueryTerms& group) {
  size_t i = 0;
  for (; i < length_; ++i) {
    unichar u = units_[i];
    if (text::isInRep(white_, u)) {
      flush(group, i);
    } else if (u == u'&' || u == u'|' || u == u'^') {
      flush(group, i);
      operator_ = u == u'&' ? QueryOperator::And : u == u'|' ? QueryOperator::Or : QueryOperator::Xor;
    } else if (u == u'!') {
      flush(group, i);
      negation_ = true;
    } else if ((u == u'+' || u == u'-') && pendingStart_ == i) {
      flush(group, i);
      negation_ = u == u'-';
    } else if (u == u'~') {
      flush(group, i);
      substring_ = true;
      groupSubstring_ = true;
    } else if (isQuotationMark(u)) {
      flush(group, i);
      size_t close = i + 1;
      while (close < length_ && !isQuotationMark(units_[close])) ++close;
      addPart(group, i + 1, close, true);
      reset();
      pendingStart_ = close + 1;
      i = close;
    } else if (u == u'(') {
      flush(group, i);
      i = readGroup(group, i);
      pendingStart_ = i + 1;
    } else if (u == u')') {
      flush(group, i);
    } else if (u == u'[') {
      size_t close = i + 1;
      while (close < length_ && units_[close] != u']') ++close;
      if (wildcard_) {
        // The bracket expression stays inside its word; the "]" is read as
        // an ordinary unit next.
        i = close - 1;
      } else {
        flush(group, i);
        pendingStart_ = close + 1;
        i = close;
      }
    } else if (u == u']' && !wildcard_) {
      flush(group, i);
    }
  }
  if (pendingStart_ < length_) addPart(group, pendingStart_, length_, false);
}

size_t QueryParser::readGroup(QueryTerms& group, size_t open) {
  size_t close = open + 1;
  for (size_t depth = 1; close < length_; ++close) {
    if (units_[close] == u'(') {
      ++depth;
    } else if (units_[close] == u')' && --depth == 0) {
      break;
    }
  }
  QueryTerms inner;
  inner.queryOperator_ = operator_;
  inner.queryNot_ = negation_;
  inner.querySubstr_ = groupSubstring_;
  inner.proximityDistance_ = distance_;
  size_t innerLength = std::min(close, length_) - (open + 1);
  QueryParser(units_ + open + 1, innerLength, wildcard_, defaultOperator_, defaultDistance_).parse(inner);

  if (inner.children_.size() == 1) {
    // A group of one term is that term, in the group's place.
    QueryTerms child = std::move(inner.children_.front());
    child.queryOperator_ = operator_;
    child.queryNot_ = child.queryNot_ != negation_;
    if (groupSubstring_ && !child.querySubstr_) {
      child.querySubstr_ = true;
      if (wildcard_ && child.isWord_) child.word_ = substringPattern(child.word_.view());
    }
    child.proximityDistance_ = distance_;
    group.addChild(std::move(child));
  } else if (!inner.children_.empty()) {
    group.addChild(std::move(inner));
  }
  reset();
  return close;
}

bool QueryParser::applyKeyword(const unichar* word, size_t length) {
  // Matches KEYWORD alone or KEYWORD/n; a distance is set only by the
  // second form.
  auto proximity = [&](const char* keyword, size_t keywordLength, QueryOperator op, uint64_t plainDistance,
                       bool keepDistance) {
    if (length < keywordLength || !equalsKeyword(word, keyword, keywordLength)) return false;
    if (length == keywordLength) {
      operator_ = op;
      if (!keepDistance) distance_ = plainDistance;
      return true;
    }
    if (length < keywordLength + 2 || word[keywordLength] != u'/') return false;
    operator_ = op;
    distance_ = distanceValue(word + keywordLength + 1, length - keywordLength - 1);
    return true;
  };

  switch (length) {
    case 1:
      if (word[0] == u'|') return operator_ = QueryOperator::Or, true;
      if (word[0] == u'^') return operator_ = QueryOperator::Xor, true;
      if (word[0] == u'&') return operator_ = QueryOperator::And, true;
      return false;
    case 2:
      if (equalsKeyword(word, "OR", 2)) return operator_ = QueryOperator::Or, true;
      return false;
    case 3:
      if (equalsKeyword(word, "AND", 3) || equalsKeyword(word, "BUT", 3)) return operator_ = QueryOperator::And, true;
      if (equalsKeyword(word, "XOR", 3) || equalsKeyword(word, "EOR", 3)) return operator_ = QueryOperator::Xor, true;
      if (equalsKeyword(word, "OPT", 3)) return operator_ = QueryOperator::Optional, true;
      if (equalsKeyword(word, "NOT", 3)) return negation_ = !negation_, true;
      return false;
    default:
      return proximity("NEAR", 4, QueryOperator::Near, 0, true) ||
             proximity("NEXT", 4, QueryOperator::Next, 1, false) ||
             proximity("AFTER", 5, QueryOperator::After, defaultDistance_, false) ||
             proximity("BEFORE", 6, QueryOperator::Before, defaultDistance_, false);
  }
}

bool QueryParser::addPart(QueryTerms& group, size_t begin, size_t end, bool phrase) {
  if (end > length_) end = length_;
  while (begin < end && text::isInRep(white_, units_[begin])) ++begin;
  while (end > begin && text::isInRep(white_, units_[end - 1])) --end;
  for (unichar trimmed : {u'+', u'-'}) {
    while (begin < end && units_[begin] == trimmed) ++begin;
    while (end > begin && units_[end - 1] == trimmed) --end;
  }
  if (begin == end) return false;
  const unichar* word = units_ + begin;
  size_t length = end - begin;
  if (!phrase && applyKeyword(word, length)) return false;

  QueryTerms leaf;
  leaf.isWord_ = true;
  leaf.queryOperator_ = operator_;
  leaf.queryNot_ = negation_;
  leaf.querySubstr_ = substring_;
  leaf.queryPhrase_ = phrase;
  leaf.proximityDistance_ = distance_;
  leaf.word_ = wildcard_ && substring_ ? substringPattern({word, length}) : String(word, length);
  group.addChild(std::move(leaf));
  return true;
}

void QueryTerms::addChild(QueryTerms&& child) {
  if (children_.empty()) {
    commonOperator_ = QueryOperator::Mixed;
  } else if (children_.size() == 1) {
    commonOperator_ = child.queryOperator_;
  } else if (commonOperator_ != child.queryOperator_) {
    commonOperator_ = QueryOperator::Mixed;
  }
  children_.push_back(std::move(child));
}

QueryTerms QueryTerms::parse(std::u16string_view query, bool wildcard, QueryOperator defaultOperator,
                             uint64_t defaultDistance) {
  QueryTerms tree;
  tree.queryOperator_ = defaultOperator;
  tree.proximityDistance_ = defaultDistance;
  QueryParser(query.data(), query.size(), wildcard, defaultOperator, defaultDistance).parse(tree);
  return tree;
}

QueryTerms QueryTerms::withString(std::u16string_view query, QueryOperator defaultOperator, uint64_t defaultDistance) {
  return parse(query, false, defaultOperator, defaultDistance);
}

QueryTerms QueryTerms::withWildcard(std::u16string_view query, QueryOperator defaultOperator,
                                    uint64_t defaultDistance) {
  return parse(query, true, defaultOperator, defaultDistance);
}

}  // namespace norvane::query
