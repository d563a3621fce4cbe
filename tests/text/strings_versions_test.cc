#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "norvane/core/log.h"
#include "norvane/text/versions.h"

namespace norvane::text {
namespace {

String S(std::string_view utf8) {
  return String::fromUtf8(utf8);
}

TEST(VersionNumbers, KnownOrderings) {
  struct Case {
    const char* receiver;
    const char* other;
    int expected;
  } cases[] = {
      {"1.1", "1.0.4", 1},
      {"1.0.4", "1.0.3", 1},
      {"1.0", "1.0build1", 1},
      {"1.0.1build1", "1.0build1", 1},
      {"1.0beta1", "1.0build1", 1},
      {"1.0.4", "1.0build1", 1},
      {"2.9.2", "2.9.2build1", 1},
      {"2.9.2build1", "2.9.1", 1},
      {"2.9.2", "2.9.1", 1},
      {"1.0.4", "1.0.4", 0},
      {"1.0build1", "1.0build1", 0},
      {"1.0", "1.0.0", 0},
      {" 1.2\n", "1.2", 0},
      {"1.0RC1", "1.0rc1", 0},
      {"1.0alpha2", "1.0beta1", -1},
      {"1.0beta2", "1.0rc1", -1},
      {"1.0rc1", "1.0pb1", -1},
      {"1.0pb1", "1.0", -1},
      {"1.10", "1.9", 1},
      {"", "0", 0},
      {"", "0.1", -1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(compareToVersionNumber(S(c.receiver), S(c.other)), c.expected) << c.receiver << " vs " << c.other;
    EXPECT_EQ(compareToVersionNumber(S(c.other), S(c.receiver)), -c.expected) << c.other << " vs " << c.receiver;
  }
}

TEST(VersionNumbers, Components) {
  auto components = [](const char* text) {
    std::vector<std::string> out;
    for (const String& s : comparableComponentsOfVersionNumber(S(text))) out.push_back(s.toUtf8());
    return out;
  };
  EXPECT_THAT(components("1.0build1"), ::testing::ElementsAre("1", "0", "-4", "1"));
  EXPECT_THAT(components("2.0Beta"), ::testing::ElementsAre("2", "0", "-3", ""));
  EXPECT_THAT(components(" 3 "), ::testing::ElementsAre("3"));
  EXPECT_THAT(components("1.2alpha3"), ::testing::ElementsAre("1", "2", "-5", "3"));
  EXPECT_TRUE(comparableComponentsOfVersionNumber(String()).empty());
}

TEST(VersionNumbers, SelfTestHoldsAndLogsNothing) {
  LogCapture capture;
  EXPECT_TRUE(testVersionNumberComparison());
  EXPECT_TRUE(capture.messages().empty());
}

}  // namespace
}  // namespace norvane::text
