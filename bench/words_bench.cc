// The word index against ICU's word break iterator on the same Latin text,
// and wildcard matching against PCRE2-16 with JIT. Units per second are
// reported as items/s.
//
// The text is the prose of the Python manual's library pages (tags stripped
// crudely) when python3.11-doc is installed, else a generated text of
// English words.
#include <benchmark/benchmark.h>
#include <unicode/brkiter.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "norvane/query/wildcards.h"
#include "norvane/query/word_enumerator.h"

#ifdef NORVANE_HAVE_PCRE2
#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>
#endif

namespace {

using norvane::Range;
using norvane::String;
using norvane::unichar;
using norvane::query::FastWordEnumerator;

constexpr size_t kTextUnits = 2 * 1024 * 1024;

std::string stripTags(const std::string& html) {
  std::string text;
  bool inTag = false;
  for (char c : html) {
    if (c == '<') inTag = true;
    if (!inTag) text += c;
    if (c == '>') inTag = false;
  }
  return text;
}

String generatedText() {
  static const char16_t* words[] = {u"the",    u"module", u"provides", u"functions", u"for",     u"working",
                                    u"with",   u"files",  u"and",      u"paths,",    u"objects", u"return",
                                    u"values", u"of",     u"integer",  u"type.",     u"See",     u"also"};
  std::u16string s;
  for (size_t i = 0; s.size() < kTextUnits; ++i) {
    s += words[(i * 7 + i / 18) % 18];
    s += u' ';
  }
  s.resize(kTextUnits);
  return String::fromU16(std::move(s));
}

const String& corpus() {
  static const String text = [] {
    const std::filesystem::path root = "/usr/share/doc/python3.11/html/library";
    std::error_code error;
    if (!std::filesystem::is_directory(root, error)) return generatedText();
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(root, error))
      if (entry.path().extension() == ".html") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::string utf8;
    for (const auto& file : files) {
      std::ifstream in(file, std::ios::binary);
      std::stringstream buffer;
      buffer << in.rdbuf();
      utf8 += stripTags(buffer.str());
      if (utf8.size() > kTextUnits) break;
    }
    std::u16string units = String::fromUtf8(utf8).toU16();
    units.resize(std::min(units.size(), kTextUnits));
    return String::fromU16(std::move(units));
  }();
  return text;
}

// --- Word index ---

void WordIndex(benchmark::State& state) {
  const String& text = corpus();
  size_t words = 0;
  for (auto _ : state) {
    auto e = FastWordEnumerator::enumeratorWithString(text);
    words = e->numberOfWords();
    benchmark::DoNotOptimize(e->index());
  }
  state.counters["words"] = static_cast<double>(words);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.length()));
}
BENCHMARK(WordIndex)->Unit(benchmark::kMillisecond);

void WordIndexWildcardMode(benchmark::State& state) {
  const String& text = corpus();
  for (auto _ : state) {
    auto e = FastWordEnumerator::enumeratorWithString(text, false, true);
    benchmark::DoNotOptimize(e->index());
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.length()));
}
BENCHMARK(WordIndexWildcardMode)->Unit(benchmark::kMillisecond);

void IcuWordBreakIterator(benchmark::State& state) {
  const String& text = corpus();
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::BreakIterator> words(icu::BreakIterator::createWordInstance(icu::Locale::getUS(), status));
  UText* ut = utext_openUChars(nullptr, text.data(), static_cast<int64_t>(text.length()), &status);
  if (U_FAILURE(status)) {
    state.SkipWithError("no ICU word break iterator");
    return;
  }
  size_t count = 0;
  for (auto _ : state) {
    words->setText(ut, status);
    count = 0;
    for (int32_t b = words->first(); b != icu::BreakIterator::DONE; b = words->next())
      count += words->getRuleStatus() >= UBRK_WORD_NUMBER;
    benchmark::DoNotOptimize(count);
  }
  utext_close(ut);
  state.counters["words"] = static_cast<double>(count);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.length()));
}
BENCHMARK(IcuWordBreakIterator)->Unit(benchmark::kMillisecond);

// --- Wildcard matching ---

// The words of the corpus, to match one by one.
const std::vector<String>& corpusWords() {
  static const std::vector<String> words = [] {
    std::vector<String> out;
    FastWordEnumerator::enumeratorWithString(corpus())->addWordsTo(&out, 1);
    return out;
  }();
  return words;
}

size_t totalUnits(const std::vector<String>& words) {
  size_t units = 0;
  for (const String& w : words) units += w.length();
  return units;
}

void WildcardMatchWords(benchmark::State& state) {
  const auto& words = corpusWords();
  const std::u16string pattern = u"*a*e*ion*";
  size_t matched = 0;
  for (auto _ : state) {
    matched = 0;
    for (const String& w : words)
      matched += norvane::query::stringMatchesWildcard(w.data(), w.data() + w.length(), pattern.data(),
                                                       pattern.data() + pattern.size());
    benchmark::DoNotOptimize(matched);
  }
  state.counters["matched"] = static_cast<double>(matched);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * totalUnits(words)));
}
BENCHMARK(WildcardMatchWords)->Unit(benchmark::kMillisecond);

void WildcardSearchText(benchmark::State& state) {
  const String& text = corpus();
  auto e = FastWordEnumerator::enumeratorWithString(text);
  const String pattern(u"*a*e*ion*");
  size_t hits = 0;
  for (auto _ : state) {
    hits = 0;
    for (size_t from = 0;;) {
      const Range hit =
          norvane::query::FindWildcardStringInCharacters(*e, from, text.length(), pattern, 0, 1, true, false);
      if (!hit.found()) break;
      ++hits;
      from = hit.end();
    }
    benchmark::DoNotOptimize(hits);
  }
  state.counters["hits"] = static_cast<double>(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.length()));
}
BENCHMARK(WildcardSearchText)->Unit(benchmark::kMillisecond);

void PrefixSearchText(benchmark::State& state) {
  const String& text = corpus();
  auto e = FastWordEnumerator::enumeratorWithString(text);
  const String pattern(u"inter*");
  size_t hits = 0;
  for (auto _ : state) {
    hits = 0;
    for (size_t from = 0;;) {
      const Range hit =
          norvane::query::FindWildcardStringInCharacters(*e, from, text.length(), pattern, 0, 1, true, false);
      if (!hit.found()) break;
      ++hits;
      from = hit.end();
    }
    benchmark::DoNotOptimize(hits);
  }
  state.counters["hits"] = static_cast<double>(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.length()));
}
BENCHMARK(PrefixSearchText)->Unit(benchmark::kMillisecond);

#ifdef NORVANE_HAVE_PCRE2

struct Pcre2 {
  explicit Pcre2(std::u16string_view expression) {
    int error = 0;
    PCRE2_SIZE offset = 0;
    code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression.data()), expression.size(), PCRE2_UTF, &error, &offset,
                         nullptr);
    if (code) {
      jit = pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) == 0;
      data = pcre2_match_data_create_from_pattern(code, nullptr);
    }
  }
  ~Pcre2() {
    pcre2_match_data_free(data);
    pcre2_code_free(code);
  }
  pcre2_code* code = nullptr;
  pcre2_match_data* data = nullptr;
  bool jit = false;
};

void Pcre2JitMatchWords(benchmark::State& state) {
  const auto& words = corpusWords();
  Pcre2 re(u"^.*a.*e.*ion.*$");
  if (!re.jit) {
    state.SkipWithError("no PCRE2 JIT");
    return;
  }
  size_t matched = 0;
  for (auto _ : state) {
    matched = 0;
    for (const String& w : words)
      matched += pcre2_jit_match(re.code, reinterpret_cast<PCRE2_SPTR>(w.data()), w.length(), 0, PCRE2_NO_UTF_CHECK,
                                 re.data, nullptr) > 0;
    benchmark::DoNotOptimize(matched);
  }
  state.counters["matched"] = static_cast<double>(matched);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * totalUnits(words)));
}
BENCHMARK(Pcre2JitMatchWords)->Unit(benchmark::kMillisecond);

size_t countPcre2Hits(const Pcre2& re, const String& text) {
  size_t hits = 0;
  PCRE2_SIZE from = 0;
  while (from < text.length() && pcre2_jit_match(re.code, reinterpret_cast<PCRE2_SPTR>(text.data()), text.length(),
                                                 from, PCRE2_NO_UTF_CHECK, re.data, nullptr) > 0) {
    const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(re.data);
    ++hits;
    from = std::max(ovector[1], ovector[0] + 1);
  }
  return hits;
}

void Pcre2JitSearchText(benchmark::State& state) {
  const String& text = corpus();
  // A word holding a, e and ion in that order: the same words as *a*e*ion*
  // for ASCII text (\w is ASCII here, as the word index is not).
  Pcre2 re(u"\\b\\w*a\\w*e\\w*ion\\w*\\b");
  if (!re.jit) {
    state.SkipWithError("no PCRE2 JIT");
    return;
  }
  size_t hits = 0;
  for (auto _ : state) benchmark::DoNotOptimize(hits = countPcre2Hits(re, text));
  state.counters["hits"] = static_cast<double>(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.length()));
}
BENCHMARK(Pcre2JitSearchText)->Unit(benchmark::kMillisecond);

void Pcre2JitPrefixSearchText(benchmark::State& state) {
  const String& text = corpus();
  Pcre2 re(u"\\binter\\w*");
  if (!re.jit) {
    state.SkipWithError("no PCRE2 JIT");
    return;
  }
  size_t hits = 0;
  for (auto _ : state) benchmark::DoNotOptimize(hits = countPcre2Hits(re, text));
  state.counters["hits"] = static_cast<double>(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.length()));
}
BENCHMARK(Pcre2JitPrefixSearchText)->Unit(benchmark::kMillisecond);

#endif  // NORVANE_HAVE_PCRE2

}  // namespace

BENCHMARK_MAIN();
