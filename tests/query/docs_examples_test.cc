// Checks the examples of docs/query-language.md, so that the user guide
// stays true.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "norvane/core/unicode.h"
#include "norvane/query/evaluation.h"
#include "norvane/query/query_terms.h"

namespace norvane::query {
namespace {

struct Block {
  std::string kind;  // "query-examples" or "query-forms"
  bool ignoreCase = false;
  std::vector<std::vector<std::string>> rows;  // the fields of each line
};

// Splits at " → ", trimming each field.
std::vector<std::string> fields(const std::string& line) {
  static const std::string kArrow = " \u2192 ";
  std::vector<std::string> out;
  size_t from = 0;
  for (size_t at; (at = line.find(kArrow, from)) != std::string::npos; from = at + kArrow.size()) {
    out.push_back(line.substr(from, at - from));
  }
  out.push_back(line.substr(from));
  for (std::string& f : out) {
    f.erase(0, f.find_first_not_of(' '));
    f.erase(f.find_last_not_of(' ') + 1);
  }
  return out;
}

std::vector<Block> readBlocks(const std::string& path) {
  std::ifstream file(path);
  std::vector<Block> blocks;
  std::string line;
  Block* current = nullptr;
  while (std::getline(file, line)) {
    if (current) {
      if (line == "```") {
        current = nullptr;
      } else if (!line.empty()) {
        current->rows.push_back(fields(line));
      }
    } else if (line.starts_with("```query-")) {
      std::istringstream info(line.substr(3));
      Block block;
      info >> block.kind;
      std::string word;
      while (info >> word) block.ignoreCase |= word == "ignore-case";
      blocks.push_back(block);
      current = &blocks.back();
    }
  }
  return blocks;
}

class DocsExamples : public ::testing::Test {
 protected:
  void SetUp() override {
    blocks_ = readBlocks(std::string(NORVANE_SOURCE_DIR) + "/docs/query-language.md");
    if (blocks_.empty()) GTEST_SKIP() << "docs/query-language.md has no example blocks";
  }
  std::vector<Block> blocks_;
};

TEST_F(DocsExamples, QueriesMatchAsDocumented) {
  size_t checked = 0;
  for (const Block& block : blocks_) {
    if (block.kind != "query-examples") continue;
    for (const std::vector<std::string>& row : block.rows) {
      ASSERT_EQ(row.size(), 3u) << "malformed example line: " << row.front();
      ASSERT_TRUE(row[2] == "match" || row[2] == "no match") << row[2];
      QueryTerms tree = QueryTerms::withWildcard(utf8ToUtf16(row[0]));
      bool matched = matchesStringWithComparison(tree, String::fromUtf8(row[1]), block.ignoreCase ? 1 : 0);
      EXPECT_EQ(matched, row[2] == "match") << row[0] << " on: " << row[1];
      ++checked;
    }
  }
  EXPECT_GE(checked, 40u);
}

TEST_F(DocsExamples, WrittenFormsAsDocumented) {
  size_t checked = 0;
  for (const Block& block : blocks_) {
    if (block.kind != "query-forms") continue;
    for (const std::vector<std::string>& row : block.rows) {
      ASSERT_EQ(row.size(), 3u) << "malformed form line: " << row.front();
      QueryTerms tree = QueryTerms::withString(utf8ToUtf16(row[0]));
      EXPECT_EQ(tree.standardizedQueryTerm().toUtf8(), row[1]) << row[0];
      EXPECT_EQ(tree.normalizedQueryTerm().toUtf8(), row[2]) << row[0];
      ++checked;
    }
  }
  EXPECT_GE(checked, 5u);
}

}  // namespace
}  // namespace norvane::query
