#include "norvane/wire/message.h"

namespace norvane::wire {

const Value* argumentValue(const Argument& argument) {
  return std::get_if<Value>(&argument);
}

const ScriptDescriptor* argumentDescriptor(const Argument& argument) {
  return std::get_if<ScriptDescriptor>(&argument);
}

void encodeRequest(const Request& request, Bytes& out) {
  Encoder e(out);
  e.mapHeader(request.noReply ? 4 : 3);
  e.string(std::string_view("op"));
  e.string(std::string_view(request.operation));
  e.string(std::string_view("id"));
  e.unsignedInteger(request.id);
  e.string(std::string_view("args"));
  e.arrayHeader(static_cast<uint32_t>(request.arguments.size()));
  for (const Argument& argument : request.arguments) {
    if (const Value* value = argumentValue(argument)) {
      e.value(*value);
    } else {
      e.descriptor(*argumentDescriptor(argument));
    }
  }
  if (request.noReply) {
    e.string(std::string_view("noreply"));
    e.boolean(true);
  }
}

void encodeReply(const Reply& reply, Bytes& out) {
  Encoder e(out);
  e.mapHeader(2 + (reply.boxed ? 1 : 0) + (reply.error.empty() ? 0 : 1));
  e.string(std::string_view("id"));
  e.unsignedInteger(reply.id);
  e.string(std::string_view("result"));
  e.value(reply.result);
  if (reply.boxed) {
    e.string(std::string_view("boxed"));
    e.boolean(true);
  }
  if (!reply.error.empty()) {
    e.string(std::string_view("error"));
    e.string(std::string_view(reply.error));
  }
}

bool decodeRequest(std::span<const uint8_t> body, Request& out) {
  out = Request();
  Decoder d(body);
  uint32_t fields;
  if (!d.mapHeader(fields)) return false;
  bool haveOp = false, haveId = false, haveArgs = false;
  std::string key;
  for (uint32_t i = 0; i < fields; ++i) {
    if (!d.string(key)) return false;
    if (key == "op") {
      haveOp = d.string(out.operation);
    } else if (key == "id") {
      haveId = d.unsignedInteger(out.id);
    } else if (key == "args") {
      uint32_t count;
      if (!d.arrayHeader(count)) return false;
      out.arguments.reserve(count);
      for (uint32_t a = 0; a < count; ++a) {
        if (d.atDescriptor()) {
          ScriptDescriptor descriptor;
          if (!d.descriptor(descriptor)) return false;
          out.arguments.emplace_back(std::move(descriptor));
        } else {
          Value value;
          if (!d.value(value)) return false;
          out.arguments.emplace_back(std::move(value));
        }
      }
      haveArgs = true;
    } else if (key == "noreply") {
      if (!d.boolean(out.noReply)) return false;
    } else if (!d.skip()) {
      return false;
    }
    if (d.failed()) return false;
  }
  return haveOp && haveId && haveArgs && d.atEnd();
}

bool decodeReply(std::span<const uint8_t> body, Reply& out) {
  out = Reply();
  Decoder d(body);
  uint32_t fields;
  if (!d.mapHeader(fields)) return false;
  bool haveId = false;
  std::string key;
  for (uint32_t i = 0; i < fields; ++i) {
    if (!d.string(key)) return false;
    if (key == "id") {
      haveId = d.unsignedInteger(out.id);
    } else if (key == "result") {
      d.value(out.result);
    } else if (key == "boxed") {
      d.boolean(out.boxed);
    } else if (key == "error") {
      d.string(out.error);
    } else {
      d.skip();
    }
    if (d.failed()) return false;
  }
  return haveId && d.atEnd();
}

}  // namespace norvane::wire
