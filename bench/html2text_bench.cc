// Throughput of HTML to plain text on the Python 3.11 documentation, against
// libxml2's HTML parser collecting the text of the same pages (as a tree
// walk and through SAX).
//
// Pages are read and decoded to UTF-16 once, outside the timing, by the same
// decoder the command uses. Every benchmark reports "units/s": UTF-16 code
// units of the corpus per second of CPU time (the machine is shared, so CPU
// time is the comparable figure), so libxml2, which reads the UTF-8 bytes,
// is measured against the same text. "out/in" is the share of units that
// reach the output.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "norvane/markup/decoding.h"
#include "norvane/markup/plain_text.h"
#include "python_docs.h"

#if NORVANE_HAVE_LIBXML2
#include <libxml/HTMLparser.h>
#include <libxml/tree.h>
#endif

namespace {

using norvane::String;
namespace markup = norvane::markup;

struct Corpus {
  std::vector<std::string> bytes;
  std::vector<String> pages;
  size_t totalUnits = 0;
  size_t totalBytes = 0;
};

const Corpus& corpus() {
  static const Corpus loaded = [] {
    Corpus c;
    for (std::string& bytes : readPythonDocPages()) {
      String page = markup::stringWithMarkupData(bytes, norvane::text::NSUTF8StringEncoding);
      if (page.isEmpty()) continue;
      c.totalUnits += page.length();
      c.totalBytes += bytes.size();
      c.bytes.push_back(std::move(bytes));
      c.pages.push_back(page);
    }
    return c;
  }();
  return loaded;
}

bool prepare(benchmark::State& state) {
  if (corpus().pages.empty()) {
    state.SkipWithError("python3.11-doc is not installed");
    return false;
  }
  return true;
}

void report(benchmark::State& state, size_t outputUnits) {
  state.counters["units/s"] =
      benchmark::Counter(static_cast<double>(corpus().totalUnits), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["pages"] = static_cast<double>(corpus().pages.size());
  state.counters["out/in"] = static_cast<double>(outputUnits) / static_cast<double>(corpus().totalUnits);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * corpus().totalBytes));
}

// Runs `convert` over every page and reports the rates.
template <typename Convert>
void convertCorpus(benchmark::State& state, Convert convert) {
  if (!prepare(state)) return;
  size_t outputUnits = 0;
  for (auto _ : state) {
    outputUnits = 0;
    for (const String& page : corpus().pages) {
      String text = convert(page);
      outputUnits += text.length();
      benchmark::DoNotOptimize(text.data());
    }
  }
  report(state, outputUnits);
}

void BM_Html2PlainText(benchmark::State& state) {
  convertCorpus(state, [](const String& page) { return markup::stringByConvertingHtml2PlainText(page); });
}
BENCHMARK(BM_Html2PlainText)->Unit(benchmark::kMillisecond);

// What `norvane html2text --body` runs.
void BM_Html2PlainTextBody(benchmark::State& state) {
  convertCorpus(state, [](const String& page) {
    return markup::stringByConvertingHtml2PlainTextNonUmlauted(page, false, false, true, false);
  });
}
BENCHMARK(BM_Html2PlainTextBody)->Unit(benchmark::kMillisecond);

// Diacritics folded, pre text reformatted, junk removed, crawl comments obeyed.
void BM_Html2PlainTextAllOptions(benchmark::State& state) {
  convertCorpus(state, [](const String& page) {
    bool didRemoveJunk = false;
    return markup::stringByConvertingHtml2PlainTextNonUmlauted(page, true, true, true, true, &didRemoveJunk, true,
                                                               true);
  });
}
BENCHMARK(BM_Html2PlainTextAllOptions)->Unit(benchmark::kMillisecond);

void BM_Html2SimplifiedPlainText(benchmark::State& state) {
  convertCorpus(state, [](const String& page) { return markup::stringByConvertingHtml2SimplifiedPlainText(page); });
}
BENCHMARK(BM_Html2SimplifiedPlainText)->Unit(benchmark::kMillisecond);

void BM_StripTags(benchmark::State& state) {
  convertCorpus(state, [](const String& page) { return markup::stripTags(page); });
}
BENCHMARK(BM_StripTags)->Unit(benchmark::kMillisecond);

// The whole path of the command from bytes: decoding, then the conversion.
void BM_DecodeAndHtml2PlainText(benchmark::State& state) {
  if (!prepare(state)) return;
  size_t outputUnits = 0;
  for (auto _ : state) {
    outputUnits = 0;
    for (const std::string& bytes : corpus().bytes) {
      String page = markup::stringWithMarkupData(bytes, norvane::text::NSUTF8StringEncoding);
      String text = markup::stringByConvertingHtml2PlainTextNonUmlauted(page, false, false, true, false);
      outputUnits += text.length();
      benchmark::DoNotOptimize(text.data());
    }
  }
  report(state, outputUnits);
}
BENCHMARK(BM_DecodeAndHtml2PlainText)->Unit(benchmark::kMillisecond);

#if NORVANE_HAVE_LIBXML2
constexpr int kLibxml2Options = HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_RECOVER | HTML_PARSE_NONET;

// Appends the text nodes under `node` in document order, skipping script and
// style as a text converter must.
void collectText(xmlNode* node, std::string& out) {
  for (; node != nullptr; node = node->next) {
    if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
      if (node->content != nullptr) out += reinterpret_cast<const char*>(node->content);
    } else if (node->type == XML_ELEMENT_NODE) {
      const char* name = reinterpret_cast<const char*>(node->name);
      if (std::strcmp(name, "script") == 0 || std::strcmp(name, "style") == 0) continue;
      collectText(node->children, out);
    }
  }
}

void BM_Libxml2TreeText(benchmark::State& state) {
  if (!prepare(state)) return;
  size_t outputBytes = 0;
  std::string text;
  for (auto _ : state) {
    outputBytes = 0;
    for (const std::string& page : corpus().bytes) {
      htmlDocPtr document =
          htmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, "UTF-8", kLibxml2Options);
      text.clear();
      if (document != nullptr) collectText(xmlDocGetRootElement(document), text);
      outputBytes += text.size();
      benchmark::DoNotOptimize(text.data());
      xmlFreeDoc(document);
    }
  }
  // libxml2 gives UTF-8; the ratio is in bytes here.
  report(state, outputBytes);
}
BENCHMARK(BM_Libxml2TreeText)->Unit(benchmark::kMillisecond);

struct SaxText {
  std::string text;
  int skipDepth = 0;  // inside script or style
};

bool isSkipped(const xmlChar* name) {
  const char* n = reinterpret_cast<const char*>(name);
  return std::strcmp(n, "script") == 0 || std::strcmp(n, "style") == 0;
}

void saxStart(void* context, const xmlChar* name, const xmlChar**) {
  if (isSkipped(name)) ++static_cast<SaxText*>(context)->skipDepth;
}
void saxEnd(void* context, const xmlChar* name) {
  SaxText* sax = static_cast<SaxText*>(context);
  if (isSkipped(name) && sax->skipDepth > 0) --sax->skipDepth;
}
void saxCharacters(void* context, const xmlChar* characters, int length) {
  SaxText* sax = static_cast<SaxText*>(context);
  if (sax->skipDepth == 0) sax->text.append(reinterpret_cast<const char*>(characters), static_cast<size_t>(length));
}

void BM_Libxml2SaxText(benchmark::State& state) {
  if (!prepare(state)) return;
  htmlSAXHandler handler{};
  handler.startElement = saxStart;
  handler.endElement = saxEnd;
  handler.characters = saxCharacters;
  handler.ignorableWhitespace = saxCharacters;
  handler.cdataBlock = saxCharacters;
  size_t outputBytes = 0;
  SaxText sax;
  for (auto _ : state) {
    outputBytes = 0;
    for (const std::string& page : corpus().bytes) {
      sax.text.clear();
      sax.skipDepth = 0;
      htmlParserCtxtPtr context = htmlCreatePushParserCtxt(&handler, &sax, nullptr, 0, nullptr, XML_CHAR_ENCODING_UTF8);
      if (context == nullptr) continue;
      htmlCtxtUseOptions(context, kLibxml2Options);
      htmlParseChunk(context, page.data(), static_cast<int>(page.size()), 1);
      htmlFreeParserCtxt(context);
      outputBytes += sax.text.size();
      benchmark::DoNotOptimize(sax.text.data());
    }
  }
  report(state, outputBytes);
}
BENCHMARK(BM_Libxml2SaxText)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
