// Throughput of the tag scanner on the Python 3.11 documentation, against
// a unit-by-unit loop over the same rules and against libxml2's HTML push
// parser (SAX, no tree) and gumbo on the same pages.
//
// Pages are read and converted to UTF-16 once, outside the timing. Every
// benchmark reports "units/s": UTF-16 code units of the corpus per second,
// so the peers, which read the UTF-8 bytes, are measured against the same
// text.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "norvane/core/unicode.h"
#include "norvane/markup/tag_scanner.h"
#include "python_docs.h"

#if NORVANE_HAVE_LIBXML2
#include <libxml/HTMLparser.h>
#endif
#if NORVANE_HAVE_GUMBO
#include <gumbo.h>
#endif

namespace {

using norvane::String;
using norvane::unichar;

struct Corpus {
  std::vector<std::string> bytes;
  std::vector<std::u16string> units;
  std::vector<String> strings;
  size_t totalUnits = 0;
  size_t totalBytes = 0;
};

const Corpus& corpus() {
  static const Corpus loaded = [] {
    Corpus c;
    for (std::string& bytes : readPythonDocPages()) {
      c.units.push_back(norvane::utf8ToUtf16(bytes));
      c.strings.push_back(String(c.units.back()));
      c.totalUnits += c.units.back().size();
      c.totalBytes += bytes.size();
      c.bytes.push_back(std::move(bytes));
    }
    return c;
  }();
  return loaded;
}

bool prepare(benchmark::State& state) {
  if (corpus().units.empty()) {
    state.SkipWithError("python3.11-doc is not installed");
    return false;
  }
  return true;
}

void report(benchmark::State& state) {
  state.counters["units/s"] =
      benchmark::Counter(static_cast<double>(corpus().totalUnits), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["pages"] = static_cast<double>(corpus().units.size());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * corpus().totalBytes));
}

// The scanner with a handler that does nothing.
void BM_ScanTags(benchmark::State& state) {
  if (!prepare(state)) return;
  for (auto _ : state) {
    size_t calls = 0;
    for (const std::u16string& page : corpus().units) {
      norvane::markup::scanTags(page.data(), page.size(),
                                [&](const unichar*, size_t, size_t, size_t, size_t, size_t, unsigned) {
                                  ++calls;
                                  return false;
                                });
    }
    benchmark::DoNotOptimize(calls);
  }
  report(state);
}
BENCHMARK(BM_ScanTags)->Unit(benchmark::kMillisecond);

// The string form with a function handler, as the library's handlers run.
bool CountingHandler(const String&, unichar*, size_t, size_t, size_t, size_t, size_t, unsigned, void* context) {
  ++*static_cast<size_t*>(context);
  return false;
}

void BM_GetTagsOfStringFunctionHandler(benchmark::State& state) {
  if (!prepare(state)) return;
  for (auto _ : state) {
    size_t calls = 0;
    for (const String& page : corpus().strings) norvane::markup::GetTagsOfString(page, CountingHandler, &calls);
    benchmark::DoNotOptimize(calls);
  }
  report(state);
}
BENCHMARK(BM_GetTagsOfStringFunctionHandler)->Unit(benchmark::kMillisecond);

// The same rules read one unit at a time with a switch: what the vector
// searches are measured against.
size_t scanUnitByUnit(const unichar* s, size_t n) {
  size_t calls = 0;
  int mode = 0;
  bool valueExpected = false, inDouble = false, inSingle = false, shortComment = false;
  for (size_t i = 0; i < n; ++i) {
    switch (s[i]) {
      case '<':
        if (mode != 0) break;
        mode = 1;
        if (i + 2 < n && s[i + 1] == '!' && (s[i + 2] == '[' || s[i + 2] == '-')) {
          mode = s[i + 2] == '[' ? 3 : 2;
          shortComment = mode == 2 && (i + 3 >= n || s[i + 3] != '-');
          i += 2;
        }
        break;
      case '=':
        if (mode == 1 && !inDouble && !inSingle) valueExpected = true;
        break;
      case '"':
        if (mode == 1) inDouble = valueExpected ? (valueExpected = false, true) : false;
        break;
      case '\'':
        if (mode == 1) inSingle = valueExpected ? (valueExpected = false, true) : false;
        break;
      case '>': {
        bool ends = false;
        if (mode == 1) {
          ends = !inDouble && !inSingle;
        } else if (mode == 2) {
          ends = shortComment
                     ? s[i - 1] == '-'
                     : (s[i - 1] == '-' && s[i - 2] == '-') || (s[i - 1] == '!' && s[i - 2] == '-' && s[i - 3] == '-');
        } else if (mode == 3) {
          ends = s[i - 1] == ']' || (s[i - 1] == '-' && s[i - 2] == '-' && s[i - 3] == ']');
        }
        if (ends) {
          ++calls;
          mode = 0;
          valueExpected = inDouble = inSingle = false;
        }
        break;
      }
      default:
        break;
    }
  }
  return calls + 1;
}

void BM_UnitByUnitLoop(benchmark::State& state) {
  if (!prepare(state)) return;
  for (auto _ : state) {
    size_t calls = 0;
    for (const std::u16string& page : corpus().units) calls += scanUnitByUnit(page.data(), page.size());
    benchmark::DoNotOptimize(calls);
  }
  report(state);
}
BENCHMARK(BM_UnitByUnitLoop)->Unit(benchmark::kMillisecond);

#if NORVANE_HAVE_LIBXML2
void ignoreStartElement(void*, const xmlChar*, const xmlChar**) {}
void ignoreEndElement(void*, const xmlChar*) {}
void ignoreCharacters(void*, const xmlChar*, int) {}
void ignoreComment(void*, const xmlChar*) {}

void BM_Libxml2HtmlPushSax(benchmark::State& state) {
  if (!prepare(state)) return;
  htmlSAXHandler sax{};
  sax.startElement = ignoreStartElement;
  sax.endElement = ignoreEndElement;
  sax.characters = ignoreCharacters;
  sax.ignorableWhitespace = ignoreCharacters;
  sax.comment = ignoreComment;
  sax.cdataBlock = ignoreCharacters;
  for (auto _ : state) {
    for (const std::string& page : corpus().bytes) {
      htmlParserCtxtPtr context = htmlCreatePushParserCtxt(&sax, nullptr, nullptr, 0, nullptr, XML_CHAR_ENCODING_UTF8);
      htmlCtxtUseOptions(context, HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
      htmlParseChunk(context, page.data(), static_cast<int>(page.size()), 0);
      htmlParseChunk(context, nullptr, 0, 1);
      htmlFreeParserCtxt(context);
    }
  }
  report(state);
}
BENCHMARK(BM_Libxml2HtmlPushSax)->Unit(benchmark::kMillisecond);
#endif

#if NORVANE_HAVE_GUMBO
void BM_Gumbo(benchmark::State& state) {
  if (!prepare(state)) return;
  for (auto _ : state) {
    for (const std::string& page : corpus().bytes) {
      GumboOutput* output = gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size());
      benchmark::DoNotOptimize(output->root);
      gumbo_destroy_output(&kGumboDefaultOptions, output);
    }
  }
  report(state);
}
BENCHMARK(BM_Gumbo)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
