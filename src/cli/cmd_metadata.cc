// norvane supports / metadata / text: ask the helper service about files.
//
// Each run takes a proxy from a HelperTask: a helper that already runs is
// used as it is; otherwise one is launched for the run and terminated at its
// end, unless --keep-helper is given.
#include <cmath>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "command.h"
#include "norvane/client/helper_task.h"

namespace norvane::cli {
namespace {

using client::HelperProxy;
using client::HelperTask;

const Option kKeepHelper{"keep-helper", 0, false, "leave a helper launched by this run running"};

// The helper for one run; ends a helper it launched unless told to keep it.
class HelperSession {
 public:
  explicit HelperSession(const Invocation& in) : keep_(in.has("keep-helper")) {
    task_ = client::createServiceHelperTask();
    if (task_) proxy_ = task_->proxy();
  }
  ~HelperSession() {
    if (task_ && keep_) task_->detach();
  }
  HelperProxy* proxy() { return proxy_ ? &*proxy_ : nullptr; }

 private:
  bool keep_;
  std::unique_ptr<HelperTask> task_;
  std::optional<HelperProxy> proxy_;
};

int unreachable() {
  return fail("cannot reach norvane-helper (is it built or on PATH? NORVANE_HELPER may name it)");
}

// Files go to the helper as absolute paths: a helper that already runs may
// stand in another working directory.
Value fileReference(const std::string& path) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return Value(String::fromUtf8(error ? path : absolute.string()));
}

std::string isoDate(double secondsSince1970) {
  std::time_t seconds = static_cast<std::time_t>(std::floor(secondsSince1970));
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

std::string base64(const Data& data) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve((data.size() + 2) / 3 * 4);
  for (size_t i = 0; i < data.size(); i += 3) {
    uint32_t chunk = uint32_t{data[i]} << 16;
    if (i + 1 < data.size()) chunk |= uint32_t{data[i + 1]} << 8;
    if (i + 2 < data.size()) chunk |= data[i + 2];
    out += kAlphabet[chunk >> 18 & 63];
    out += kAlphabet[chunk >> 12 & 63];
    out += i + 1 < data.size() ? kAlphabet[chunk >> 6 & 63] : '=';
    out += i + 2 < data.size() ? kAlphabet[chunk & 63] : '=';
  }
  return out;
}

// JSON of a value: data as base64 text, dates as ISO 8601 text in UTC, URLs
// as their text, sets as arrays.
nlohmann::json toJson(const Value& value) {
  switch (value.type()) {
    case Value::Type::Null:
      return nullptr;
    case Value::Type::Boolean:
      return value.asBool();
    case Value::Type::Integer:
      return value.asInteger();
    case Value::Type::Real32:
    case Value::Type::Real64:
      return std::isfinite(value.asReal()) ? nlohmann::json(value.asReal()) : nullptr;
    case Value::Type::String:
      return value.asString().toUtf8();
    case Value::Type::Data:
      return base64(*value.data());
    case Value::Type::Date:
      return isoDate(value.date()->secondsSince1970);
    case Value::Type::Url:
      return value.url()->string.toUtf8();
    case Value::Type::Array: {
      nlohmann::json array = nlohmann::json::array();
      for (const Value& element : *value.array()) array.push_back(toJson(element));
      return array;
    }
    case Value::Type::Set: {
      nlohmann::json array = nlohmann::json::array();
      for (const Value& member : value.set()->members()) array.push_back(toJson(member));
      return array;
    }
    case Value::Type::Dictionary: {
      nlohmann::json object = nlohmann::json::object();
      for (const auto& [key, element] : *value.dictionary()) object[key.toUtf8()] = toJson(element);
      return object;
    }
  }
  return nullptr;
}

std::string dump(const nlohmann::json& json) {
  return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

// One line of human output: text cut at 100 characters, line ends shown as
// spaces, data by its size.
std::string describe(const Value& value) {
  constexpr size_t kMaxText = 100;
  switch (value.type()) {
    case Value::Type::String: {
      std::u16string text = value.asString().toU16();
      for (char16_t& u : text)
        if (u == u'\n' || u == u'\r' || u == u'\t') u = u' ';
      while (!text.empty() && text.back() == u' ') text.pop_back();
      if (text.size() <= kMaxText) return String(text).toUtf8();
      return String(std::u16string_view(text).substr(0, kMaxText)).toUtf8() + "… (" +
             std::to_string(value.asString().length()) + " characters)";
    }
    case Value::Type::Data:
      return "<" + std::to_string(value.data()->size()) + " bytes>";
    case Value::Type::Dictionary:
    case Value::Type::Array:
    case Value::Type::Set:
      return toJson(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    default: {
      nlohmann::json json = toJson(value);
      return json.is_string() ? json.get<std::string>() : json.dump();
    }
  }
}

int runSupports(const Invocation& in) {
  HelperSession session(in);
  HelperProxy* proxy = session.proxy();
  if (!proxy) return unreachable();
  nlohmann::json json = nlohmann::json::object();
  std::string text;
  for (const std::string& file : in.positionals) {
    bool supported = proxy->supportsFile(fileReference(file));
    if (client::isPortException(proxy->lastError())) return fail("the helper did not answer for " + file);
    json[file] = supported;
    text += file + ": " + (supported ? "yes" : "no") + "\n";
  }
  return writeOutput(in, in.json ? dump(json) + "\n" : text) ? kSuccess : kFailure;
}

int runMetadata(const Invocation& in) {
  HelperSession session(in);
  HelperProxy* proxy = session.proxy();
  if (!proxy) return unreachable();
  nlohmann::json json = nlohmann::json::object();
  std::string text;
  for (const std::string& file : in.positionals) {
    std::optional<Dictionary> metadata = proxy->metaDataForFile(fileReference(file));
    if (client::isPortException(proxy->lastError())) return fail("the helper did not answer for " + file);
    json[file] = metadata ? toJson(Value(*metadata)) : nlohmann::json(nullptr);
    if (in.positionals.size() > 1) text += file + ":\n";
    if (!metadata || metadata->empty()) text += "  (no metadata)\n";
    if (metadata) {
      for (const auto& [key, value] : *metadata) text += "  " + key.toUtf8() + ": " + describe(value) + "\n";
    }
  }
  if (in.json && in.positionals.size() == 1) json = json.begin().value();
  return writeOutput(in, in.json ? dump(json) + "\n" : text) ? kSuccess : kFailure;
}

int runText(const Invocation& in) {
  HelperSession session(in);
  HelperProxy* proxy = session.proxy();
  if (!proxy) return unreachable();
  const std::string& file = in.positionals[0];
  std::optional<Dictionary> metadata = proxy->metaDataForFile(fileReference(file));
  if (client::isPortException(proxy->lastError())) return fail("the helper did not answer for " + file);
  const Value* text = metadata ? metadata->find(u"kMDItemTextContent") : nullptr;
  if (!text || !text->isString()) return fail("no text found in " + file);
  std::string utf8 = text->asString().toUtf8();
  if (in.json) return writeOutput(in, dump(nlohmann::json{{"text", utf8}}) + "\n") ? kSuccess : kFailure;
  if (utf8.empty() || utf8.back() != '\n') utf8 += '\n';
  return writeOutput(in, utf8) ? kSuccess : kFailure;
}

const char kHelperDetails[] =
    "The files are handed to norvane-helper. A helper that already runs is used;\n"
    "otherwise one is launched for this run and ended when it is over, unless\n"
    "--keep-helper is given. The helper program is $NORVANE_HELPER, else\n"
    "norvane-helper beside this program, in the build tree, or on PATH.";

const Registration kSupports{{
    .name = "supports",
    .summary = "tell whether the helper can extract metadata from files",
    .usage = "norvane supports [--json] [--keep-helper] FILE...",
    .options = {kKeepHelper, {"output", 'o', true, "write to FILE instead of stdout"}},
    .minPositionals = 1,
    .run = runSupports,
    .details = kHelperDetails,
}};

const Registration kMetadata{{
    .name = "metadata",
    .summary = "extract the metadata dictionary of files through the helper",
    .usage = "norvane metadata [--json] [--keep-helper] FILE...",
    .options = {kKeepHelper, {"output", 'o', true, "write to FILE instead of stdout"}},
    .minPositionals = 1,
    .run = runMetadata,
    .details = std::string(kHelperDetails) +
               "\n\nHuman output lists each key and value, long text cut at 100 characters.\n"
               "--json prints the dictionary; with several files, an object from each\n"
               "FILE to its dictionary (null when the helper gave none). Data is base64,\n"
               "dates are ISO 8601 in UTC.",
}};

const Registration kText{{
    .name = "text",
    .summary = "print the searchable text (kMDItemTextContent) of a file",
    .usage = "norvane text [--json] [--keep-helper] FILE",
    .options = {kKeepHelper, {"output", 'o', true, "write to FILE instead of stdout"}},
    .minPositionals = 1,
    .maxPositionals = 1,
    .run = runText,
    .details = kHelperDetails,
}};

}  // namespace
}  // namespace norvane::cli
