// Frames and MessagePack from arbitrary bytes: decoding must never crash,
// and whatever decodes must encode and decode again to the same bytes.
#include <cstdint>
#include <cstdlib>
#include <span>

#include "norvane/wire/frame.h"
#include "norvane/wire/message.h"

using namespace norvane;
using namespace norvane::wire;

namespace {

void check(bool condition) {
  if (!condition) std::abort();
}

void roundTripValue(std::span<const uint8_t> bytes) {
  Value value;
  if (!decodeValue(bytes, value)) return;
  Bytes once = encodeValue(value);
  Value again;
  check(decodeValue(once, again));
  // Bytes, not values, are compared: a NaN is not equal to itself.
  check(encodeValue(again) == once);
}

void roundTripMessages(std::span<const uint8_t> body) {
  Request request;
  if (decodeRequest(body, request)) {
    Bytes once;
    encodeRequest(request, once);
    Request again;
    check(decodeRequest(once, again));
    Bytes twice;
    encodeRequest(again, twice);
    check(twice == once);
  }
  Reply reply;
  if (decodeReply(body, reply)) {
    Bytes once;
    encodeReply(reply, once);
    Reply again;
    check(decodeReply(once, again));
    Bytes twice;
    encodeReply(again, twice);
    check(twice == once);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::span<const uint8_t> input(data, size);
  roundTripValue(input);
  roundTripMessages(input);

  // The same bytes as a stream of frames.
  std::span<const uint8_t> body;
  size_t consumed = 0;
  while (parseFrame(input, body, consumed) == IoStatus::Ok) {
    roundTripValue(body);
    roundTripMessages(body);
    Bytes framed;
    appendFrame(framed, body);
    check(framed.size() == consumed);
    input = input.subspan(consumed);
  }
  return 0;
}
