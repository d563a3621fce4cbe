// Fast compares and searches of the text core against the obvious
// alternatives: ICU's case-insensitive compare, std::search, memmem and
// strncasecmp. Units per second are reported as items/s.
#include <benchmark/benchmark.h>
#include <strings.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>

#include "norvane/text/chars.h"

namespace {

using norvane::unichar;
namespace text = norvane::text;

// A Latin text with some accented letters, long enough to leave the caches
// warm but not trivially small.
std::u16string latinText(size_t length) {
  static const char16_t* words[] = {
      u"Lorem",   u"ipsum",  u"dolor",      u"sit", u"amet",   u"consectetur", u"adipiscing", u"élit",  u"sed",   u"do",
      u"eiusmod", u"tempor", u"incididunt", u"ut",  u"labore", u"et",          u"dolore",     u"magna", u"aliqua"};
  std::u16string s;
  for (size_t i = 0; s.size() < length; ++i) {
    s += words[(i * 7) % 19];
    s += u' ';
  }
  s.resize(length);
  return s;
}

std::string asciiOf(const std::u16string& s) {
  std::string out;
  for (unichar u : s) out.push_back(u < 128 ? static_cast<char>(u) : 'e');
  return out;
}

constexpr size_t kLength = 64 * 1024;

void CompareCaseInsensitive(benchmark::State& state) {
  std::u16string a = latinText(kLength), b = a;
  for (auto& u : b) u = text::toUpper(u);
  for (auto _ : state)
    benchmark::DoNotOptimize(text::fastCaseInsensitiveCompareUnichars(a.data(), a.size(), b.data(), b.size()));
  state.SetItemsProcessed(state.iterations() * kLength);
}
BENCHMARK(CompareCaseInsensitive);

void CompareIcuStrCaseCompare(benchmark::State& state) {
  std::u16string a = latinText(kLength), b = a;
  for (auto& u : b) u = text::toUpper(u);
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    benchmark::DoNotOptimize(u_strCaseCompare(a.data(), a.size(), b.data(), b.size(), U_FOLD_CASE_DEFAULT, &status));
  }
  state.SetItemsProcessed(state.iterations() * kLength);
}
BENCHMARK(CompareIcuStrCaseCompare);

void CompareStrncasecmp(benchmark::State& state) {
  std::string a = asciiOf(latinText(kLength)), b = a;
  for (auto& c : b) c = static_cast<char>(toupper(c));
  for (auto _ : state) benchmark::DoNotOptimize(strncasecmp(a.data(), b.data(), a.size()));
  state.SetItemsProcessed(state.iterations() * kLength);
}
BENCHMARK(CompareStrncasecmp);

void CompareExact(benchmark::State& state) {
  std::u16string a = latinText(kLength), b = a;
  for (auto _ : state) benchmark::DoNotOptimize(text::fastCompareUnichars(a.data(), a.size(), b.data(), b.size()));
  state.SetItemsProcessed(state.iterations() * kLength);
}
BENCHMARK(CompareExact);

// The needle stands only at the very end, so the whole text is searched.
const std::u16string kNeedle = u"Quintessence";

void SearchExact(benchmark::State& state) {
  std::u16string hay = latinText(kLength) + kNeedle;
  for (auto _ : state)
    benchmark::DoNotOptimize(text::fastContainsUnichars(hay.data(), hay.size(), kNeedle.data(), kNeedle.size()));
  state.SetItemsProcessed(state.iterations() * hay.size());
}
BENCHMARK(SearchExact);

void SearchCaseInsensitive(benchmark::State& state) {
  std::u16string hay = latinText(kLength) + u"QUINTESSENCE";
  for (auto _ : state)
    benchmark::DoNotOptimize(
        text::fastCaseInsensitiveContainsUnichars(hay.data(), hay.size(), kNeedle.data(), kNeedle.size()));
  state.SetItemsProcessed(state.iterations() * hay.size());
}
BENCHMARK(SearchCaseInsensitive);

void SearchCaseInsensitiveBytes(benchmark::State& state) {
  std::u16string hay = latinText(kLength) + u"QUINTESSENCE";
  for (auto _ : state)
    benchmark::DoNotOptimize(text::fastCaseInsensitiveUnicharsContainChars(hay.data(), hay.size(), "quintessence", 12));
  state.SetItemsProcessed(state.iterations() * hay.size());
}
BENCHMARK(SearchCaseInsensitiveBytes);

void SearchStdSearch(benchmark::State& state) {
  std::u16string hay = latinText(kLength) + kNeedle;
  for (auto _ : state) benchmark::DoNotOptimize(std::search(hay.begin(), hay.end(), kNeedle.begin(), kNeedle.end()));
  state.SetItemsProcessed(state.iterations() * hay.size());
}
BENCHMARK(SearchStdSearch);

void SearchBoyerMooreHorspool(benchmark::State& state) {
  std::u16string hay = latinText(kLength) + kNeedle;
  std::boyer_moore_horspool_searcher searcher(kNeedle.begin(), kNeedle.end());
  for (auto _ : state) benchmark::DoNotOptimize(std::search(hay.begin(), hay.end(), searcher));
  state.SetItemsProcessed(state.iterations() * hay.size());
}
BENCHMARK(SearchBoyerMooreHorspool);

void SearchMemmemBytes(benchmark::State& state) {
  std::string hay = asciiOf(latinText(kLength)) + "Quintessence";
  for (auto _ : state) benchmark::DoNotOptimize(memmem(hay.data(), hay.size(), "Quintessence", 12));
  state.SetItemsProcessed(state.iterations() * hay.size());
}
BENCHMARK(SearchMemmemBytes);

void SearchIcuCaseInsensitiveByFolding(benchmark::State& state) {
  // ICU has no case-insensitive find; folding both sides and u_strFindFirst
  // is the usual way.
  std::u16string hay = latinText(kLength) + u"QUINTESSENCE";
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    std::u16string folded(hay.size() + 16, 0), needle(32, 0);
    int32_t n = u_strFoldCase(folded.data(), folded.size(), hay.data(), hay.size(), U_FOLD_CASE_DEFAULT, &status);
    int32_t m =
        u_strFoldCase(needle.data(), needle.size(), kNeedle.data(), kNeedle.size(), U_FOLD_CASE_DEFAULT, &status);
    benchmark::DoNotOptimize(u_strFindFirst(folded.data(), n, needle.data(), m));
  }
  state.SetItemsProcessed(state.iterations() * hay.size());
}
BENCHMARK(SearchIcuCaseInsensitiveByFolding);

}  // namespace

BENCHMARK_MAIN();
