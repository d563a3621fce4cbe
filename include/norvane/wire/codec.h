// MessagePack encoding of Value, hand-written.
//
// Value type      MessagePack
// ---------------------------------------------------------------
// null            nil
// boolean         true / false
// integer         the smallest int or uint form that holds it
// 32-bit real     float 32
// 64-bit real     float 64
// string          str, UTF-8 (unpaired surrogates become U+FFFD)
// data            bin
// array           array
// dictionary      map with str keys, in the dictionary's order
// date            ext 1: 8 bytes, big-endian float 64, seconds since 1970
// URL             ext 2: the URL string's UTF-8 bytes
// set             ext 3: one MessagePack array of the members
// script desc.    ext 4: 4-byte big-endian type code, then the raw data
//
// Decoding refuses: truncated input, reserved byte 0xc1, unsigned integers
// above the largest signed 64-bit value, map keys that are not strings,
// unknown extension types, malformed extension payloads, and nesting deeper
// than kMaxDepth. Invalid UTF-8 in a string decodes to U+FFFD. A repeated map
// key keeps its last value; a repeated set member is stored once.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "norvane/core/value.h"

namespace norvane::wire {

using Bytes = std::vector<uint8_t>;

// Extension type codes of this protocol.
enum class ExtType : int8_t { Date = 1, Url = 2, Set = 3, ScriptDescriptor = 4 };

// Containers nested deeper than this are refused.
inline constexpr int kMaxDepth = 256;

// The argument of the script requests: a four-character type code (e.g.
// 'utxt' as 0x75747874) and the descriptor's flattened data.
struct ScriptDescriptor {
  uint32_t descriptorType = 0;
  Data data;
  friend bool operator==(const ScriptDescriptor&, const ScriptDescriptor&) = default;
};

// Appends MessagePack to a byte buffer. The low-level writers let message
// shapes be built without an intermediate Value.
class Encoder {
 public:
  explicit Encoder(Bytes& out) : out_(out) {}

  void value(const Value& value);
  void descriptor(const ScriptDescriptor& descriptor);

  void nil();
  void boolean(bool b);
  void integer(int64_t v);
  void unsignedInteger(uint64_t v);
  void string(std::string_view utf8);
  void string(std::u16string_view utf16);
  void binary(std::span<const uint8_t> bytes);
  void arrayHeader(uint32_t count);
  void mapHeader(uint32_t count);

 private:
  void ext(ExtType type, std::span<const uint8_t> payload);
  void extHeader(ExtType type, uint32_t length);
  void stringHeader(size_t length);
  void put(uint8_t byte) { out_.push_back(byte); }
  void putBigEndian(uint64_t v, int bytes);
  void putBytes(const void* bytes, size_t count);

  Bytes& out_;
};

// Reads MessagePack from a byte range. Every read answers false on malformed
// or truncated input and leaves the decoder failed; later reads fail too.
class Decoder {
 public:
  explicit Decoder(std::span<const uint8_t> bytes) : next_(bytes.data()), end_(bytes.data() + bytes.size()) {}

  bool value(Value& out);
  // A script descriptor extension (false for any other value).
  bool descriptor(ScriptDescriptor& out);
  // True when the next value is a script descriptor extension.
  bool atDescriptor() const;
  // True when the next value is nil (without consuming it).
  bool atNil() const { return !failed_ && next_ < end_ && *next_ == 0xc0; }

  bool arrayHeader(uint32_t& count);
  bool mapHeader(uint32_t& count);
  bool string(std::string& utf8);
  bool unsignedInteger(uint64_t& v);
  bool boolean(bool& b);
  // Skips one value of any kind.
  bool skip();

  bool failed() const { return failed_; }
  bool atEnd() const { return next_ == end_; }
  size_t remaining() const { return static_cast<size_t>(end_ - next_); }

 private:
  bool valueAt(Value& out, int depth);
  bool skipAt(int depth);
  bool fail() {
    failed_ = true;
    return false;
  }
  bool take(size_t count, const uint8_t*& bytes);
  bool bigEndian(int bytes, uint64_t& v);
  bool lengthOf(uint8_t marker, uint32_t& length);

  const uint8_t* next_;
  const uint8_t* end_;
  bool failed_ = false;
};

// One value as a standalone buffer.
Bytes encodeValue(const Value& value);
// Exactly one value filling `bytes`; false otherwise.
bool decodeValue(std::span<const uint8_t> bytes, Value& out);

}  // namespace norvane::wire
