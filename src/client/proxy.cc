#include "norvane/client/proxy.h"

#include <chrono>
#include <thread>

namespace norvane::client {

using wire::Argument;
using wire::Reply;
using wire::Request;

bool HelperProxy::invoke(std::string_view operation, std::vector<Argument> arguments, Reply& reply, bool noReply) {
  reply = Reply();
  const wire::Operation* known = wire::findOperation(operation);
  if (!known || !wire::protocolOffers(protocol_, *known) || !wire::validateArguments(*known, arguments, nullptr)) {
    lastError_ = TransportError::Refused;
    return false;
  }
  if (!connection_) {
    lastError_ = TransportError::Invalid;
    return false;
  }
  Request request{std::string(operation), 0, std::move(arguments), noReply};
  lastError_ = connection_->call(request, reply);
  if (lastError_ != TransportError::None) return false;
  if (!noReply && !wire::validateReply(*known, reply)) {
    // A reply of the wrong shape counts as no answer.
    lastError_ = TransportError::Receive;
    reply = Reply();
    return false;
  }
  return true;
}

Value HelperProxy::callForValue(std::string_view operation, std::vector<Argument> arguments) {
  Reply reply;
  if (!invoke(operation, std::move(arguments), reply)) return Value();
  return std::move(reply.result);
}

namespace {

std::optional<Dictionary> asDictionary(const Value& value) {
  if (const Dictionary* d = value.dictionary()) return *d;
  return std::nullopt;
}

std::optional<Data> asData(const Value& value) {
  if (const Data* d = value.data()) return *d;
  return std::nullopt;
}

Argument descriptorArgument(const std::optional<ScriptDescriptor>& param) {
  if (param) return *param;
  return Value();
}

}  // namespace

// ---- The synchronous protocol ----

std::optional<Data> HelperProxy::PDFImageRepOfFile(const Value& file) {
  return asData(callForValue("PDFImageRepOfFile:", {file}));
}

std::optional<Dictionary> HelperProxy::imageWithContentsOfFile(const Value& file, int64_t maxThumbnailSize,
                                                               bool alwaysFromImage, int32_t stringType) {
  return asDictionary(callForValue("imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:",
                                   {file, Value(maxThumbnailSize), Value(alwaysFromImage), Value(stringType)}));
}

std::optional<Data> HelperProxy::previewForFile(const Value& file, int64_t maxThumbnailSize, bool asIcon) {
  return asData(
      callForValue("previewForFile:maxThumbnailSize:asIcon:", {file, Value(maxThumbnailSize), Value(asIcon)}));
}

std::optional<Dictionary> HelperProxy::stringFromPDF(const Value& data, int32_t type) {
  return asDictionary(callForValue("stringFromPDF:type:", {data, Value(type)}));
}

std::optional<Dictionary> HelperProxy::posterImageForMovieWithFile(const Value& file) {
  return asDictionary(callForValue("posterImageForMovieWithFile:", {file}));
}

std::optional<Dictionary> HelperProxy::attributedStringWithContentsOfFile(const Value& file) {
  return asDictionary(callForValue("attributedStringWithContentsOfFile:", {file}));
}

std::optional<Dictionary> HelperProxy::searchableTextOfWebArchive(const Value& file) {
  return asDictionary(callForValue("searchableTextOfWebArchive:", {file}));
}

bool HelperProxy::preflightWebArchiveData(const Value& data) {
  return callForValue("preflightWebArchiveData:", {data}).asBool();
}

std::optional<Data> HelperProxy::RTFDWithHTML(const Value& html, const Value& baseURL, bool allowRemoteRequest,
                                              const Value& charset) {
  return asData(callForValue("RTFDWithHTML:baseURL:allowRemoteRequest:charset:",
                             {html, baseURL, Value(allowRemoteRequest), charset}));
}

std::optional<Dictionary> HelperProxy::metaDataForFile(const Value& file) {
  return asDictionary(callForValue("metaDataForFile:", {file}));
}

bool HelperProxy::supportsFile(const Value& file) {
  return callForValue("supportsFile:", {file}).asBool();
}

// ---- The reply-carrying protocol ----

void HelperProxy::terminate() {
  Reply reply;
  invoke("terminate", {}, reply, /*noReply=*/true);
  // The helper is gone or going: this connection has no future.
  if (connection_) {
    connection_->invalidate();
    removeConnection(connection_.get());
  }
}

bool HelperProxy::ping() {
  Reply reply;
  return invoke("ping", {}, reply);
}

bool HelperProxy::terminate(const Value& argument) {
  Reply reply;
  return invoke("terminate:", {argument}, reply);
}

namespace {

// Sends a reply-carrying request and hands the result to `deliver`; without
// a handler the request goes out with "noreply". A failed call delivers
// nothing.
template <typename Handler, typename Deliver>
void callWithHandler(HelperProxy& proxy, std::string_view operation, std::vector<Argument> arguments,
                     const Handler& handler, Deliver deliver) {
  Reply reply;
  if (!handler) {
    proxy.invoke(operation, std::move(arguments), reply, /*noReply=*/true);
    return;
  }
  if (proxy.invoke(operation, std::move(arguments), reply)) deliver(reply.result);
}

}  // namespace

void HelperProxy::executeFile(const Value& path, const Value& function, const std::optional<ScriptDescriptor>& param,
                              DoneHandler handler) {
  callWithHandler(*this, "executeFile:function:param:handler:", {path, function, descriptorArgument(param)}, handler,
                  [&](const Value&) { handler(); });
}

void HelperProxy::executeSource(const Value& source, const Value& function,
                                const std::optional<ScriptDescriptor>& param, DoneHandler handler) {
  callWithHandler(*this, "executeSource:function:param:handler:", {source, function, descriptorArgument(param)},
                  handler, [&](const Value&) { handler(); });
}

void HelperProxy::PDFImageRepOfFile(const Value& file, DataHandler handler) {
  callWithHandler(*this, "PDFImageRepOfFile:handler:", {file}, handler,
                  [&](const Value& result) { handler(asData(result)); });
}

void HelperProxy::imageWithContentsOfFile(const Value& file, int64_t maxThumbnailSize, bool alwaysFromImage,
                                          int32_t stringType, DictionaryHandler handler) {
  callWithHandler(*this, "imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:handler:",
                  {file, Value(maxThumbnailSize), Value(alwaysFromImage), Value(stringType)}, handler,
                  [&](const Value& result) { handler(asDictionary(result)); });
}

void HelperProxy::previewForFile(const Value& file, int64_t maxThumbnailSize, bool asIcon, DataHandler handler) {
  callWithHandler(*this,
                  "previewForFile:maxThumbnailSize:asIcon:handler:", {file, Value(maxThumbnailSize), Value(asIcon)},
                  handler, [&](const Value& result) { handler(asData(result)); });
}

void HelperProxy::stringFromPDF(const Value& data, int32_t type, DictionaryHandler handler) {
  callWithHandler(*this, "stringFromPDF:type:handler:", {data, Value(type)}, handler,
                  [&](const Value& result) { handler(asDictionary(result)); });
}

void HelperProxy::posterImageForMovieWithFile(const Value& file, DictionaryHandler handler) {
  callWithHandler(*this, "posterImageForMovieWithFile:handler:", {file}, handler,
                  [&](const Value& result) { handler(asDictionary(result)); });
}

void HelperProxy::attributedStringWithContentsOfFile(const Value& file, DictionaryHandler handler) {
  callWithHandler(*this, "attributedStringWithContentsOfFile:handler:", {file}, handler,
                  [&](const Value& result) { handler(asDictionary(result)); });
}

void HelperProxy::searchableTextOfWebArchive(const Value& file, DictionaryHandler handler) {
  callWithHandler(*this, "searchableTextOfWebArchive:handler:", {file}, handler,
                  [&](const Value& result) { handler(asDictionary(result)); });
}

void HelperProxy::preflightWebArchiveData(const Value& data, BooleanHandler handler) {
  callWithHandler(*this, "preflightWebArchiveData:handler:", {data}, handler,
                  [&](const Value& result) { handler(result.asBool()); });
}

void HelperProxy::RTFDWithHTML(const Value& html, const Value& baseURL, bool allowRemoteRequest, const Value& charset,
                               DataHandler handler) {
  callWithHandler(*this, "RTFDWithHTML:baseURL:allowRemoteRequest:charset:handler:",
                  {html, baseURL, Value(allowRemoteRequest), charset}, handler,
                  [&](const Value& result) { handler(asData(result)); });
}

void HelperProxy::metaDataForFile(const Value& file, DictionaryHandler handler) {
  callWithHandler(*this, "metaDataForFile:handler:", {file}, handler,
                  [&](const Value& result) { handler(asDictionary(result)); });
}

void HelperProxy::supportsFile(const Value& file, BooleanHandler handler) {
  callWithHandler(*this, "supportsFile:handler:", {file}, handler,
                  [&](const Value& result) { handler(result.asBool()); });
}

bool HelperProxy::stillBusy() {
  // Not in the operation table: the helper may or may not offer it, and an
  // error reply says it does not.
  if (!connection_) return false;
  Request request{"stillBusy", 0, {}, false};
  Reply reply;
  lastError_ = connection_->call(request, reply);
  return lastError_ == TransportError::None && reply.result.asBool();
}

// ---- Proxies from the per-thread cache ----

namespace {

void applyTimeout(Connection& connection, double timeout) {
  if (timeout <= 0) return;
  connection.setRequestTimeout(timeout);
  connection.setReplyTimeout(timeout);
}

}  // namespace

std::optional<HelperProxy> rootProxyForConnectionWithRegisteredName(std::string_view name, double timeout,
                                                                    Protocol protocol) {
  if (std::shared_ptr<Connection> stored = connectionRegisteredWithName(name)) {
    applyTimeout(*stored, timeout);
    return HelperProxy(std::move(stored), protocol);
  }
  std::shared_ptr<Connection> fresh = Connection::connectToName(name);
  if (!fresh) return std::nullopt;
  setConnectionRegisteredWithName(fresh, name);
  applyTimeout(*fresh, timeout);
  return HelperProxy(std::move(fresh), protocol);
}

std::optional<HelperProxy> rootProxyForConnectionWithRegisteredName(std::string_view name) {
  return rootProxyForConnectionWithRegisteredName(name, 0.0, Protocol::ServiceObject);
}

std::optional<HelperProxy> waitForTimeIntervalForRootProxyForConnectionWithRegisteredName(double totalTime,
                                                                                          std::string_view name,
                                                                                          double timeout,
                                                                                          Protocol protocol) {
  constexpr double kStep = 0.01;
  if (!(totalTime > 0)) return std::nullopt;
  double waited = 0;
  do {
    std::this_thread::sleep_for(std::chrono::duration<double>(kStep));
    if (auto proxy = rootProxyForConnectionWithRegisteredName(name, timeout, protocol)) return proxy;
    waited += kStep;
  } while (totalTime > waited);
  return std::nullopt;
}

std::optional<HelperProxy> waitForRootProxyForConnectionWithRegisteredName(std::string_view name, double timeout,
                                                                           Protocol protocol) {
  return waitForTimeIntervalForRootProxyForConnectionWithRegisteredName(kRegistrationWait, name, timeout, protocol);
}

std::optional<HelperProxy> waitForRootProxyForConnectionWithRegisteredName(std::string_view name) {
  return waitForRootProxyForConnectionWithRegisteredName(name, 0.0, Protocol::ServiceObject);
}

}  // namespace norvane::client
