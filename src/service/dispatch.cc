#include "service/dispatch.h"

#include <cxxabi.h>

#include <exception>
#include <string_view>

#include "norvane/core/log.h"

namespace norvane::service {
namespace {

using wire::Argument;
using wire::ReplyType;

constexpr std::string_view kHandlerSuffix = "handler:";

const Value& value(const std::vector<Argument>& arguments, size_t i) {
  static const Value kNull;
  const Value* v = wire::argumentValue(arguments[i]);
  return v ? *v : kNull;
}

Value failureOf(ReplyType type) {
  return type == ReplyType::Boolean || type == ReplyType::BoxedBoolean ? Value(false) : Value();
}

// The synchronous form's work for `name` (handler suffix removed).
Value run(NorvaneHelper& helper, std::string_view name, const std::vector<Argument>& a) {
  auto i32 = [&](size_t i) { return static_cast<int32_t>(value(a, i).asInteger()); };
  if (name == "metaDataForFile:") return helper.metaDataForFile(value(a, 0));
  if (name == "supportsFile:") return Value(helper.supportsFile(value(a, 0)));
  if (name == "PDFImageRepOfFile:") return helper.PDFImageRepOfFile(value(a, 0));
  if (name == "imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:")
    return helper.imageWithContentsOfFile(value(a, 0), value(a, 1).asInteger(), value(a, 2).asBool(), i32(3));
  if (name == "previewForFile:maxThumbnailSize:asIcon:")
    return helper.previewForFile(value(a, 0), value(a, 1).asInteger(), value(a, 2).asBool());
  if (name == "stringFromPDF:type:") return helper.stringFromPDF(value(a, 0), i32(1));
  if (name == "posterImageForMovieWithFile:") return helper.posterImageForMovieWithFile(value(a, 0));
  if (name == "attributedStringWithContentsOfFile:") return helper.attributedStringWithContentsOfFile(value(a, 0));
  if (name == "searchableTextOfWebArchive:") return helper.searchableTextOfWebArchive(value(a, 0));
  if (name == "preflightWebArchiveData:") return Value(helper.preflightWebArchiveData(value(a, 0)));
  if (name == "RTFDWithHTML:baseURL:allowRemoteRequest:charset:")
    return helper.RTFDWithHTML(value(a, 0), value(a, 1), value(a, 2).asBool(), value(a, 3));
  if (name == "executeFile:function:param:") {
    helper.executeFile(value(a, 0), value(a, 1), wire::argumentDescriptor(a[2]));
    return Value();
  }
  if (name == "executeSource:function:param:") {
    helper.executeSource(value(a, 0), value(a, 1), wire::argumentDescriptor(a[2]));
    return Value();
  }
  if (name == "terminate:") helper.terminate(value(a, 0));
  if (name == "setImage:") helper.setImage(value(a, 0));
  return Value();  // "ping", "terminate:", "setImage:"
}

std::string exceptionName(const std::exception& e) {
  int status = 0;
  char* readable = abi::__cxa_demangle(typeid(e).name(), nullptr, nullptr, &status);
  std::string name = status == 0 && readable ? readable : typeid(e).name();
  std::free(readable);
  return name;
}

}  // namespace

std::optional<wire::Reply> handleRequest(NorvaneHelper& helper, const wire::Request& request, wire::Protocol channel) {
  wire::Reply reply;
  reply.id = request.id;
  const wire::Operation* operation = wire::findOperation(request.operation);
  if (!operation || !wire::protocolOffers(channel, *operation)) {
    reply.error = "unknown operation: " + request.operation;
  } else if (std::string why; !wire::validateArguments(*operation, request.arguments, &why)) {
    reply.error = why;
  }
  if (!reply.error.empty()) {
    if (request.noReply) return std::nullopt;
    return reply;
  }

  std::string_view name = operation->name;
  if (name == "terminate") NorvaneHelper::terminate();
  bool isScript = operation->reply == ReplyType::Error;
  if (operation->hasHandler) {
    if (request.noReply && !isScript) return std::nullopt;
    name.remove_suffix(kHandlerSuffix.size());
  }

  try {
    reply.result = run(helper, name, request.arguments);
  } catch (const std::exception& e) {
    logMessage(formatException(request.operation, "NorvaneHelper", exceptionName(e), e.what()));
    reply.result = failureOf(operation->reply);
  } catch (...) {
    logMessage(formatException(request.operation, "NorvaneHelper", "unknown exception", ""));
    reply.result = failureOf(operation->reply);
  }
  if (request.noReply) return std::nullopt;
  reply.boxed = operation->reply == ReplyType::BoxedBoolean;
  return reply;
}

}  // namespace norvane::service
