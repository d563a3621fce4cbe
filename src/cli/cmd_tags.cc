// norvane tags: what the tag scanner sees in a page, one line per call.
#include <nlohmann/json.hpp>
#include <string>

#include "command.h"
#include "norvane/core/unicode.h"
#include "norvane/markup/decoding.h"
#include "norvane/markup/tag_scanner.h"

namespace norvane::cli {
namespace {

const char* kindName(unsigned kind) {
  switch (kind) {
    case markup::kTagKindTag:
      return "tag";
    case markup::kTagKindComment:
      return "comment";
    case markup::kTagKindMarkedSection:
      return "section";
    default:
      return "end";
  }
}

// The tag's text on one line: line ends and tabs as escapes, cut at `limit`
// units.
std::string oneLine(const unichar* units, size_t length, size_t limit) {
  std::u16string shown;
  for (size_t k = 0; k < length && k < limit; ++k) {
    const unichar c = units[k];
    if (c == '\n') {
      shown += u"\\n";
    } else if (c == '\r') {
      shown += u"\\r";
    } else if (c == '\t') {
      shown += u"\\t";
    } else {
      shown += c;
    }
  }
  std::string text = utf16ToUtf8(shown);
  if (length > limit) text += "...";
  return text;
}

int runTags(const Invocation& in) {
  const std::string& path = in.positionals.front();
  std::string error;
  std::optional<std::string> bytes = readInput(path, &error);
  if (!bytes) return fail(error);
  const String text = markup::stringWithMarkupData(*bytes, text::NSUTF8StringEncoding);
  if (text.isNull()) return fail("cannot decode " + path);

  std::string out;
  nlohmann::json calls = nlohmann::json::array();
  markup::GetTagsOfString(text, [&](unichar* c, size_t nameLocation, size_t nameLength, size_t tagLocation,
                                    size_t tagLength, size_t previousTagEnd, unsigned kind) {
    const bool named = nameLocation != NotFound;
    const std::string name = named ? utf16ToUtf8(std::u16string_view(c + nameLocation, nameLength)) : "";
    if (in.json) {
      nlohmann::json call = {
          {"kind", kind},
          {"kindName", kindName(kind)},
          {"name", named ? nlohmann::json(name) : nlohmann::json(nullptr)},
          {"tag", {tagLocation, tagLength}},
          {"nameRange", named ? nlohmann::json({nameLocation, nameLength}) : nlohmann::json(nullptr)},
          {"previousTagEnd", previousTagEnd},
          {"text", utf16ToUtf8(std::u16string_view(c + tagLocation, tagLength))}};
      calls.push_back(std::move(call));
    } else {
      out += std::to_string(kind) + " " + kindName(kind) + " " + (named ? name : "-") + " {" +
             std::to_string(tagLocation) + ", " + std::to_string(tagLength) + "} ";
      out += named ? "{" + std::to_string(nameLocation) + ", " + std::to_string(nameLength) + "}" : "-";
      out += " " + std::to_string(previousTagEnd);
      if (kind != markup::kTagKindEnd) out += " " + oneLine(c + tagLocation, tagLength, 80);
      out += '\n';
    }
    return false;
  });
  if (in.json) out = calls.dump() + "\n";
  return writeOutput(in, out) ? kSuccess : kFailure;
}

const Registration kTags{{
    .name = "tags",
    .summary = "list the tags, comments and sections the tag scanner reports",
    .usage = "norvane tags [--json] [-o FILE] FILE|-",
    .options = {{"output", 'o', true, "write to FILE instead of stdout"}},
    .minPositionals = 1,
    .maxPositionals = 1,
    .run = runTags,
    .details = "The bytes are decoded as markup (UTF-8 unless a byte-order mark or the page says\n"
               "otherwise). One line per handler call:\n"
               "  KIND KINDNAME NAME {TAGLOCATION, TAGLENGTH} {NAMELOCATION, NAMELENGTH} PREVIOUSTAGEND TEXT\n"
               "with '-' for a missing name; the last line is the closing call (kind 0, 'end').\n"
               "Locations count UTF-16 code units. With --json: an array of objects with kind,\n"
               "kindName, name, tag [location, length], nameRange, previousTagEnd and text.",
}};

}  // namespace
}  // namespace norvane::cli
