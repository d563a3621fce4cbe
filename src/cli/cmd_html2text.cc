// norvane html2text: a page's searchable text; norvane error-page: whether a
// page is an error or rate-limit page.
#include <nlohmann/json.hpp>
#include <string>

#include "command.h"
#include "norvane/markup/decoding.h"
#include "norvane/markup/entities.h"
#include "norvane/markup/error_pages.h"
#include "norvane/markup/plain_text.h"
#include "norvane/text/strings.h"

namespace norvane::cli {
namespace {

// Reads and decodes markup from a file or standard input.
String readMarkup(const std::string& path, std::string* error) {
  if (path != "-") {
    String html = markup::stringWithMarkupContentsOfFile(path, text::NSUTF8StringEncoding);
    if (html.isNull()) *error = "cannot read " + path;
    return html;
  }
  std::optional<std::string> bytes = readInput(path, error);
  if (!bytes) return String();
  String html = markup::stringWithMarkupData(*bytes, text::NSUTF8StringEncoding);
  if (html.isNull()) *error = "cannot decode standard input";
  return html;
}

int runHtml2Text(const Invocation& in) {
  std::string error;
  String html = readMarkup(in.positionals.front(), &error);
  if (html.isNull()) return fail(error);
  bool removeJunk = in.has("remove-junk");
  bool didRemoveJunk = false;
  String plain = markup::stringByConvertingHtml2PlainTextNonUmlauted(
      html, in.has("fold-diacritics"), in.has("reformat"), in.has("body"), removeJunk, &didRemoveJunk,
      in.has("google-tags"), !in.has("no-image-alts"));
  if (in.json) {
    nlohmann::json result = {{"file", in.positionals.front()}, {"text", plain.toUtf8()}};
    if (removeJunk) result["removedJunk"] = didRemoveJunk;
    return writeOutput(in, result.dump() + "\n") ? kSuccess : kFailure;
  }
  std::string out = plain.toUtf8();
  if (!out.empty() && out.back() != '\n') out.push_back('\n');
  return writeOutput(in, out) ? kSuccess : kFailure;
}

const Registration kHtml2Text{{
    .name = "html2text",
    .summary = "convert HTML to the plain text that is indexed",
    .usage = "norvane html2text [--reformat] [--body] [--google-tags] [--fold-diacritics] [-o FILE] FILE|-",
    .options = {{"reformat", 'r', false, "rejoin hard-wrapped lines inside pre, code and plaintext"},
                {"body", 'b', false, "only the body (the whole page when it has none)"},
                {"google-tags", 'g', false, "obey googleoff:/googleon: crawl comments"},
                {"fold-diacritics", 0, false, "remove diacritics (\u00e9 becomes e)"},
                {"remove-junk", 0, false, "drop invisible and overlong text"},
                {"no-image-alts", 0, false, "leave out the alternative texts of images"},
                {"output", 'o', true, "write to FILE instead of stdout"}},
    .minPositionals = 1,
    .maxPositionals = 1,
    .run = runHtml2Text,
    .details = "The bytes are decoded by their byte-order mark, their declared charset or UTF-8.",
}};

// The <title> of a page, entities converted; null when there is none.
String pageTitle(const String& html) {
  String title;
  size_t titleEnd = NotFound;
  markup::GetTagsOfString(html, [&](unichar* characters, size_t nameLocation, size_t nameLength, size_t tagLocation,
                                    size_t tagLength, size_t previousTagEnd, unsigned) {
    if (nameLength != 5) return false;
    for (size_t i = 0; i < 5; ++i) {
      if ((characters[nameLocation + i] | 32) != u"title"[i]) return false;
    }
    if (characters[tagLocation + 1] != u'/') {
      titleEnd = tagLocation + tagLength;
      return false;
    }
    if (titleEnd != NotFound && previousTagEnd == titleEnd) {
      title = markup::stringByConvertingEntitiesToCharacters(String(characters + titleEnd, tagLocation - titleEnd));
    }
    return true;
  });
  return title;
}

int runErrorPage(const Invocation& in) {
  std::string error;
  String html = readMarkup(in.positionals.front(), &error);
  if (html.isNull()) return fail(error);
  String title = pageTitle(html);
  String plain = markup::stringByConvertingHtml2PlainTextNonUmlauted(html, false, false, true, false);
  String text = text::stringByTrimmingWhiteSpaces(plain);
  String url = in.value("url") ? String::fromUtf8(*in.value("url")) : String();

  const char* kind = "none";
  if (markup::exceededPageLoadFrequencyTitle(title, text)) {
    kind = "rate-limit";
  } else if (markup::isErrorPageTitle(title, text, url)) {
    kind = "error";
  }
  if (in.json) {
    nlohmann::json result = {{"file", in.positionals.front()},
                             {"kind", kind},
                             {"title", title.isNull() ? nlohmann::json() : nlohmann::json(title.toUtf8())}};
    return writeOutput(in, result.dump() + "\n") ? kSuccess : kFailure;
  }
  std::string line = std::string(kind) == "none" ? "not an error page" : std::string(kind) + " page";
  return writeOutput(in, in.positionals.front() + ": " + line + "\n") ? kSuccess : kFailure;
}

const Registration kErrorPage{{
    .name = "error-page",
    .summary = "tell whether a page is an error or rate-limit page",
    .usage = "norvane error-page [--url URL] [--json] FILE|-",
    .options = {{"url", 'u', true, "the address the page was fetched from"}},
    .minPositionals = 1,
    .maxPositionals = 1,
    .run = runErrorPage,
    .details = "Prints \"error page\", \"rate-limit page\" or \"not an error page\" (--json: kind error,\n"
               "rate-limit or none). The exit status is 0 in all three cases; 1 only when the file\n"
               "cannot be read.",
}};

}  // namespace
}  // namespace norvane::cli
