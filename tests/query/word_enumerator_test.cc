#include "norvane/query/word_enumerator.h"

#include <gtest/gtest.h>

namespace norvane::query {
namespace {

TEST(WordEnumerator, EmptyStringGivesNoEnumerator) {
  EXPECT_EQ(FastWordEnumerator::enumeratorWithString(String()), nullptr);
  EXPECT_EQ(FastWordEnumerator::enumeratorWithString(String::empty()), nullptr);
}

}  // namespace
}  // namespace norvane::query
