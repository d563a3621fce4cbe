// Frames: a 4-byte little-endian length, then that many bytes holding one
// MessagePack value. A length above kMaxFrameLength, or 0, is refused.
//
// The I/O functions work on blocking stream sockets (also pipes). They
// restart on EINTR, never raise SIGPIPE, and give up after `timeoutMs`
// milliseconds without progress (a negative timeout waits forever).
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "norvane/wire/codec.h"

namespace norvane::wire {

inline constexpr uint32_t kMaxFrameLength = 256u << 20;  // 256 MiB
inline constexpr size_t kFrameHeaderLength = 4;

enum class IoStatus {
  Ok,
  Closed,     // the peer closed the stream (before a frame began)
  Truncated,  // the stream ended inside a frame
  TooLarge,   // the length field is above kMaxFrameLength
  Empty,      // the length field is 0
  Timeout,
  Error,  // an I/O error; errno tells which
};

std::string_view ioStatusName(IoStatus status);

// Reads one frame's body into `body` (replacing its contents).
IoStatus readFrame(int fd, Bytes& body, int timeoutMs = -1);
// Writes the header and `body` in one call where the socket allows.
IoStatus writeFrame(int fd, std::span<const uint8_t> body, int timeoutMs = -1);

// Reads frames through a buffer, so that small frames cost one read call
// each (or less, when several arrive together). Reads block; a receive
// timeout set on the socket (SO_RCVTIMEO) gives Timeout. Restarts on EINTR.
class FrameReader {
 public:
  explicit FrameReader(int fd) : fd_(fd) {}
  // The next frame's body, valid until the next call. Statuses as
  // readFrame's. After a failure the reader should not be used again.
  IoStatus next(std::span<const uint8_t>& body);

 private:
  int fd_;
  Bytes buffer_;
  size_t begin_ = 0;  // unread bytes are buffer_[begin_, end_)
  size_t end_ = 0;
};

// Parses a frame held in memory: answers the body when `bytes` starts with a
// complete frame within the limits, and sets `consumed` to the frame's size.
// `status` tells why not otherwise (Truncated when more bytes are needed).
IoStatus parseFrame(std::span<const uint8_t> bytes, std::span<const uint8_t>& body, size_t& consumed);
// Appends a frame around `body`.
void appendFrame(Bytes& out, std::span<const uint8_t> body);

}  // namespace norvane::wire
