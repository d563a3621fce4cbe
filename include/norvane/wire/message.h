// Request and reply shapes. Each travels as one frame holding a map.
//
// Request: {"op": str, "id": uint, "args": array, "noreply": bool (optional)}
// Reply:   {"id": uint, "result": value, "boxed": true (optional),
//           "error": str (optional)}
//
// Every request is answered by one reply with the same id, except
// "terminate" and requests sent with "noreply": true. "error" appears only
// for requests the service could not take (unknown operation, wrong
// arguments); a request that ran and failed answers nil, false or an empty
// result, never an error.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "norvane/core/value.h"
#include "norvane/wire/codec.h"

namespace norvane::wire {

// One argument: a value, or a script descriptor (which has no Value form).
using Argument = std::variant<Value, ScriptDescriptor>;

// The argument's value, or null for a descriptor.
const Value* argumentValue(const Argument& argument);
const ScriptDescriptor* argumentDescriptor(const Argument& argument);

struct Request {
  std::string operation;
  uint64_t id = 0;
  std::vector<Argument> arguments;
  bool noReply = false;
};

struct Reply {
  uint64_t id = 0;
  Value result;
  // The result is a number object (a boolean boxed as a number).
  bool boxed = false;
  // Empty unless the request was refused.
  std::string error;
};

// Encoders append the message's MessagePack (not a frame) to `out`.
void encodeRequest(const Request& request, Bytes& out);
void encodeReply(const Reply& reply, Bytes& out);
// Decoders take one frame body. Unknown keys are skipped; "op", "id" and
// "args" are required in a request, "id" in a reply.
bool decodeRequest(std::span<const uint8_t> body, Request& out);
bool decodeReply(std::span<const uint8_t> body, Reply& out);

}  // namespace norvane::wire
