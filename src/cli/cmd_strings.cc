// norvane strings: everyday text operations on files or standard input.
#include <charconv>
#include <nlohmann/json.hpp>
#include <string>

#include "command.h"
#include "norvane/text/mutable_strings.h"
#include "norvane/text/strings.h"
#include "norvane/text/summarize.h"
#include "norvane/text/versions.h"

namespace norvane::cli {
namespace {

// Reads FILE (or "-") and decodes it, detecting the encoding.
std::optional<String> readText(const std::string& path) {
  std::string error;
  std::optional<std::string> bytes = readInput(path, &error);
  if (!bytes) {
    fail(error);
    return std::nullopt;
  }
  return text::stringByDetectingEncoding(*bytes);
}

std::optional<long> numberOption(const Invocation& in, std::string_view name, long fallback) {
  std::optional<std::string> value = in.value(name);
  if (!value) return fallback;
  long number = 0;
  auto [end, error] = std::from_chars(value->data(), value->data() + value->size(), number);
  if (error != std::errc() || end != value->data() + value->size() || number < 1) return std::nullopt;
  return number;
}

// Runs `transform` over the text of each input and writes the results.
template <typename Transform>
int transformInputs(const Invocation& in, const std::vector<std::string>& paths, Transform transform) {
  std::string out;
  nlohmann::json results = nlohmann::json::array();
  for (const std::string& path : paths) {
    std::optional<String> input = readText(path);
    if (!input) return kFailure;
    std::string result = transform(*input).toUtf8();
    if (in.json) {
      results.push_back({{"file", path}, {"text", result}});
    } else {
      out += result;
    }
  }
  if (in.json) out = results.dump() + "\n";
  return writeOutput(in, out) ? kSuccess : kFailure;
}

int runLines(const Invocation& in, const std::vector<std::string>& paths) {
  std::string out;
  nlohmann::json results = nlohmann::json::array();
  for (const std::string& path : paths) {
    std::optional<String> input = readText(path);
    if (!input) return kFailure;
    size_t count = text::numberOfLines(*input);
    if (in.json) {
      results.push_back({{"file", path}, {"lines", count}});
    } else {
      out += paths.size() > 1 ? fmt::format("{}\t{}\n", count, path) : fmt::format("{}\n", count);
    }
  }
  if (in.json) out = results.dump() + "\n";
  return writeOutput(in, out) ? kSuccess : kFailure;
}

String trimLines(const String& s) {
  std::u16string out;
  for (const String& line : text::lines(s)) {
    String feed = text::feedOfLine(line);
    String body = text::stringByTrimmingSpacesAndFeeds(line, true);
    out.append(body.view());
    out.append(feed.view());
  }
  return String::fromU16(std::move(out));
}

int runTabs(const Invocation& in, const std::vector<std::string>& paths, bool expand) {
  std::optional<long> width = numberOption(in, "tab-width", 8);
  if (!width) return usageError(in, "--tab-width takes a positive number");
  return transformInputs(in, paths, [&](const String& s) {
    std::u16string units = s.toU16();
    expand ? text::decodeTabs(units, *width) : text::encodeTabs(units, *width);
    return String::fromU16(std::move(units));
  });
}

int runVersionCompare(const Invocation& in, const std::vector<std::string>& args) {
  if (args.size() != 2) return usageError(in, "version-compare takes two version numbers");
  int result = text::compareToVersionNumber(String::fromUtf8(args[0]), String::fromUtf8(args[1]));
  std::string out = in.json ? nlohmann::json{{"a", args[0]}, {"b", args[1]}, {"result", result}}.dump() + "\n"
                            : fmt::format("{}\n", result);
  return writeOutput(in, out) ? kSuccess : kFailure;
}

int runSummary(const Invocation& in, const std::vector<std::string>& paths) {
  if (paths.size() != 1) return usageError(in, "summary takes one FILE or -");
  std::optional<long> count = numberOption(in, "count", 3);
  if (!count) return usageError(in, "--count takes a positive number");
  std::optional<String> input = readText(paths[0]);
  if (!input) return kFailure;
  bool paragraphs = in.has("paragraphs");
  String summary =
      paragraphs ? text::summarizeInParagraphs(*input, *count) : text::summarizeInSentences(*input, *count);
  if (summary.isNull()) return fail(paths[0] + ": nothing to summarize");
  std::string out = in.json ? nlohmann::json{{"file", paths[0]}, {"summary", summary.toUtf8()}}.dump() + "\n"
                            : summary.toUtf8() + "\n";
  return writeOutput(in, out) ? kSuccess : kFailure;
}

int runConfig(const Invocation& in, const std::vector<std::string>& args) {
  if (args.size() != 2) return usageError(in, "config takes KEY and one FILE or -");
  std::optional<String> input = readText(args[1]);
  if (!input) return kFailure;
  String key = String::fromUtf8(args[0]);
  for (const String& line : text::configLines(*input)) {
    String value = text::configValueForKey(line, key);
    if (value.isNull()) continue;
    std::string out =
        in.json ? nlohmann::json{{"key", args[0]}, {"value", value.toUtf8()}}.dump() + "\n" : value.toUtf8() + "\n";
    return writeOutput(in, out) ? kSuccess : kFailure;
  }
  return fail(args[1] + ": no value for " + args[0]);
}

int runStrings(const Invocation& in) {
  const std::string& action = in.positionals[0];
  std::vector<std::string> args(in.positionals.begin() + 1, in.positionals.end());
  if (action == "version-compare") return runVersionCompare(in, args);
  if (action == "config") return runConfig(in, args);
  if (args.empty()) args.push_back("-");
  if (action == "lines") return runLines(in, args);
  if (action == "summary") return runSummary(in, args);
  if (action == "expand-tabs") return runTabs(in, args, true);
  if (action == "unexpand-tabs") return runTabs(in, args, false);
  if (action == "trim") return transformInputs(in, args, trimLines);
  if (action == "reflow") return transformInputs(in, args, text::reformattedMailing);
  if (action == "collapse") {
    if (in.has("white")) return transformInputs(in, args, text::stringByRemovingMultipleWhiteSpaces);
    if (in.has("feeds")) return transformInputs(in, args, text::stringByRemovingMultipleFeeds);
    return transformInputs(in, args, text::stringByRemovingMultipleSpaces);
  }
  return usageError(in, "unknown action '" + action + "'");
}

const Registration kStrings{{
    .name = "strings",
    .summary = "everyday text operations: lines, trimming, collapsing, versions, summaries",
    .usage = "norvane strings lines [FILE|-]...\n"
             "       norvane strings trim|reflow [FILE|-]...\n"
             "       norvane strings collapse [--white|--feeds] [FILE|-]...\n"
             "       norvane strings expand-tabs|unexpand-tabs [--tab-width N] [FILE|-]...\n"
             "       norvane strings version-compare A B\n"
             "       norvane strings summary [-n N] [--paragraphs] FILE|-\n"
             "       norvane strings config KEY FILE|-",
    .options = {{"output", 'o', true, "write to FILE instead of stdout"},
                {"white", 0, false, "collapse: runs of any white space, line ends included, become one blank"},
                {"feeds", 0, false, "collapse: runs of line ends become one line feed"},
                {"tab-width", 0, true, "tab stops every N columns (default 8)"},
                {"count", 'n', true, "summary: at most N sentences or paragraphs (default 3)"},
                {"paragraphs", 0, false, "summary: pick paragraphs (non-blank lines) instead of sentences"}},
    .minPositionals = 1,
    .run = runStrings,
    .details = "Actions:\n"
               "  lines            count lines; CR LF is one line end, and so are U+2028, U+2029,\n"
               "                   form feed and end-of-text\n"
               "  trim             trim white space at both ends of every line\n"
               "  collapse         replace each run of blanks and tabs by one blank\n"
               "  reflow           undo the hard wrapping of mail text\n"
               "  expand-tabs      replace tabs by blanks up to the next tab stop\n"
               "  unexpand-tabs    replace runs of blanks that reach a tab stop by tabs\n"
               "  version-compare  print -1, 0 or 1 as A is older than, equal to or newer than B\n"
               "                   (1.0 > 1.0rc1 > 1.0beta1 > 1.0build1 > 1.0alpha1)\n"
               "  summary          the most representative sentences, in their order\n"
               "  config           the value of KEY in a file of \"key value\" lines ('#' comments)\n"
               "Input encoding is detected: byte-order mark, else UTF-8, else ASCII.",
}};

}  // namespace
}  // namespace norvane::cli
