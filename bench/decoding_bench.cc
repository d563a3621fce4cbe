// Markup decoding throughput: a real UTF-8 page through both passes of the
// markup decoder, side by side with ICU converting the same bytes alone.
#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "norvane/markup/decoding.h"
#include "norvane/text/encodings.h"

namespace {

using namespace norvane;
using namespace norvane::text;
namespace fs = std::filesystem;

// The largest page of the Python documentation, or a page made of repeated
// paragraphs where that is not installed.
const std::string& utf8Page() {
  static const std::string page = [] {
    const fs::path root = "/usr/share/doc/python3.11/html";
    fs::path largest;
    uintmax_t largestSize = 0;
    if (fs::is_directory(root)) {
      for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (entry.path().extension() == ".html" && entry.file_size() > largestSize) {
          largest = entry.path();
          largestSize = entry.file_size();
        }
      }
    }
    if (!largest.empty()) {
      std::ifstream in(largest, std::ios::binary);
      return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
    std::string made = "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>t</title></head><body>";
    while (made.size() < 2'000'000) made += "<p class=\"x\">Plain text with a few words, ünïcödé and “quotes”.</p>\n";
    return made + "</body></html>";
  }();
  return page;
}

// The same text in Windows-1251, declared, read with a UTF-8 default: two
// full conversions.
const std::string& cyrillicPage() {
  static const std::string page = [] {
    std::string utf8 = "<html><head><meta charset=\"windows-1251\"><title>t</title></head><body>";
    while (utf8.size() < 2'000'000) utf8 += "<p>Съешь же ещё этих мягких французских булок, да выпей чаю.</p>\n";
    utf8 += "</body></html>";
    std::u16string units;
    decodeBytesAppending(utf8, NSUTF8StringEncoding, false, units);
    return *encodeString(units, NSWindowsCP1251StringEncoding);
  }();
  return page;
}

void BM_MarkupDecoderUtf8Page(benchmark::State& state) {
  const std::string& page = utf8Page();
  for (auto _ : state) {
    String text = markup::stringWithMarkupData(page, NSUTF8StringEncoding);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * page.size()));
  state.counters["bytes"] = static_cast<double>(page.size());
}
BENCHMARK(BM_MarkupDecoderUtf8Page);

// A Latin-1 default: the first pass is Latin-1, the declared UTF-8 decides.
void BM_MarkupDecoderUtf8PageTwoPasses(benchmark::State& state) {
  const std::string& page = utf8Page();
  for (auto _ : state) {
    String text = markup::stringWithMarkupData(page, NSISOLatin1StringEncoding);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * page.size()));
}
BENCHMARK(BM_MarkupDecoderUtf8PageTwoPasses);

void BM_DecodeBytesUtf8(benchmark::State& state) {
  const std::string& page = utf8Page();
  std::u16string units;
  for (auto _ : state) {
    units.clear();
    decodeBytesAppending(page, NSUTF8StringEncoding, false, units);
    benchmark::DoNotOptimize(units.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * page.size()));
}
BENCHMARK(BM_DecodeBytesUtf8);

// The peer: ICU's UTF-8 converter into a buffer allocated once.
void BM_IcuUtf8ToUtf16(benchmark::State& state) {
  const std::string& page = utf8Page();
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open("UTF-8", &status);
  std::u16string units(page.size() + 1, u'\0');
  for (auto _ : state) {
    status = U_ZERO_ERROR;
    int32_t length = ucnv_toUChars(converter, units.data(), static_cast<int32_t>(units.size()), page.data(),
                                   static_cast<int32_t>(page.size()), &status);
    benchmark::DoNotOptimize(length);
  }
  ucnv_close(converter);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * page.size()));
}
BENCHMARK(BM_IcuUtf8ToUtf16);

void BM_MarkupDecoderCyrillicTwoPasses(benchmark::State& state) {
  const std::string& page = cyrillicPage();
  for (auto _ : state) {
    String text = markup::stringWithMarkupData(page, NSUTF8StringEncoding);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * page.size()));
}
BENCHMARK(BM_MarkupDecoderCyrillicTwoPasses);

void BM_IcuWindows1251ToUtf16(benchmark::State& state) {
  const std::string& page = cyrillicPage();
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open("windows-1251", &status);
  std::u16string units(page.size() + 1, u'\0');
  for (auto _ : state) {
    status = U_ZERO_ERROR;
    int32_t length = ucnv_toUChars(converter, units.data(), static_cast<int32_t>(units.size()), page.data(),
                                   static_cast<int32_t>(page.size()), &status);
    benchmark::DoNotOptimize(length);
  }
  ucnv_close(converter);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * page.size()));
}
BENCHMARK(BM_IcuWindows1251ToUtf16);

}  // namespace

BENCHMARK_MAIN();
