// Throughput of the simplified form and of the classification predicates over
// real URLs from Debian's documentation (see tests/urls/url_corpus.h).
// bench/urls_peer.py times a Python canonicaliser over the same list.
#include <benchmark/benchmark.h>

#include <vector>

#include "../tests/urls/url_corpus.h"
#include "norvane/urls/classification.h"
#include "norvane/urls/normal_forms.h"
#include "norvane/urls/url_object.h"

namespace {

using namespace norvane;
using namespace norvane::urls;

const std::vector<String>& urls() {
  static const std::vector<String> list = [] {
    std::vector<String> out;
    for (const std::string& u : corpus::gatherURLs()) out.push_back(String::fromUtf8(u));
    return out;
  }();
  return list;
}

template <typename Work>
void overAllURLs(benchmark::State& state, Work work) {
  const std::vector<String>& list = urls();
  if (list.empty()) {
    state.SkipWithError("no URLs found under /usr/share/doc");
    return;
  }
  for (auto _ : state) {
    for (const String& url : list) work(url);
  }
  state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(list.size()));
  state.counters["urls"] = double(list.size());
}

void BM_SimplifiedStringURL(benchmark::State& state) {
  overAllURLs(state, [](const String& url) { benchmark::DoNotOptimize(simplifiedStringURL(url)); });
}
BENCHMARK(BM_SimplifiedStringURL);

void BM_StandardizedStringURL(benchmark::State& state) {
  overAllURLs(state, [](const String& url) { benchmark::DoNotOptimize(standardizedStringURL(url)); });
}
BENCHMARK(BM_StandardizedStringURL);

// Each page-kind predicate on its own.
template <bool (*Predicate)(const String&)>
void BM_Predicate(benchmark::State& state) {
  overAllURLs(state, [](const String& url) { benchmark::DoNotOptimize(Predicate(url)); });
}
BENCHMARK(BM_Predicate<stringURLIsAdvertisement>)->Name("BM_IsAdvertisement");
BENCHMARK(BM_Predicate<stringURLIsAdSense>)->Name("BM_IsAdSense");
BENCHMARK(BM_Predicate<stringURLIsBookmarklet>)->Name("BM_IsBookmarklet");
BENCHMARK(BM_Predicate<stringURLIsRecaptcha>)->Name("BM_IsRecaptcha");
BENCHMARK(BM_Predicate<stringURLIsTranslation>)->Name("BM_IsTranslation");
BENCHMARK(BM_Predicate<stringURLIsTopicOrThread>)->Name("BM_IsTopicOrThread");
BENCHMARK(BM_Predicate<stringURLIsForum>)->Name("BM_IsForum");
BENCHMARK(BM_Predicate<stringURLIsCached>)->Name("BM_IsCached");
BENCHMARK(BM_Predicate<isMailStringURL>)->Name("BM_IsMailStringURL");

// All page-kind predicates of one URL, as a link extractor asks them.
void BM_AllPageKinds(benchmark::State& state) {
  overAllURLs(state, [](const String& url) {
    benchmark::DoNotOptimize(stringURLIsAdvertisement(url));
    benchmark::DoNotOptimize(stringURLIsBookmarklet(url));
    benchmark::DoNotOptimize(stringURLIsRecaptcha(url));
    benchmark::DoNotOptimize(stringURLIsTranslation(url));
    benchmark::DoNotOptimize(stringURLIsCached(url));
    benchmark::DoNotOptimize(stringURLIsForum(url));
    benchmark::DoNotOptimize(stringURLIsTopicOrThread(url));
  });
}
BENCHMARK(BM_AllPageKinds);

void BM_SchemePredicates(benchmark::State& state) {
  overAllURLs(state, [](const String& url) {
    benchmark::DoNotOptimize(isWebKitStringURL(url));
    benchmark::DoNotOptimize(isHTTPStringURL(url));
    benchmark::DoNotOptimize(isMailStringURL(url));
    benchmark::DoNotOptimize(isFileStringURL(url));
  });
}
BENCHMARK(BM_SchemePredicates);

void BM_IsSearchEngine(benchmark::State& state) {
  overAllURLs(state, [](const String& url) { benchmark::DoNotOptimize(isSearchEngine(Url{url})); });
}
BENCHMARK(BM_IsSearchEngine);

}  // namespace

BENCHMARK_MAIN();
