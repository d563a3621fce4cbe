// The operations a client may send, with their argument and reply types, so
// that both ends check a request the same way.
//
// Names are written as the service offers them, colons included
// ("metaDataForFile:"). The reply-carrying forms end in "handler:"; their
// handler is the reply and is not sent as an argument.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "norvane/wire/message.h"

namespace norvane::wire {

enum class ArgType : uint8_t {
  FileReference,     // data (bookmark), URL or string; any other value means no file
  Data,              // data or nil
  Url,               // URL or nil
  String,            // string or nil
  Boolean,           // boolean
  Int32,             // integer within 32-bit signed range
  Int64,             // integer
  ScriptDescriptor,  // script descriptor extension or nil
  Any,               // any value
};

enum class ReplyType : uint8_t {
  None,          // acknowledged with a nil result
  Dictionary,    // dictionary or nil
  Data,          // data or nil
  Boolean,       // plain boolean
  BoxedBoolean,  // boolean sent with "boxed": true
  Error,         // always nil
};

// Which protocol first declares the operation. The reply-carrying protocol
// includes every operation of the synchronous one; ServiceObject operations
// are reachable only over the named connection.
enum class Protocol : uint8_t { ImExportHelper, ImExportXPC, ServiceObject };

struct Operation {
  std::string_view name;
  std::span<const ArgType> arguments;
  ReplyType reply;
  Protocol protocol;
  // Takes a handler: with "noreply" the request does no work (script
  // requests excepted, which run anyway).
  bool hasHandler;
};

// Every operation, synchronous forms first.
std::span<const Operation> operations();
// Null for an unknown name.
const Operation* findOperation(std::string_view name);
// True when `protocol` offers the operation.
bool protocolOffers(Protocol protocol, const Operation& operation);

// Checks count and types of a request's arguments. On failure answers false
// and sets `why` to a one-line reason.
bool validateArguments(const Operation& operation, std::span<const Argument> arguments, std::string* why);
// Checks a reply's result against the operation's reply type.
bool validateReply(const Operation& operation, const Reply& reply);

std::string_view argTypeName(ArgType type);

}  // namespace norvane::wire
