#include "norvane/wire/operations.h"

#include <gtest/gtest.h>

#include <set>

namespace norvane::wire {
namespace {

TEST(Operations, EverySynchronousRequestHasAReplyCarryingTwin) {
  size_t synchronous = 0;
  for (const Operation& operation : operations()) {
    if (operation.protocol != Protocol::ImExportHelper) continue;
    ++synchronous;
    const Operation* twin = findOperation(std::string(operation.name) + "handler:");
    ASSERT_NE(twin, nullptr) << operation.name;
    EXPECT_TRUE(twin->hasHandler);
    EXPECT_EQ(twin->protocol, Protocol::ImExportXPC);
    EXPECT_TRUE(std::equal(twin->arguments.begin(), twin->arguments.end(), operation.arguments.begin(),
                           operation.arguments.end()))
        << operation.name;
  }
  EXPECT_EQ(synchronous, 11u);
}

TEST(Operations, NamesAreUniqueAndArgumentCountsMatchTheColons) {
  std::set<std::string_view> names;
  for (const Operation& operation : operations()) {
    EXPECT_TRUE(names.insert(operation.name).second) << operation.name;
    size_t colons = std::count(operation.name.begin(), operation.name.end(), ':');
    EXPECT_EQ(operation.arguments.size() + (operation.hasHandler ? 1 : 0), colons) << operation.name;
  }
}

TEST(Operations, ReplyTypesOfTheTwoBooleanRepliesDiffer) {
  EXPECT_EQ(findOperation("supportsFile:handler:")->reply, ReplyType::BoxedBoolean);
  EXPECT_EQ(findOperation("preflightWebArchiveData:handler:")->reply, ReplyType::Boolean);
  EXPECT_EQ(findOperation("supportsFile:")->reply, ReplyType::Boolean);
  EXPECT_EQ(findOperation("executeFile:function:param:handler:")->reply, ReplyType::Error);
  EXPECT_EQ(findOperation("nonsense:"), nullptr);
  EXPECT_EQ(findOperation("supportsFile"), nullptr);
}

TEST(Operations, ProtocolsOfferWhatTheyDeclare) {
  const Operation* metadata = findOperation("metaDataForFile:");
  const Operation* ping = findOperation("ping");
  const Operation* terminateWithArgument = findOperation("terminate:");
  EXPECT_TRUE(protocolOffers(Protocol::ImExportHelper, *metadata));
  EXPECT_FALSE(protocolOffers(Protocol::ImExportHelper, *ping));
  EXPECT_TRUE(protocolOffers(Protocol::ImExportXPC, *metadata));
  EXPECT_TRUE(protocolOffers(Protocol::ImExportXPC, *ping));
  EXPECT_FALSE(protocolOffers(Protocol::ImExportXPC, *terminateWithArgument));
  EXPECT_TRUE(protocolOffers(Protocol::ServiceObject, *terminateWithArgument));
  const Operation* setImage = findOperation("setImage:");
  ASSERT_NE(setImage, nullptr);
  EXPECT_FALSE(protocolOffers(Protocol::ImExportXPC, *setImage));
  EXPECT_TRUE(protocolOffers(Protocol::ServiceObject, *setImage));
}

struct ArgumentCase {
  const char* operation;
  std::vector<Argument> arguments;
  bool valid;
};

TEST(Operations, ValidatesArgumentTypes) {
  const Value path(String::fromUtf8("/tmp/x"));
  const ArgumentCase cases[] = {
      {"metaDataForFile:", {path}, true},
      {"metaDataForFile:", {Value(Data{1})}, true},
      {"metaDataForFile:", {Value(Url{String::fromUtf8("file:///x")})}, true},
      {"metaDataForFile:", {Value(int64_t{5})}, true},  // any other kind: no file, still runs
      {"metaDataForFile:", {}, false},
      {"metaDataForFile:", {path, path}, false},
      {"metaDataForFile:", {ScriptDescriptor{}}, false},
      {"imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:",
       {path, Value(int64_t{1} << 40), Value(true), Value(int64_t{1})},
       true},
      {"imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:",
       {path, Value(int64_t{128}), Value(true), Value(int64_t{1} << 40)},
       false},
      {"imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:",
       {path, Value(int64_t{128}), Value(int64_t{1}), Value(int64_t{1})},
       false},
      {"imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:",
       {path, Value(1.5), Value(true), Value(int64_t{1})},
       false},
      {"stringFromPDF:type:", {Value(), Value(int64_t{-1})}, true},
      {"stringFromPDF:type:", {path, Value(int64_t{1})}, false},
      {"RTFDWithHTML:baseURL:allowRemoteRequest:charset:", {Value(Data{}), Value(), Value(false), Value()}, true},
      {"RTFDWithHTML:baseURL:allowRemoteRequest:charset:",
       {Value(Data{}), Value(String::fromUtf8("http://x")), Value(false), Value()},
       false},
      {"executeSource:function:param:handler:", {path, path, ScriptDescriptor{1, {}}}, true},
      {"executeSource:function:param:handler:", {path, path, Value()}, true},
      {"executeSource:function:param:handler:", {path, path, Value(Data{})}, false},
      {"executeSource:function:param:handler:", {ScriptDescriptor{}, path, Value()}, false},
      {"ping", {}, true},
      {"ping", {Value()}, false},
      {"terminate:", {Value(Array{})}, true},
      {"setImage:", {Value(String::fromUtf8("x"))}, true},
      {"setImage:", {}, false},
  };
  for (const ArgumentCase& c : cases) {
    const Operation* operation = findOperation(c.operation);
    ASSERT_NE(operation, nullptr) << c.operation;
    std::string why;
    EXPECT_EQ(validateArguments(*operation, c.arguments, &why), c.valid) << c.operation << " " << why;
    EXPECT_EQ(why.empty(), c.valid) << c.operation;
  }
}

TEST(Operations, ValidatesReplies) {
  struct Case {
    const char* operation;
    Reply reply;
    bool valid;
  };
  const Case cases[] = {
      {"metaDataForFile:", {1, Value(Dictionary{}), false, ""}, true},
      {"metaDataForFile:", {1, Value(), false, ""}, true},
      {"metaDataForFile:", {1, Value(Data{}), false, ""}, false},
      {"supportsFile:", {1, Value(true), false, ""}, true},
      {"supportsFile:", {1, Value(true), true, ""}, false},
      {"supportsFile:handler:", {1, Value(false), true, ""}, true},
      {"supportsFile:handler:", {1, Value(false), false, ""}, false},
      {"preflightWebArchiveData:handler:", {1, Value(false), false, ""}, true},
      {"ping", {1, Value(), false, ""}, true},
      {"ping", {1, Value(true), false, ""}, false},
      {"executeFile:function:param:handler:", {1, Value(), false, ""}, true},
      {"PDFImageRepOfFile:", {1, Value(Data{1}), false, ""}, true},
      {"PDFImageRepOfFile:", {1, Value(), false, "refused"}, true},
  };
  for (const Case& c : cases) EXPECT_EQ(validateReply(*findOperation(c.operation), c.reply), c.valid) << c.operation;
}

}  // namespace
}  // namespace norvane::wire
