// NorvaneHelper: the service object behind both channels. Each request
// normalises its file reference, does its work and answers a value; a
// request never reports a reason, only nil, false or an empty result.
//
// The work of the document, web-content and script requests is done by
// other subsystems, which attach it through RequestWork. Until a piece is
// attached its request answers as that request answers on failure.
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "importers/metadata_importer.h"
#include "norvane/core/value.h"
#include "norvane/wire/codec.h"

namespace norvane::service {

// A recursive lock with a name, for the log and for debugging.
struct NamedRecursiveLock {
  explicit NamedRecursiveLock(std::string lockName) : name(std::move(lockName)) {}
  std::recursive_mutex mutex;
  const std::string name;
};

// The work behind the requests that other subsystems implement. Paths are
// working paths and may be null.
struct RequestWork {
  std::function<std::optional<Data>(const String& path)> PDFImageRepOfFile;
  std::function<std::optional<Dictionary>(const String& path, int64_t maxThumbnailSize, bool alwaysFromImage,
                                          int32_t stringType)>
      imageWithContentsOfFile;
  std::function<std::optional<Data>(const String& path, int64_t maxThumbnailSize, bool asIcon)> previewForFile;
  std::function<std::optional<Dictionary>(const Data& pdf, int32_t type)> stringFromPDF;
  // Calls `stopAccess` before it encodes the poster image.
  std::function<Dictionary(const String& path, const std::function<void()>& stopAccess)> posterImageForMovieWithFile;
  std::function<std::optional<Dictionary>(const String& path)> attributedStringWithContentsOfFile;
  std::function<Dictionary(const String& path)> searchableTextOfWebArchive;
  std::function<bool(const Data& data)> preflightWebArchiveData;
  std::function<std::optional<Data>(const Data* html, const Url* baseURL, bool allowRemoteRequest,
                                    const String& charset)>
      RTFDWithHTML;
  // Script execution; called with _osaLock held and non-empty names only.
  std::function<void(const String& file, const String& function, const wire::ScriptDescriptor& param)>
      compileAndExecuteFile;
  std::function<void(const String& source, const String& function, const wire::ScriptDescriptor& param)>
      compileAndExecuteSource;
};

class NorvaneHelper {
 public:
  NorvaneHelper();
  NorvaneHelper(const NorvaneHelper&) = delete;
  NorvaneHelper& operator=(const NorvaneHelper&) = delete;

  void setRequestWork(RequestWork work) { work_ = std::move(work); }
  importers::MetaDataImporter& mdimporter() { return _mdimporter; }
  NamedRecursiveLock& osaLock() { return _osaLock; }

  // The synchronous requests. A `fileReference` is data (bookmark), a URL
  // or a string; anything else gives a null working path.
  Value PDFImageRepOfFile(const Value& fileReference);
  Value imageWithContentsOfFile(const Value& fileReference, int64_t maxThumbnailSize, bool alwaysFromImage,
                                int32_t stringType);
  Value previewForFile(const Value& fileReference, int64_t maxThumbnailSize, bool asIcon);
  Value stringFromPDF(const Value& data, int32_t type);
  Value posterImageForMovieWithFile(const Value& fileReference);
  Value attributedStringWithContentsOfFile(const Value& fileReference);
  Value searchableTextOfWebArchive(const Value& fileReference);
  bool preflightWebArchiveData(const Value& data);
  Value RTFDWithHTML(const Value& html, const Value& baseURL, bool allowRemoteRequest, const Value& charset);
  Value metaDataForFile(const Value& fileReference);
  bool supportsFile(const Value& fileReference);

  // The script requests: serialised under _osaLock; a script's result and
  // errors stay here. `param` null means no descriptor.
  void executeFile(const Value& file, const Value& function, const wire::ScriptDescriptor* param);
  void executeSource(const Value& source, const Value& function, const wire::ScriptDescriptor* param);

  // Ends the process at once with status 0, without replying.
  [[noreturn]] static void terminate();
  // Takes an argument and does nothing; the process goes on.
  void terminate(const Value&) {}
  // Answers a stray setImage: message: changes nothing, logs it.
  void setImage(const Value&);

 private:
  template <typename Run>
  void executeScript(const char* selector, const Value& text, const Value& function,
                     const wire::ScriptDescriptor* param, Run run);

  importers::MetaDataImporter _mdimporter;
  NamedRecursiveLock _osaLock{"OSA"};
  RequestWork work_;
};

// "{w, h}" as sizes are written in results.
std::string stringFromSize(double width, double height);

}  // namespace norvane::service
