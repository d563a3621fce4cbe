#include "norvane/wire/operations.h"

#include <fmt/format.h>

namespace norvane::wire {

namespace {

using A = ArgType;
using R = ReplyType;

constexpr ArgType kFile[] = {A::FileReference};
constexpr ArgType kImage[] = {A::FileReference, A::Int64, A::Boolean, A::Int32};
constexpr ArgType kPreview[] = {A::FileReference, A::Int64, A::Boolean};
constexpr ArgType kPdfString[] = {A::Data, A::Int32};
constexpr ArgType kData[] = {A::Data};
constexpr ArgType kHtml[] = {A::Data, A::Url, A::Boolean, A::String};
constexpr ArgType kScript[] = {A::String, A::String, A::ScriptDescriptor};
constexpr ArgType kAny[] = {A::Any};

constexpr Operation kOperations[] = {
    // The synchronous protocol.
    {"PDFImageRepOfFile:", kFile, R::Data, Protocol::ImExportHelper, false},
    {"imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:", kImage, R::Dictionary,
     Protocol::ImExportHelper, false},
    {"previewForFile:maxThumbnailSize:asIcon:", kPreview, R::Data, Protocol::ImExportHelper, false},
    {"stringFromPDF:type:", kPdfString, R::Dictionary, Protocol::ImExportHelper, false},
    {"posterImageForMovieWithFile:", kFile, R::Dictionary, Protocol::ImExportHelper, false},
    {"attributedStringWithContentsOfFile:", kFile, R::Dictionary, Protocol::ImExportHelper, false},
    {"searchableTextOfWebArchive:", kFile, R::Dictionary, Protocol::ImExportHelper, false},
    {"preflightWebArchiveData:", kData, R::Boolean, Protocol::ImExportHelper, false},
    {"RTFDWithHTML:baseURL:allowRemoteRequest:charset:", kHtml, R::Data, Protocol::ImExportHelper, false},
    {"metaDataForFile:", kFile, R::Dictionary, Protocol::ImExportHelper, false},
    {"supportsFile:", kFile, R::Boolean, Protocol::ImExportHelper, false},
    // The reply-carrying protocol.
    {"terminate", {}, R::None, Protocol::ImExportXPC, false},
    {"ping", {}, R::None, Protocol::ImExportXPC, false},
    {"executeFile:function:param:handler:", kScript, R::Error, Protocol::ImExportXPC, true},
    {"executeSource:function:param:handler:", kScript, R::Error, Protocol::ImExportXPC, true},
    {"PDFImageRepOfFile:handler:", kFile, R::Data, Protocol::ImExportXPC, true},
    {"imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:handler:", kImage, R::Dictionary,
     Protocol::ImExportXPC, true},
    {"previewForFile:maxThumbnailSize:asIcon:handler:", kPreview, R::Data, Protocol::ImExportXPC, true},
    {"stringFromPDF:type:handler:", kPdfString, R::Dictionary, Protocol::ImExportXPC, true},
    {"posterImageForMovieWithFile:handler:", kFile, R::Dictionary, Protocol::ImExportXPC, true},
    {"attributedStringWithContentsOfFile:handler:", kFile, R::Dictionary, Protocol::ImExportXPC, true},
    {"searchableTextOfWebArchive:handler:", kFile, R::Dictionary, Protocol::ImExportXPC, true},
    {"preflightWebArchiveData:handler:", kData, R::Boolean, Protocol::ImExportXPC, true},
    {"RTFDWithHTML:baseURL:allowRemoteRequest:charset:handler:", kHtml, R::Data, Protocol::ImExportXPC, true},
    {"metaDataForFile:handler:", kFile, R::Dictionary, Protocol::ImExportXPC, true},
    {"supportsFile:handler:", kFile, R::BoxedBoolean, Protocol::ImExportXPC, true},
    // The service object's own, over the named connection.
    {"terminate:", kAny, R::None, Protocol::ServiceObject, false},
    {"setImage:", kAny, R::None, Protocol::ServiceObject, false},
};

bool argumentFits(ArgType type, const Argument& argument) {
  const Value* value = argumentValue(argument);
  if (type == A::ScriptDescriptor) return !value || value->isNull();
  if (!value) return false;
  switch (type) {
    case A::FileReference:
    case A::Any:
      return true;
    case A::Data:
      return value->isNull() || value->isData();
    case A::Url:
      return value->isNull() || value->isUrl();
    case A::String:
      return value->isNull() || value->isString();
    case A::Boolean:
      return value->isBoolean();
    case A::Int32:
      return value->isInteger() && value->asInteger() >= INT32_MIN && value->asInteger() <= INT32_MAX;
    case A::Int64:
      return value->isInteger();
    case A::ScriptDescriptor:
      break;
  }
  return false;
}

}  // namespace

std::span<const Operation> operations() {
  return kOperations;
}

const Operation* findOperation(std::string_view name) {
  for (const Operation& operation : kOperations)
    if (operation.name == name) return &operation;
  return nullptr;
}

bool protocolOffers(Protocol protocol, const Operation& operation) {
  switch (protocol) {
    case Protocol::ImExportHelper:
      return operation.protocol == Protocol::ImExportHelper;
    case Protocol::ImExportXPC:
      return operation.protocol != Protocol::ServiceObject;
    case Protocol::ServiceObject:
      return true;
  }
  return false;
}

std::string_view argTypeName(ArgType type) {
  switch (type) {
    case A::FileReference:
      return "file reference";
    case A::Data:
      return "data";
    case A::Url:
      return "URL";
    case A::String:
      return "string";
    case A::Boolean:
      return "boolean";
    case A::Int32:
      return "32-bit integer";
    case A::Int64:
      return "64-bit integer";
    case A::ScriptDescriptor:
      return "script descriptor";
    case A::Any:
      return "value";
  }
  return "?";
}

bool validateArguments(const Operation& operation, std::span<const Argument> arguments, std::string* why) {
  if (arguments.size() != operation.arguments.size()) {
    if (why)
      *why = fmt::format("{} takes {} arguments, got {}", operation.name, operation.arguments.size(), arguments.size());
    return false;
  }
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (!argumentFits(operation.arguments[i], arguments[i])) {
      if (why)
        *why = fmt::format("{} argument {} must be a {}", operation.name, i + 1, argTypeName(operation.arguments[i]));
      return false;
    }
  }
  return true;
}

bool validateReply(const Operation& operation, const Reply& reply) {
  if (!reply.error.empty()) return reply.result.isNull();
  const Value& r = reply.result;
  switch (operation.reply) {
    case R::None:
    case R::Error:
      return r.isNull() && !reply.boxed;
    case R::Dictionary:
      return (r.isNull() || r.isDictionary()) && !reply.boxed;
    case R::Data:
      return (r.isNull() || r.isData()) && !reply.boxed;
    case R::Boolean:
      return r.isBoolean() && !reply.boxed;
    case R::BoxedBoolean:
      return r.isBoolean() && reply.boxed;
  }
  return false;
}

}  // namespace norvane::wire
