#include "service/norvane_helper.h"

#include <cxxabi.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <typeinfo>

#include "norvane/core/log.h"
#include "service/file_reference.h"

namespace norvane::service {
namespace {

// Runs `work` and turns an exception into the failure answer.
template <typename Work>
Value nilOnException(Work work) {
  try {
    return work();
  } catch (...) {
    return Value();
  }
}

template <typename T>
Value valueOrNil(std::optional<T> value) {
  return value ? Value(std::move(*value)) : Value();
}

std::string demangled(const char* name) {
  int status = 0;
  char* readable = abi::__cxa_demangle(name, nullptr, nullptr, &status);
  std::string result = status == 0 && readable ? readable : name;
  std::free(readable);
  return result;
}

}  // namespace

std::string stringFromSize(double width, double height) {
  return fmt::format("{{{}, {}}}", width, height);
}

NorvaneHelper::NorvaneHelper() = default;

Value NorvaneHelper::PDFImageRepOfFile(const Value& fileReference) {
  WorkingPath file(fileReference);
  if (!work_.PDFImageRepOfFile) return Value();
  return nilOnException([&] { return valueOrNil(work_.PDFImageRepOfFile(file.path())); });
}

Value NorvaneHelper::imageWithContentsOfFile(const Value& fileReference, int64_t maxThumbnailSize, bool alwaysFromImage,
                                             int32_t stringType) {
  WorkingPath file(fileReference);
  if (!work_.imageWithContentsOfFile) return Value();
  return nilOnException([&] {
    return valueOrNil(work_.imageWithContentsOfFile(file.path(), maxThumbnailSize, alwaysFromImage, stringType));
  });
}

Value NorvaneHelper::previewForFile(const Value& fileReference, int64_t maxThumbnailSize, bool asIcon) {
  WorkingPath file(fileReference);
  if (!work_.previewForFile) return Value();
  return nilOnException([&] { return valueOrNil(work_.previewForFile(file.path(), maxThumbnailSize, asIcon)); });
}

Value NorvaneHelper::stringFromPDF(const Value& data, int32_t type) {
  if (!data.data() || !work_.stringFromPDF) return Value();
  return valueOrNil(work_.stringFromPDF(*data.data(), type));
}

Value NorvaneHelper::posterImageForMovieWithFile(const Value& fileReference) {
  WorkingPath file(fileReference);
  if (work_.posterImageForMovieWithFile)
    return Value(work_.posterImageForMovieWithFile(file.path(), [&] { file.stopAccess(); }));
  Dictionary nothingKnown;
  nothingKnown.set(String(u"Duration"), Value(0.0f));
  nothingKnown.set(String(u"Size"), Value(String::fromLatin1(stringFromSize(0, 0))));
  return Value(std::move(nothingKnown));
}

Value NorvaneHelper::attributedStringWithContentsOfFile(const Value& fileReference) {
  WorkingPath file(fileReference);
  if (!work_.attributedStringWithContentsOfFile) return Value();
  return nilOnException([&] { return valueOrNil(work_.attributedStringWithContentsOfFile(file.path())); });
}

Value NorvaneHelper::searchableTextOfWebArchive(const Value& fileReference) {
  WorkingPath file(fileReference);
  if (!work_.searchableTextOfWebArchive) return Value(Dictionary());
  return Value(work_.searchableTextOfWebArchive(file.path()));
}

bool NorvaneHelper::preflightWebArchiveData(const Value& data) {
  return data.data() && work_.preflightWebArchiveData && work_.preflightWebArchiveData(*data.data());
}

Value NorvaneHelper::RTFDWithHTML(const Value& html, const Value& baseURL, bool allowRemoteRequest,
                                  const Value& charset) {
  if (!work_.RTFDWithHTML) return Value();
  return nilOnException([&] {
    return valueOrNil(work_.RTFDWithHTML(html.data(), baseURL.url(), allowRemoteRequest, charset.asString()));
  });
}

Value NorvaneHelper::metaDataForFile(const Value& fileReference) {
  WorkingPath file(fileReference);
  return valueOrNil(_mdimporter.metaDataOfFileAtPath(file.path()));
}

bool NorvaneHelper::supportsFile(const Value& fileReference) {
  WorkingPath file(fileReference);
  return _mdimporter.supportsFileAtPath(file.path());
}

template <typename Run>
void NorvaneHelper::executeScript(const char* selector, const Value& text, const Value& function,
                                  const wire::ScriptDescriptor* param, Run run) {
  std::lock_guard<std::recursive_mutex> lock(_osaLock.mutex);
  wire::ScriptDescriptor descriptor = param ? *param : wire::ScriptDescriptor{};
  String textString = text.asString(), functionName = function.asString();
  if (textString.isEmpty() || functionName.isEmpty() || !run) return;
  try {
    run(textString, functionName, descriptor);
  } catch (const std::exception& e) {
    logMessage(formatException(selector, "NorvaneHelper", demangled(typeid(e).name()), e.what()));
  } catch (...) {
    logMessage(formatException(selector, "NorvaneHelper", "unknown exception", ""));
  }
}

void NorvaneHelper::executeFile(const Value& file, const Value& function, const wire::ScriptDescriptor* param) {
  executeScript("executeFile:function:param:handler:", file, function, param, work_.compileAndExecuteFile);
}

void NorvaneHelper::executeSource(const Value& source, const Value& function, const wire::ScriptDescriptor* param) {
  executeScript("executeSource:function:param:handler:", source, function, param, work_.compileAndExecuteSource);
}

void NorvaneHelper::terminate() {
  ::_exit(0);
}

void NorvaneHelper::setImage(const Value&) {
  logMessage("-[NorvaneHelper setImage:]: Unrecognized selector.");
}

}  // namespace norvane::service
