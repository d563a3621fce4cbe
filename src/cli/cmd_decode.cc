// norvane decode: markup bytes in, text out, the encoding settled by the
// markup decoder.
#include <nlohmann/json.hpp>
#include <string>

#include "command.h"
#include "norvane/markup/decoding.h"

namespace norvane::cli {
namespace {

using text::NSStringEncoding;

int runDecode(const Invocation& in) {
  const std::string& path = in.positionals.front();
  NSStringEncoding defaultEncoding = text::NSUTF8StringEncoding;
  if (std::optional<std::string> name = in.value("default")) {
    defaultEncoding = markup::charset2NSStringEncoding(String::fromUtf8(*name));
    if (defaultEncoding == text::kInvalidEncoding) return usageError(in, "unknown encoding: " + *name);
  }
  std::optional<std::string> charset = in.value("charset");

  NSStringEncoding used = text::kInvalidEncoding;
  String decoded;
  if (path != "-" && !charset) {
    decoded = markup::stringWithMarkupContentsOfFile(path, defaultEncoding, &used);
    if (decoded.isNull()) return fail("cannot read " + path);
  } else {
    std::string error;
    std::optional<std::string> bytes = readInput(path, &error);
    if (!bytes) return fail(error);
    String name = charset ? String::fromUtf8(*charset) : String();
    decoded = markup::stringWithMarkupData(*bytes, name, defaultEncoding, String(), &used);
    if (decoded.isNull()) return fail("cannot decode " + path);
  }

  std::string text = decoded.toUtf8();
  if (!in.json) return writeOutput(in, text) ? kSuccess : kFailure;
  nlohmann::json result = {{"file", path}, {"text", text}};
  if (used != text::kInvalidEncoding) {
    result["encoding"] = used;
    result["encodingName"] = std::string(text::nameOfNSEncoding(used));
  } else {
    result["encoding"] = nullptr;
    result["encodingName"] = nullptr;
  }
  return writeOutput(in, result.dump() + "\n") ? kSuccess : kFailure;
}

const Registration kDecode{{
    .name = "decode",
    .summary = "decode markup bytes into text",
    .usage = "norvane decode [--json] [-o FILE] [--charset NAME] [--default NAME] FILE|-",
    .options = {{"output", 'o', true, "write to FILE instead of stdout"},
                {"charset", 'c', true, "charset name for the first pass, over a byte-order mark"},
                {"default", 'd', true, "encoding of the first pass when nothing else decides (default UTF-8)"}},
    .minPositionals = 1,
    .maxPositionals = 1,
    .run = runDecode,
    .details = "The text is written as UTF-8. With --json the result is an object with the text, the\n"
               "settled encoding's number (an NSStringEncoding) and its name. Property lists, binary or\n"
               "XML, come out as XML text without an encoding.",
}};

}  // namespace
}  // namespace norvane::cli
