#include "norvane/wire/frame.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace norvane::wire {
namespace {

struct SocketPair {
  int fds[2] = {-1, -1};
  SocketPair() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0); }
  ~SocketPair() {
    for (int fd : fds)
      if (fd >= 0) ::close(fd);
  }
  void closeEnd(int i) {
    ::close(fds[i]);
    fds[i] = -1;
  }
  void writeRaw(const Bytes& bytes) {
    ASSERT_EQ(::write(fds[0], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
};

Bytes header(uint32_t length) {
  return {static_cast<uint8_t>(length), static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length >> 16),
          static_cast<uint8_t>(length >> 24)};
}

TEST(Frame, WritesLittleEndianLengthThenBody) {
  SocketPair pair;
  const Bytes body = {0x93, 0x01, 0x02, 0x03};
  ASSERT_EQ(writeFrame(pair.fds[0], body), IoStatus::Ok);
  uint8_t raw[16];
  ASSERT_EQ(::read(pair.fds[1], raw, sizeof raw), 8);
  EXPECT_EQ(Bytes(raw, raw + 4), header(4));
  EXPECT_EQ(Bytes(raw + 4, raw + 8), body);
}

TEST(Frame, RoundTripsSeveralFramesInOrder) {
  SocketPair pair;
  for (uint8_t i = 1; i <= 5; ++i) ASSERT_EQ(writeFrame(pair.fds[0], Bytes(i * 100, i)), IoStatus::Ok);
  Bytes body;
  for (uint8_t i = 1; i <= 5; ++i) {
    ASSERT_EQ(readFrame(pair.fds[1], body, 1000), IoStatus::Ok);
    EXPECT_EQ(body, Bytes(i * 100, i));
  }
}

TEST(Frame, LargeFrameCrossesTheSocketBufferWithAReaderThread) {
  SocketPair pair;
  Bytes big(8 << 20);
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<uint8_t>(i * 31);
  Bytes received;
  IoStatus readStatus = IoStatus::Error;
  std::thread reader([&] { readStatus = readFrame(pair.fds[1], received, 5000); });
  EXPECT_EQ(writeFrame(pair.fds[0], big, 5000), IoStatus::Ok);
  reader.join();
  EXPECT_EQ(readStatus, IoStatus::Ok);
  EXPECT_EQ(received, big);
}

TEST(Frame, EndOfStreamBeforeAFrameIsClosed) {
  SocketPair pair;
  pair.closeEnd(0);
  Bytes body;
  EXPECT_EQ(readFrame(pair.fds[1], body, 1000), IoStatus::Closed);
}

TEST(Frame, EndOfStreamInsideAFrameIsTruncated) {
  struct Case {
    const char* what;
    Bytes bytes;
  };
  const Case cases[] = {
      {"half a header", {0x05, 0x00}},
      {"header without body", header(5)},
      {"short body",
       [] {
         Bytes b = header(5);
         b.push_back(0xc0);
         return b;
       }()},
  };
  for (const Case& c : cases) {
    SocketPair pair;
    pair.writeRaw(c.bytes);
    pair.closeEnd(0);
    Bytes body;
    EXPECT_EQ(readFrame(pair.fds[1], body, 1000), IoStatus::Truncated) << c.what;
  }
}

TEST(Frame, RefusesOversizedAndEmptyLengths) {
  {
    SocketPair pair;
    pair.writeRaw(header(kMaxFrameLength + 1));
    Bytes body;
    EXPECT_EQ(readFrame(pair.fds[1], body, 1000), IoStatus::TooLarge);
    EXPECT_TRUE(body.empty());  // nothing allocated for the lie
  }
  {
    SocketPair pair;
    pair.writeRaw(header(0xffffffff));
    Bytes body;
    EXPECT_EQ(readFrame(pair.fds[1], body, 1000), IoStatus::TooLarge);
  }
  {
    SocketPair pair;
    pair.writeRaw(header(0));
    Bytes body;
    EXPECT_EQ(readFrame(pair.fds[1], body, 1000), IoStatus::Empty);
  }
  SocketPair pair;
  EXPECT_EQ(writeFrame(pair.fds[0], Bytes{}), IoStatus::Empty);
}

TEST(Frame, WriterRefusesBodiesAboveTheLimit) {
  SocketPair pair;
  // Left uninitialised: the writer must refuse it without reading it.
  const size_t size = size_t{kMaxFrameLength} + 1;
  std::unique_ptr<uint8_t[]> huge(new uint8_t[size]);
  EXPECT_EQ(writeFrame(pair.fds[0], std::span<const uint8_t>(huge.get(), size)), IoStatus::TooLarge);
}

TEST(Frame, ReadTimesOutWhenNothingArrives) {
  SocketPair pair;
  Bytes body;
  EXPECT_EQ(readFrame(pair.fds[1], body, 50), IoStatus::Timeout);
}

TEST(Frame, WriteToAClosedPeerIsClosedNotSigpipe) {
  SocketPair pair;
  pair.closeEnd(1);
  EXPECT_EQ(writeFrame(pair.fds[0], Bytes{0xc0}, 1000), IoStatus::Closed);
}

TEST(Frame, WorksOnPipesToo) {
  int fds[2];
  ASSERT_EQ(::pipe(fds), 0);
  ASSERT_EQ(writeFrame(fds[1], Bytes{0xc3}), IoStatus::Ok);
  Bytes body;
  EXPECT_EQ(readFrame(fds[0], body, 1000), IoStatus::Ok);
  EXPECT_EQ(body, Bytes{0xc3});
  ::close(fds[0]);
  ::close(fds[1]);
}

std::atomic<int> signalsSeen{0};
void countSignal(int) {
  signalsSeen.fetch_add(1);
}

TEST(Frame, SignalsDuringAReadDoNotBreakIt) {
  struct sigaction action {};
  action.sa_handler = countSignal;  // no SA_RESTART: calls fail with EINTR
  struct sigaction previous {};
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &previous), 0);

  SocketPair pair;
  Bytes body;
  IoStatus status = IoStatus::Error;
  std::atomic<bool> started{false};
  std::thread reader([&] {
    started = true;
    status = readFrame(pair.fds[1], body, 5000);
  });
  while (!started) std::this_thread::yield();
  for (int i = 0; i < 5; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ::pthread_kill(reader.native_handle(), SIGUSR1);
  }
  Bytes frame = header(1);
  frame.push_back(0xc2);
  pair.writeRaw(frame);
  reader.join();
  ::sigaction(SIGUSR1, &previous, nullptr);
  EXPECT_GE(signalsSeen.load(), 1);
  EXPECT_EQ(status, IoStatus::Ok);
  EXPECT_EQ(body, Bytes{0xc2});
}

TEST(Frame, ParseFrameInMemory) {
  Bytes stream;
  appendFrame(stream, Bytes{1, 2, 3});
  appendFrame(stream, Bytes{4});
  std::span<const uint8_t> body;
  size_t consumed = 0;
  ASSERT_EQ(parseFrame(stream, body, consumed), IoStatus::Ok);
  EXPECT_EQ(Bytes(body.begin(), body.end()), (Bytes{1, 2, 3}));
  EXPECT_EQ(consumed, 7u);
  ASSERT_EQ(parseFrame(std::span<const uint8_t>(stream).subspan(consumed), body, consumed), IoStatus::Ok);
  EXPECT_EQ(Bytes(body.begin(), body.end()), (Bytes{4}));

  EXPECT_EQ(parseFrame(std::span<const uint8_t>(stream).first(5), body, consumed), IoStatus::Truncated);
  EXPECT_EQ(parseFrame(std::span<const uint8_t>(stream).first(3), body, consumed), IoStatus::Truncated);
  Bytes huge = header(kMaxFrameLength + 1);
  EXPECT_EQ(parseFrame(huge, body, consumed), IoStatus::TooLarge);
}

TEST(FrameReader, ReadsFramesThatArriveTogether) {
  SocketPair pair;
  Bytes stream;
  for (uint8_t i = 1; i <= 10; ++i) appendFrame(stream, Bytes(i, i));
  pair.writeRaw(stream);
  FrameReader reader(pair.fds[1]);
  std::span<const uint8_t> body;
  for (uint8_t i = 1; i <= 10; ++i) {
    ASSERT_EQ(reader.next(body), IoStatus::Ok);
    EXPECT_EQ(Bytes(body.begin(), body.end()), Bytes(i, i));
  }
  pair.closeEnd(0);
  EXPECT_EQ(reader.next(body), IoStatus::Closed);
}

TEST(FrameReader, ReadsAFrameLargerThanItsBufferAcrossManyWrites) {
  SocketPair pair;
  Bytes big(3 << 20);
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<uint8_t>(i * 13);
  std::thread writer([&] {
    writeFrame(pair.fds[0], Bytes{0xc0});
    writeFrame(pair.fds[0], big);
    writeFrame(pair.fds[0], Bytes{0xc3});
  });
  FrameReader reader(pair.fds[1]);
  std::span<const uint8_t> body;
  ASSERT_EQ(reader.next(body), IoStatus::Ok);
  EXPECT_EQ(Bytes(body.begin(), body.end()), Bytes{0xc0});
  ASSERT_EQ(reader.next(body), IoStatus::Ok);
  EXPECT_TRUE(std::equal(body.begin(), body.end(), big.begin(), big.end()));
  ASSERT_EQ(reader.next(body), IoStatus::Ok);
  EXPECT_EQ(Bytes(body.begin(), body.end()), Bytes{0xc3});
  writer.join();
}

TEST(FrameReader, RefusesBadLengthsAndTruncation) {
  struct Case {
    const char* what;
    Bytes bytes;
    IoStatus status;
  };
  Bytes shortBody = header(3);
  shortBody.push_back(0x01);
  const Case cases[] = {
      {"oversized", header(kMaxFrameLength + 1), IoStatus::TooLarge},
      {"empty", header(0), IoStatus::Empty},
      {"short body", shortBody, IoStatus::Truncated},
      {"half a header", {0x01, 0x00}, IoStatus::Truncated},
  };
  for (const Case& c : cases) {
    SocketPair pair;
    pair.writeRaw(c.bytes);
    pair.closeEnd(0);
    FrameReader reader(pair.fds[1]);
    std::span<const uint8_t> body;
    EXPECT_EQ(reader.next(body), c.status) << c.what;
  }
}

TEST(FrameReader, SocketReceiveTimeoutGivesTimeout) {
  SocketPair pair;
  timeval limit{0, 50000};
  ASSERT_EQ(::setsockopt(pair.fds[1], SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit), 0);
  FrameReader reader(pair.fds[1]);
  std::span<const uint8_t> body;
  EXPECT_EQ(reader.next(body), IoStatus::Timeout);
}

}  // namespace
}  // namespace norvane::wire
