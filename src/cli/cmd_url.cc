// norvane url: normal forms and classification of URLs given as arguments
// or, one a line, on standard input.
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "command.h"
#include "norvane/urls/classification.h"
#include "norvane/urls/normal_forms.h"
#include "norvane/urls/url_object.h"

namespace norvane::cli {
namespace {

using namespace norvane::urls;

// The URLs of the invocation: the arguments behind the action, or the lines
// of standard input when there are none or the only one is "-".
std::optional<std::vector<std::string>> inputURLs(const Invocation& in, std::string* error) {
  std::vector<std::string> urls(in.positionals.begin() + 1, in.positionals.end());
  if (!urls.empty() && !(urls.size() == 1 && urls[0] == "-")) return urls;
  std::optional<std::string> text = readInput("-", error);
  if (!text) return std::nullopt;
  urls.clear();
  size_t start = 0;
  while (start < text->size()) {
    size_t end = text->find('\n', start);
    if (end == std::string::npos) end = text->size();
    std::string line = text->substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) urls.push_back(std::move(line));
    start = end + 1;
  }
  return urls;
}

// The kinds a URL is of, in a fixed order.
std::vector<std::string> kindsOf(const String& url) {
  const std::pair<const char*, bool (*)(const String&)> kKinds[] = {{"advertisement", stringURLIsAdvertisement},
                                                                    {"image-ad", stringURLIsImageAd},
                                                                    {"text-ad", stringURLIsAdSense},
                                                                    {"share", stringURLIsBookmarklet},
                                                                    {"captcha", stringURLIsRecaptcha},
                                                                    {"translation", stringURLIsTranslation},
                                                                    {"topic", stringURLIsTopicOrThread},
                                                                    {"forum", stringURLIsForum},
                                                                    {"cached", stringURLIsCached},
                                                                    {"mail", isMailStringURL},
                                                                    {"http", isHTTPStringURL},
                                                                    {"ftp", isFTPStringURL},
                                                                    {"news", isNewsStringURL},
                                                                    {"feed", isFeedStringURL},
                                                                    {"file", isFileStringURL},
                                                                    {"data", isDataStringURL},
                                                                    {"about", isAboutStringURL},
                                                                    {"javascript", isJavaScriptStringURL},
                                                                    {"web", isWebKitStringURL},
                                                                    {"remote", isRemoteWebKitStringURL},
                                                                    {"downloadable", isDownloadableStringURL}};
  std::vector<std::string> kinds;
  for (auto [name, predicate] : kKinds) {
    if (predicate(url)) kinds.emplace_back(name);
  }
  if (isSearchEngine(Url{url})) kinds.emplace_back("search-engine");
  String extension = stringURLPathExtension(url);
  const std::pair<const char*, bool (*)(const String&)> kFileKinds[] = {
      {"image-file", isImageType},          {"markup-file", isMarkupType}, {"multimedia-file", isMultimediaType},
      {"archive-file", isArchiveType},      {"office-file", isOfficeType}, {"rich-text-file", isRichTextType},
      {"executable-file", isExecutableType}};
  for (auto [name, predicate] : kFileKinds) {
    if (predicate(extension)) kinds.emplace_back(name);
  }
  return kinds;
}

String transform(const std::string& action, const String& url) {
  if (action == "simplify") return simplifiedStringURL(url);
  if (action == "clean") return stringByFormattingURL(url);
  return standardizedStringURL(stringByReplacingStandardPercentEscapesOfURL(url));
}

int runUrl(const Invocation& in) {
  const std::string& action = in.positionals.front();
  if (action != "normalize" && action != "simplify" && action != "clean" && action != "classify") {
    return usageError(in, "unknown action: " + action);
  }
  std::string error;
  std::optional<std::vector<std::string>> urls = inputURLs(in, &error);
  if (!urls) return fail(error);

  std::string out;
  nlohmann::json results = nlohmann::json::array();
  for (const std::string& text : *urls) {
    String url = String::fromUtf8(text);
    if (action == "classify") {
      std::vector<std::string> kinds = kindsOf(url);
      String extension = stringURLPathExtension(url);
      if (in.json) {
        results.push_back({{"url", text},
                           {"kinds", kinds},
                           {"extension", extension.isNull() ? nlohmann::json() : nlohmann::json(extension.toUtf8())}});
      } else {
        out += text + "\t";
        for (size_t i = 0; i < kinds.size(); ++i) out += (i ? "," : "") + kinds[i];
        out += "\n";
      }
      continue;
    }
    std::string result = transform(action, url).toUtf8();
    if (in.json) {
      results.push_back({{"url", text}, {"result", result}});
    } else {
      out += result + "\n";
    }
  }
  if (in.json) out = results.dump() + "\n";
  return writeOutput(in, out) ? kSuccess : kFailure;
}

const Registration kUrl{{
    .name = "url",
    .summary = "normalize, simplify, clean or classify URLs",
    .usage = "norvane url normalize|simplify|clean|classify [--json] [-o FILE] [URL...|-]",
    .options = {{"output", 'o', true, "write to FILE instead of stdout"}},
    .minPositionals = 1,
    .run = runUrl,
    .details = "normalize  standard percent escapes undone, duplicate slashes and final dot segments removed\n"
               "simplify   the comparison key: also no anchor, session ids, tracking or empty parameters,\n"
               "           index pages, \"www.\" or https, and lower case\n"
               "clean      a pasted address trimmed and unwrapped from <...>\n"
               "classify   the kinds of each URL, tab-separated, comma-joined\n"
               "Without URL arguments, or with \"-\", URLs are read one a line from standard input.\n"
               "With --json the output is an array of objects with \"url\" and \"result\" (or \"kinds\"\n"
               "and \"extension\" for classify).",
}};

}  // namespace
}  // namespace norvane::cli
