#include "norvane/wire/message.h"

#include <gtest/gtest.h>

#include "norvane/wire/operations.h"

namespace norvane::wire {
namespace {

TEST(Message, RequestRoundTripsWithEveryArgumentKind) {
  Request request;
  request.operation = "executeSource:function:param:handler:";
  request.id = 1ULL << 40;
  request.arguments = {Value(String::fromUtf8("return 1")), Value(String::fromUtf8("run")),
                       ScriptDescriptor{0x6c697374, Data{9, 8, 7}}};
  request.noReply = true;
  Bytes bytes;
  encodeRequest(request, bytes);
  Request back;
  ASSERT_TRUE(decodeRequest(bytes, back));
  EXPECT_EQ(back.operation, request.operation);
  EXPECT_EQ(back.id, request.id);
  EXPECT_TRUE(back.noReply);
  ASSERT_EQ(back.arguments.size(), 3u);
  EXPECT_EQ(*argumentValue(back.arguments[1]), Value(String::fromUtf8("run")));
  ASSERT_NE(argumentDescriptor(back.arguments[2]), nullptr);
  EXPECT_EQ(*argumentDescriptor(back.arguments[2]), (ScriptDescriptor{0x6c697374, Data{9, 8, 7}}));
}

TEST(Message, FileReferencesKeepTheirKind) {
  const Value references[] = {Value(Data{1, 2, 3}), Value(Url{String::fromUtf8("file:///tmp/a%20b.txt")}),
                              Value(String::fromUtf8("/tmp/a b.txt")), Value()};
  for (const Value& reference : references) {
    Request request{"metaDataForFile:", 7, {reference}, false};
    Bytes bytes;
    encodeRequest(request, bytes);
    Request back;
    ASSERT_TRUE(decodeRequest(bytes, back));
    EXPECT_EQ(argumentValue(back.arguments[0])->type(), reference.type());
    EXPECT_EQ(*argumentValue(back.arguments[0]), reference);
  }
}

TEST(Message, ReplyRoundTrips) {
  Dictionary result;
  result.set(String::fromLatin1("kMDItemTextContent"), Value(String::fromUtf8("text")));
  const Reply replies[] = {
      {3, Value(result), false, ""},
      {4, Value(true), true, ""},
      {5, Value(false), false, ""},
      {6, Value(), false, "unknown operation frobnicate:"},
  };
  for (const Reply& reply : replies) {
    Bytes bytes;
    encodeReply(reply, bytes);
    Reply back;
    ASSERT_TRUE(decodeReply(bytes, back));
    EXPECT_EQ(back.id, reply.id);
    EXPECT_EQ(back.result, reply.result);
    EXPECT_EQ(back.boxed, reply.boxed);
    EXPECT_EQ(back.error, reply.error);
  }
}

TEST(Message, DecoderSkipsUnknownKeysAndNeedsTheRequiredOnes) {
  Bytes withExtra;
  {
    Encoder e(withExtra);
    e.mapHeader(4);
    e.string(std::string_view("trace"));
    e.arrayHeader(1);
    e.value(Value(Date{1}));
    e.string(std::string_view("op"));
    e.string(std::string_view("ping"));
    e.string(std::string_view("id"));
    e.unsignedInteger(9);
    e.string(std::string_view("args"));
    e.arrayHeader(0);
  }
  Request request;
  ASSERT_TRUE(decodeRequest(withExtra, request));
  EXPECT_EQ(request.operation, "ping");
  EXPECT_EQ(request.id, 9u);

  Bytes missingId;
  {
    Encoder e(missingId);
    e.mapHeader(2);
    e.string(std::string_view("op"));
    e.string(std::string_view("ping"));
    e.string(std::string_view("args"));
    e.arrayHeader(0);
  }
  EXPECT_FALSE(decodeRequest(missingId, request));

  Bytes notAMap = encodeValue(Value(Array{}));
  EXPECT_FALSE(decodeRequest(notAMap, request));
  Reply reply;
  EXPECT_FALSE(decodeReply(notAMap, reply));
}

TEST(Message, RefusesWrongFieldTypes) {
  auto build = [](auto&& fill) {
    Bytes b;
    Encoder e(b);
    fill(e);
    return b;
  };
  const Bytes negativeId = build([](Encoder& e) {
    e.mapHeader(3);
    e.string(std::string_view("op"));
    e.string(std::string_view("ping"));
    e.string(std::string_view("id"));
    e.integer(-1);
    e.string(std::string_view("args"));
    e.arrayHeader(0);
  });
  const Bytes opNotString = build([](Encoder& e) {
    e.mapHeader(3);
    e.string(std::string_view("op"));
    e.integer(1);
    e.string(std::string_view("id"));
    e.integer(1);
    e.string(std::string_view("args"));
    e.arrayHeader(0);
  });
  const Bytes argsNotArray = build([](Encoder& e) {
    e.mapHeader(3);
    e.string(std::string_view("op"));
    e.string(std::string_view("ping"));
    e.string(std::string_view("id"));
    e.integer(1);
    e.string(std::string_view("args"));
    e.nil();
  });
  Request request;
  EXPECT_FALSE(decodeRequest(negativeId, request));
  EXPECT_FALSE(decodeRequest(opNotString, request));
  EXPECT_FALSE(decodeRequest(argsNotArray, request));
}

TEST(Message, TruncatedMessagesAreRefusedAtEveryLength) {
  Request request{"supportsFile:", 12, {Value(String::fromUtf8("/etc/hostname"))}, false};
  Bytes bytes;
  encodeRequest(request, bytes);
  for (size_t n = 0; n < bytes.size(); ++n) {
    Request back;
    EXPECT_FALSE(decodeRequest(std::span<const uint8_t>(bytes).first(n), back)) << n;
  }
  Reply reply{12, Value(true), true, ""};
  Bytes replyBytes;
  encodeReply(reply, replyBytes);
  for (size_t n = 0; n < replyBytes.size(); ++n) {
    Reply back;
    EXPECT_FALSE(decodeReply(std::span<const uint8_t>(replyBytes).first(n), back)) << n;
  }
}

}  // namespace
}  // namespace norvane::wire
