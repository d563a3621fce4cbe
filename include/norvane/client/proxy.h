// HelperProxy: the helper's requests as C++ methods over a connection.
//
// One method per request. Arguments that may be nil in the protocol are
// passed as Value (a null Value is nil); a file reference is a Value holding
// data (bookmark data), a Url or a String (a path). Results follow the
// protocol: nullopt for nil, false for a failed boolean. A failure of the
// transport looks the same to the caller; lastError() tells it apart.
//
// The reply-carrying forms call their handler on the calling thread once the
// reply is in; when the call fails the handler is not called. Given an empty
// handler they send the request with "noreply", and the service then does no
// work (script requests still run).
//
// The rootProxy... functions hand out proxies over the per-thread cache.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "norvane/client/connection.h"
#include "norvane/core/value.h"
#include "norvane/wire/operations.h"

namespace norvane::client {

using wire::Protocol;
using wire::ScriptDescriptor;

class HelperProxy {
 public:
  // Requests outside `protocol` are not sent (and answer nil or false).
  HelperProxy(std::shared_ptr<Connection> connection, Protocol protocol)
      : connection_(std::move(connection)), protocol_(protocol) {}

  const std::shared_ptr<Connection>& connection() const { return connection_; }
  Protocol protocol() const { return protocol_; }
  void setProtocol(Protocol protocol) { protocol_ = protocol; }
  TransportError lastError() const { return lastError_; }

  // The synchronous protocol.
  std::optional<Data> PDFImageRepOfFile(const Value& file);
  std::optional<Dictionary> imageWithContentsOfFile(const Value& file, int64_t maxThumbnailSize, bool alwaysFromImage,
                                                    int32_t stringType);
  std::optional<Data> previewForFile(const Value& file, int64_t maxThumbnailSize, bool asIcon);
  std::optional<Dictionary> stringFromPDF(const Value& data, int32_t type);
  std::optional<Dictionary> posterImageForMovieWithFile(const Value& file);
  std::optional<Dictionary> attributedStringWithContentsOfFile(const Value& file);
  std::optional<Dictionary> searchableTextOfWebArchive(const Value& file);
  bool preflightWebArchiveData(const Value& data);
  std::optional<Data> RTFDWithHTML(const Value& html, const Value& baseURL, bool allowRemoteRequest,
                                   const Value& charset);
  std::optional<Dictionary> metaDataForFile(const Value& file);
  bool supportsFile(const Value& file);

  // The reply-carrying protocol.
  using DictionaryHandler = std::function<void(std::optional<Dictionary>)>;
  using DataHandler = std::function<void(std::optional<Data>)>;
  using BooleanHandler = std::function<void(bool)>;
  // The script handlers receive the error, which is always nil: they only
  // tell that the script ran.
  using DoneHandler = std::function<void()>;

  // Ends the helper at once; no reply.
  void terminate();
  // True when the helper acknowledged.
  bool ping();
  void executeFile(const Value& path, const Value& function, const std::optional<ScriptDescriptor>& param,
                   DoneHandler handler);
  void executeSource(const Value& source, const Value& function, const std::optional<ScriptDescriptor>& param,
                     DoneHandler handler);
  void PDFImageRepOfFile(const Value& file, DataHandler handler);
  void imageWithContentsOfFile(const Value& file, int64_t maxThumbnailSize, bool alwaysFromImage, int32_t stringType,
                               DictionaryHandler handler);
  void previewForFile(const Value& file, int64_t maxThumbnailSize, bool asIcon, DataHandler handler);
  void stringFromPDF(const Value& data, int32_t type, DictionaryHandler handler);
  void posterImageForMovieWithFile(const Value& file, DictionaryHandler handler);
  void attributedStringWithContentsOfFile(const Value& file, DictionaryHandler handler);
  void searchableTextOfWebArchive(const Value& file, DictionaryHandler handler);
  void preflightWebArchiveData(const Value& data, BooleanHandler handler);
  void RTFDWithHTML(const Value& html, const Value& baseURL, bool allowRemoteRequest, const Value& charset,
                    DataHandler handler);
  void metaDataForFile(const Value& file, DictionaryHandler handler);
  // The reply is a boxed number holding the boolean.
  void supportsFile(const Value& file, BooleanHandler handler);

  // The service object's "terminate:", which leaves the helper running.
  bool terminate(const Value& argument);

  // Asks the optional "stillBusy" request; false when the helper does not
  // offer it.
  bool stillBusy();

  // Sends any operation of the table. Validates the arguments first (a bad
  // request is not sent: false, lastError Refused). `reply` holds the answer.
  bool invoke(std::string_view operation, std::vector<wire::Argument> arguments, wire::Reply& reply,
              bool noReply = false);

 private:
  Value callForValue(std::string_view operation, std::vector<wire::Argument> arguments);

  std::shared_ptr<Connection> connection_;
  Protocol protocol_;
  TransportError lastError_ = TransportError::None;
};

// The proxy of the connection stored under `name` on this thread, or of a new
// one, which is then stored. A timeout above 0 becomes the connection's
// request and reply timeout. Null when no helper answers to the name.
std::optional<HelperProxy> rootProxyForConnectionWithRegisteredName(std::string_view name, double timeout,
                                                                    Protocol protocol);
std::optional<HelperProxy> rootProxyForConnectionWithRegisteredName(std::string_view name);

// Polls for a helper that has yet to register: sleeps 0.01 seconds, tries,
// and so on until `totalTime` has passed. Nothing is tried when `totalTime`
// is not above 0.
std::optional<HelperProxy> waitForTimeIntervalForRootProxyForConnectionWithRegisteredName(double totalTime,
                                                                                          std::string_view name,
                                                                                          double timeout,
                                                                                          Protocol protocol);
// The same for 2.0 seconds.
inline constexpr double kRegistrationWait = 2.0;
std::optional<HelperProxy> waitForRootProxyForConnectionWithRegisteredName(std::string_view name, double timeout,
                                                                           Protocol protocol);
std::optional<HelperProxy> waitForRootProxyForConnectionWithRegisteredName(std::string_view name);

}  // namespace norvane::client
