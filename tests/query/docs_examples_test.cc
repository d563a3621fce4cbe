// Checks the examples of docs/query-language.md, so that the user guide
// stays true.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
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

// The command as the guide describes it: grep-like output and exit status.
class QueryCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    program_ = std::string(NORVANE_BINARY_DIR) + "/src/cli/norvane";
    if (!std::filesystem::exists(program_)) GTEST_SKIP() << "the norvane program is not built";
    dir_ = std::filesystem::temp_directory_path() / ("norvane-query-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir_);
    write("a.txt", "Lorem tempor invidunt ut labore.\nSecond line.\n");
    write("b.txt", "Nothing of interest.\n");
    write("c.html", "<html><head><script>var tempor;</script></head><body><p>Caf\xC3\xA9 tempor</p></body></html>");
    write("d.txt", std::string("\xFF\xFE", 2) + std::string("t\0e\0m\0p\0o\0r\0", 12));
  }
  void TearDown() override {
    if (!dir_.empty()) std::filesystem::remove_all(dir_);
  }
  void write(const std::string& name, const std::string& bytes) {
    std::ofstream(dir_ / name, std::ios::binary) << bytes;
  }
  // Runs the command in the temp folder; answers the exit status and
  // standard output.
  int run(const std::string& arguments, std::string* output) {
    std::string command = "cd '" + dir_.string() + "' && '" + program_ + "' query " + arguments + " 2>/dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return -1;
    output->clear();
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) output->append(buffer, n);
    int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  std::string program_;
  std::filesystem::path dir_;
};

TEST_F(QueryCommand, ListsMatchingFilesWithGrepExitStatus) {
  std::string out;
  EXPECT_EQ(run("'tempor NEXT invidunt' a.txt b.txt", &out), 0);
  EXPECT_EQ(out, "a.txt\n");
  EXPECT_EQ(run("missing a.txt b.txt", &out), 1);
  EXPECT_EQ(out, "");
  EXPECT_EQ(run("tempor", &out), 2);
  EXPECT_EQ(run("AND a.txt", &out), 2);
  EXPECT_EQ(run("tempor nofile.txt", &out), 2);
}

TEST_F(QueryCommand, OptionsAndFileKinds) {
  std::string out;
  // Exact by default; -i ignores case.
  EXPECT_EQ(run("TEMPOR a.txt", &out), 1);
  EXPECT_EQ(run("-i TEMPOR a.txt", &out), 0);
  EXPECT_EQ(run("Cafe c.html", &out), 1);
  EXPECT_EQ(run("--ignore-diacritics Cafe c.html", &out), 0);
  EXPECT_EQ(run("-i --ignore-diacritics cAFE c.html", &out), 0);
  // HTML is searched as the text a reader sees: the script is left out.
  EXPECT_EQ(run("var c.html", &out), 1);
  // UTF-16 after a byte-order mark.
  EXPECT_EQ(run("tempor d.txt", &out), 0);
  EXPECT_EQ(run("--extracts labore a.txt", &out), 0);
  EXPECT_EQ(out, "a.txt\n  1: Lorem tempor invidunt ut labore.\n");
}

TEST_F(QueryCommand, ParseShowsBothForms) {
  std::string out;
  EXPECT_EQ(run("--parse 'Foo AND bar OR NOT baz NEAR/2 qux'", &out), 0);
  EXPECT_EQ(out, "standardized: Foo bar OR -baz qux\nnormalized: foo bar|-baz NEAR/2 qux\n");
}

}  // namespace
}  // namespace norvane::query
