// Query parsing and evaluation, beside Xapian doing the same work.
//
// Evaluation: a five-term query with NEAR and a wildcard on a 35 KB document,
// the word index built in every iteration, so the figure is what a search of
// a fresh document costs. Xapian indexes the same document into an
// in-memory database in every iteration and runs the equivalent query.
// Parsing: a handful of typical queries, each parse a full tree.
//
// The document is the GPL version 3 text (/usr/share/common-licenses/GPL-3,
// 35,149 bytes) when present, else a generated text of the same size.
#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "norvane/core/unicode.h"
#include "norvane/query/evaluation.h"
#include "norvane/query/query_terms.h"
#include "norvane/query/wildcards.h"
#include "norvane/query/word_enumerator.h"

#ifdef NORVANE_HAVE_XAPIAN
#include <xapian.h>
#endif

namespace {

using norvane::String;
using norvane::query::FastWordEnumerator;
using norvane::query::QueryTerms;

const std::string& documentUtf8() {
  static const std::string text = [] {
    std::ifstream file("/usr/share/common-licenses/GPL-3");
    std::stringstream buffer;
    buffer << file.rdbuf();
    std::string s = buffer.str();
    if (s.size() > 30000) return s;
    static const char* words[] = {"software", "license", "copyright", "patent", "program", "warranty",
                                  "the",      "of",      "and",       "to",     "a",       "covered"};
    s.clear();
    for (size_t i = 0; s.size() < 35149; ++i) s += std::string(words[(i * 7 + i / 12) % 12]) + " ";
    return s;
  }();
  return text;
}

// Five terms: a NEAR pair with a wildcard, an or-group and a plain word.
const char kQuery[] = "software NEAR/5 licen* AND (copyright OR patent) AND warranty";

const char* const kTypicalQueries[] = {
    "tempor NEAR/3 labore",
    "\"free software\" AND licen*",
    "apple OR pear -banana",
    "(red OR green) NEXT apple",
    "copyright BEFORE/5 holder AND NOT warranty",
    "e-mail address",
    "site:example.com annual report 2024",
    "~graph AND (node OR edge) XOR tree",
};

void BM_QueryEvaluate(benchmark::State& state) {
  String text = String::fromUtf8(documentUtf8());
  QueryTerms tree = QueryTerms::withWildcard(norvane::utf8ToUtf16(kQuery));
  bool matched = false;
  for (auto _ : state) {
    auto enumerator = FastWordEnumerator::enumeratorWithString(text);
    matched = norvane::query::matchesEnumerator(tree, *enumerator, {0, text.length()},
                                                norvane::query::kComparisonCaseInsensitive);
    benchmark::DoNotOptimize(matched);
  }
  state.counters["matched"] = matched;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * documentUtf8().size()));
}
BENCHMARK(BM_QueryEvaluate);

void BM_QueryEvaluatePrebuiltIndex(benchmark::State& state) {
  String text = String::fromUtf8(documentUtf8());
  QueryTerms tree = QueryTerms::withWildcard(norvane::utf8ToUtf16(kQuery));
  auto enumerator = FastWordEnumerator::enumeratorWithString(text);
  for (auto _ : state) {
    benchmark::DoNotOptimize(norvane::query::matchesEnumerator(tree, *enumerator, {0, text.length()},
                                                               norvane::query::kComparisonCaseInsensitive));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * documentUtf8().size()));
}
BENCHMARK(BM_QueryEvaluatePrebuiltIndex);

void BM_QueryOccurrences(benchmark::State& state) {
  String text = String::fromUtf8(documentUtf8());
  QueryTerms tree = QueryTerms::withWildcard(norvane::utf8ToUtf16(kQuery));
  size_t count = 0;
  for (auto _ : state) {
    count = 0;
    norvane::query::enumerateString(tree, text, {0, text.length()}, false,
                                    [&](const FastWordEnumerator&, const String&, norvane::Range, bool) { ++count; });
  }
  state.counters["occurrences"] = static_cast<double>(count);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * documentUtf8().size()));
}
BENCHMARK(BM_QueryOccurrences);

void BM_QueryParse(benchmark::State& state) {
  std::vector<std::u16string> queries;
  for (const char* q : kTypicalQueries) queries.push_back(norvane::utf8ToUtf16(q));
  size_t i = 0;
  for (auto _ : state) {
    QueryTerms tree = QueryTerms::withWildcard(queries[i]);
    benchmark::DoNotOptimize(tree);
    if (++i == queries.size()) i = 0;
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_QueryParse);

void BM_QueryParseAndNormalize(benchmark::State& state) {
  std::vector<std::u16string> queries;
  for (const char* q : kTypicalQueries) queries.push_back(norvane::utf8ToUtf16(q));
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(QueryTerms::withWildcard(queries[i]).normalizedQueryTerm());
    if (++i == queries.size()) i = 0;
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_QueryParseAndNormalize);

#ifdef NORVANE_HAVE_XAPIAN

// The same query for Xapian. Its QueryParser cannot put a wildcard under
// NEAR (the text then falls back to plain terms), and Query(OP_WILDCARD)
// under OP_NEAR is unimplemented in 1.4, so the wildcard is expanded from
// the database's term list into an OR, which OP_NEAR accepts. A window of 6
// positions is what the QueryParser makes of NEAR/5.
Xapian::Query xapianQuery(const Xapian::Database& db) {
  std::vector<Xapian::Query> expansions;
  for (auto term = db.allterms_begin("licen"); term != db.allterms_end("licen"); ++term) expansions.emplace_back(*term);
  std::vector<Xapian::Query> near = {Xapian::Query("software"),
                                     Xapian::Query(Xapian::Query::OP_OR, expansions.begin(), expansions.end())};
  std::vector<Xapian::Query> all = {
      Xapian::Query(Xapian::Query::OP_NEAR, near.begin(), near.end(), 6),
      Xapian::Query(Xapian::Query::OP_OR, Xapian::Query("copyright"), Xapian::Query("patent")),
      Xapian::Query("warranty")};
  return Xapian::Query(Xapian::Query::OP_AND, all.begin(), all.end());
}

void BM_XapianIndexAndQuery(benchmark::State& state) {
  const std::string& text = documentUtf8();
  Xapian::doccount matches = 0;
  for (auto _ : state) {
    Xapian::WritableDatabase db(std::string(), Xapian::DB_BACKEND_INMEMORY);
    Xapian::TermGenerator indexer;
    Xapian::Document doc;
    indexer.set_document(doc);
    indexer.index_text(text);
    db.add_document(doc);
    Xapian::Enquire enquire(db);
    enquire.set_query(xapianQuery(db));
    matches = enquire.get_mset(0, 10).size();
    benchmark::DoNotOptimize(matches);
  }
  state.counters["matched"] = matches;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_XapianIndexAndQuery);

void BM_XapianQueryPrebuiltIndex(benchmark::State& state) {
  Xapian::WritableDatabase db(std::string(), Xapian::DB_BACKEND_INMEMORY);
  Xapian::TermGenerator indexer;
  Xapian::Document doc;
  indexer.set_document(doc);
  indexer.index_text(documentUtf8());
  db.add_document(doc);
  for (auto _ : state) {
    Xapian::Enquire enquire(db);
    enquire.set_query(xapianQuery(db));
    benchmark::DoNotOptimize(enquire.get_mset(0, 10).size());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * documentUtf8().size()));
}
BENCHMARK(BM_XapianQueryPrebuiltIndex);

void BM_XapianQueryParser(benchmark::State& state) {
  Xapian::QueryParser parser;
  size_t i = 0;
  const size_t n = sizeof(kTypicalQueries) / sizeof(kTypicalQueries[0]);
  for (auto _ : state) {
    Xapian::Query query = parser.parse_query(kTypicalQueries[i], Xapian::QueryParser::FLAG_DEFAULT);
    benchmark::DoNotOptimize(query);
    if (++i == n) i = 0;
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_XapianQueryParser);

#endif

}  // namespace

BENCHMARK_MAIN();
