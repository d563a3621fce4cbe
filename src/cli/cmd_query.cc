// norvane query: grep for the query language. Lists the files whose text
// matches a query, optionally with extracts around the hits, or shows how a
// query is read.
#include <cctype>
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "command.h"
#include "norvane/core/unicode.h"
#include "norvane/markup/decoding.h"
#include "norvane/markup/plain_text.h"
#include "norvane/query/evaluation.h"
#include "norvane/query/extracts.h"
#include "norvane/query/query_terms.h"
#include "norvane/query/wildcards.h"
#include "norvane/query/word_enumerator.h"

namespace norvane::cli {
namespace {

using query::QueryTerms;

// Text files: UTF-8, or UTF-16 when a byte-order mark says so; a UTF-8
// byte-order mark is dropped.
String decodeText(const std::string& bytes) {
  auto hasPrefix = [&](std::string_view prefix) { return bytes.compare(0, prefix.size(), prefix) == 0; };
  if (hasPrefix("\xEF\xBB\xBF")) return String::fromUtf8(std::string_view(bytes).substr(3));
  bool littleEndian = hasPrefix("\xFF\xFE");
  if (littleEndian || hasPrefix("\xFE\xFF")) {
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
      auto lo = static_cast<unsigned char>(bytes[littleEndian ? i : i + 1]);
      auto hi = static_cast<unsigned char>(bytes[littleEndian ? i + 1 : i]);
      units.push_back(static_cast<unichar>(hi << 8 | lo));
    }
    return String::fromU16(std::move(units));
  }
  return String::fromUtf8(bytes);
}

bool isHtmlPath(const std::string& path) {
  size_t dot = path.rfind('.');
  if (dot == std::string::npos) return false;
  std::string extension = path.substr(dot + 1);
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension == "html" || extension == "htm" || extension == "xhtml" || extension == "shtml";
}

// HTML files are decoded as markup (byte-order mark, declared charset) and
// searched as the text a reader sees; other files as text.
String textOfFile(const std::string& path, const std::string& bytes) {
  if (!isHtmlPath(path)) return decodeText(bytes);
  String html = markup::stringWithMarkupData(bytes, text::NSUTF8StringEncoding);
  return markup::stringByConvertingHtml2PlainText(html);
}

int runParse(const Invocation& in) {
  if (in.positionals.size() != 1) return usageError(in, "--parse takes the query alone");
  QueryTerms tree = QueryTerms::withWildcard(utf8ToUtf16(in.positionals.front()));
  std::string standardized = tree.standardizedQueryTerm().toUtf8();
  std::string normalized = tree.normalizedQueryTerm().toUtf8();
  std::string output;
  if (in.json) {
    nlohmann::json result = {{"query", in.positionals.front()},
                             {"valid", tree.isValid()},
                             {"standardized", standardized},
                             {"normalized", normalized},
                             {"description", tree.description().toUtf8()}};
    output = result.dump() + "\n";
  } else {
    output = "standardized: " + standardized + "\nnormalized: " + normalized + "\n";
  }
  return writeOutput(in, output) ? kSuccess : kFailure;
}

int runQuery(const Invocation& in) {
  if (in.has("parse")) return runParse(in);
  if (in.positionals.size() < 2) return usageError(in, "give a query and at least one file");
  QueryTerms tree = QueryTerms::withWildcard(utf8ToUtf16(in.positionals.front()));
  if (!tree.isValid()) return usageError(in, "the query has no terms to look for");

  unsigned comparison = 0;
  if (in.has("ignore-case")) comparison |= query::kComparisonCaseInsensitive;
  if (in.has("ignore-diacritics")) comparison |= query::kComparisonDiacriticInsensitive;
  if (in.has("fuzzy")) comparison |= query::kComparisonFuzzy;
  bool extracts = in.has("extracts");
  std::vector<QueryTerms> trees = {tree};

  bool anyMatch = false;
  bool anyError = false;
  nlohmann::json matches = nlohmann::json::array();
  for (size_t i = 1; i < in.positionals.size(); ++i) {
    const std::string& path = in.positionals[i];
    std::string error;
    std::optional<std::string> bytes = readInput(path, &error);
    if (!bytes) {
      std::fflush(stdout);
      std::cerr << "norvane query: " << error << '\n';
      anyError = true;
      continue;
    }
    String text = textOfFile(path, *bytes);
    auto enumerator = query::FastWordEnumerator::enumeratorWithString(text);
    if (!enumerator || !query::matchesEnumerator(tree, *enumerator, {0, text.length()}, comparison)) continue;
    anyMatch = true;

    std::vector<query::OccurrenceRecord> records;
    if (extracts)
      records = query::getOccurrencesOfQueryTerms(text, trees, comparison, 1, query::sentenceSeparators(), 0);
    if (in.json) {
      nlohmann::json match = {{"file", path}};
      if (extracts) {
        nlohmann::json list = nlohmann::json::array();
        for (const query::OccurrenceRecord& r : records) {
          list.push_back({{"line", r.line + 1},
                          {"location", r.range.location},
                          {"length", r.range.length},
                          {"extract", r.string.toUtf8()}});
        }
        match["extracts"] = std::move(list);
      }
      matches.push_back(std::move(match));
      continue;
    }
    std::string out = path + "\n";
    for (const query::OccurrenceRecord& r : records) {
      std::string extract = r.string.toUtf8();
      for (char& c : extract) {
        if (c == '\n' || c == '\r' || c == '\t') c = ' ';
      }
      out += "  " + std::to_string(r.line + 1) + ": " + extract + "\n";
    }
    if (!writeOutput(in, out)) return kFailure;
  }
  if (in.json && !writeOutput(in, nlohmann::json({{"matches", matches}}).dump() + "\n")) return kFailure;
  if (anyError) return kUsage;
  return anyMatch ? kSuccess : kFailure;
}

const Registration kQuery{{
    .name = "query",
    .summary = "list the files whose text matches a query",
    .usage = "norvane query [-i|--ignore-case] [--ignore-diacritics] [--fuzzy] [--extracts] [--json] QUERY FILE...\n"
             "norvane query --parse [--json] QUERY",
    .options = {{"ignore-case", 'i', false, "compare without regard to case"},
                {"ignore-diacritics", 0, false, "compare without regard to diacritics"},
                {"fuzzy", 0, false, "let plain words match similar words"},
                {"extracts", 0, false, "show the sentences around the hits, with line numbers"},
                {"parse", 0, false, "print the standardized and normalized forms of the query"}},
    .minPositionals = 1,
    .run = runQuery,
    .details = "Words may hold the wildcards * and ?, and bracket expressions [a-z]. Operators: AND, OR,\n"
               "XOR, NOT (or -), NEAR, NEAR/n, BEFORE/n, AFTER/n, NEXT, OPT, \"phrases\" and (groups).\n"
               "Comparison is exact by default. Text files are read as UTF-8, or UTF-16 after a byte-order\n"
               "mark; HTML files (.html, .htm, .xhtml, .shtml) as the text a reader sees; FILE - reads\n"
               "standard input. Exit status: 0 when some file matched, 1 when none did,\n"
               "2 on bad usage or when a file could not be read. See docs/query-language.md.",
}};

}  // namespace
}  // namespace norvane::cli
