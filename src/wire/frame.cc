#include "norvane/wire/frame.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace norvane::wire {

std::string_view ioStatusName(IoStatus status) {
  switch (status) {
    case IoStatus::Ok:
      return "ok";
    case IoStatus::Closed:
      return "closed";
    case IoStatus::Truncated:
      return "truncated frame";
    case IoStatus::TooLarge:
      return "frame too large";
    case IoStatus::Empty:
      return "empty frame";
    case IoStatus::Timeout:
      return "timed out";
    case IoStatus::Error:
      return "I/O error";
  }
  return "?";
}

namespace {

uint32_t loadLittleEndian32(const uint8_t* p) {
  return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

void storeLittleEndian32(uint32_t v, uint8_t* p) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}

// Waits until `fd` is ready for `events`. Ok, Timeout or Error.
IoStatus waitFor(int fd, short events, int timeoutMs) {
  pollfd p{fd, events, 0};
  for (;;) {
    int n = ::poll(&p, 1, timeoutMs);
    if (n > 0) return IoStatus::Ok;  // readiness or hang-up; the next call tells
    if (n == 0) return IoStatus::Timeout;
    if (errno != EINTR) return IoStatus::Error;
  }
}

// Reads exactly `length` bytes. `started` tells whether a frame has begun, so
// that an end of stream is Closed before and Truncated after.
IoStatus readExactly(int fd, uint8_t* into, size_t length, int timeoutMs, bool started) {
  size_t done = 0;
  while (done < length) {
    ssize_t n = ::recv(fd, into + done, length - done, MSG_DONTWAIT);
    if (n < 0 && errno == ENOTSOCK) n = ::read(fd, into + done, length - done);
    if (n > 0) {
      done += static_cast<size_t>(n);
      continue;
    }
    if (n == 0) return started || done > 0 ? IoStatus::Truncated : IoStatus::Closed;
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return IoStatus::Error;
    if (IoStatus s = waitFor(fd, POLLIN, timeoutMs); s != IoStatus::Ok) return s;
  }
  return IoStatus::Ok;
}

IoStatus checkLength(uint32_t length) {
  if (length == 0) return IoStatus::Empty;
  if (length > kMaxFrameLength) return IoStatus::TooLarge;
  return IoStatus::Ok;
}

}  // namespace

IoStatus readFrame(int fd, Bytes& body, int timeoutMs) {
  uint8_t header[kFrameHeaderLength];
  if (IoStatus s = readExactly(fd, header, sizeof header, timeoutMs, false); s != IoStatus::Ok) return s;
  const uint32_t length = loadLittleEndian32(header);
  if (IoStatus s = checkLength(length); s != IoStatus::Ok) return s;
  body.resize(length);
  return readExactly(fd, body.data(), length, timeoutMs, true);
}

IoStatus writeFrame(int fd, std::span<const uint8_t> body, int timeoutMs) {
  if (body.size() > kMaxFrameLength) return IoStatus::TooLarge;
  if (body.empty()) return IoStatus::Empty;
  uint8_t header[kFrameHeaderLength];
  storeLittleEndian32(static_cast<uint32_t>(body.size()), header);

  iovec parts[2] = {{header, sizeof header}, {const_cast<uint8_t*>(body.data()), body.size()}};
  size_t total = sizeof header + body.size();
  size_t done = 0;
  bool socket = true;
  while (done < total) {
    // Skip what was written already.
    iovec pending[2];
    int count = 0;
    size_t skip = done;
    for (const iovec& part : parts) {
      if (skip >= part.iov_len) {
        skip -= part.iov_len;
        continue;
      }
      pending[count++] = {static_cast<uint8_t*>(part.iov_base) + skip, part.iov_len - skip};
      skip = 0;
    }
    ssize_t n;
    if (socket) {
      msghdr message{};
      message.msg_iov = pending;
      message.msg_iovlen = static_cast<size_t>(count);
      n = ::sendmsg(fd, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
      if (n < 0 && errno == ENOTSOCK) {
        socket = false;
        continue;
      }
    } else {
      n = ::writev(fd, pending, count);
    }
    if (n >= 0) {
      done += static_cast<size_t>(n);
      continue;
    }
    if (errno == EINTR) continue;
    if (errno == EPIPE || errno == ECONNRESET) return IoStatus::Closed;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return IoStatus::Error;
    if (IoStatus s = waitFor(fd, POLLOUT, timeoutMs); s != IoStatus::Ok) return s;
  }
  return IoStatus::Ok;
}

IoStatus FrameReader::next(std::span<const uint8_t>& body) {
  constexpr size_t kChunk = 64 * 1024;
  for (;;) {
    size_t consumed = 0;
    IoStatus status = parseFrame({buffer_.data() + begin_, end_ - begin_}, body, consumed);
    if (status == IoStatus::Ok) {
      begin_ += consumed;
      return status;
    }
    if (status != IoStatus::Truncated) return status;

    // Make room: move what is left to the front, and grow to hold the whole
    // frame once its length is known.
    if (begin_ > 0) {
      std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
      end_ -= begin_;
      begin_ = 0;
    }
    size_t wanted = end_ + kChunk;
    if (end_ >= kFrameHeaderLength) wanted = std::max(wanted, kFrameHeaderLength + loadLittleEndian32(buffer_.data()));
    if (buffer_.size() < wanted) buffer_.resize(wanted);

    ssize_t n = ::recv(fd_, buffer_.data() + end_, buffer_.size() - end_, 0);
    if (n < 0 && errno == ENOTSOCK) n = ::read(fd_, buffer_.data() + end_, buffer_.size() - end_);
    if (n > 0) {
      end_ += static_cast<size_t>(n);
    } else if (n == 0) {
      return end_ == 0 ? IoStatus::Closed : IoStatus::Truncated;
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      return IoStatus::Timeout;
    } else if (errno != EINTR) {
      return IoStatus::Error;
    }
  }
}

IoStatus parseFrame(std::span<const uint8_t> bytes, std::span<const uint8_t>& body, size_t& consumed) {
  if (bytes.size() < kFrameHeaderLength) return IoStatus::Truncated;
  const uint32_t length = loadLittleEndian32(bytes.data());
  if (IoStatus s = checkLength(length); s != IoStatus::Ok) return s;
  if (bytes.size() - kFrameHeaderLength < length) return IoStatus::Truncated;
  body = bytes.subspan(kFrameHeaderLength, length);
  consumed = kFrameHeaderLength + length;
  return IoStatus::Ok;
}

void appendFrame(Bytes& out, std::span<const uint8_t> body) {
  uint8_t header[kFrameHeaderLength];
  storeLittleEndian32(static_cast<uint32_t>(body.size()), header);
  out.insert(out.end(), header, header + sizeof header);
  out.insert(out.end(), body.begin(), body.end());
}

}  // namespace norvane::wire
