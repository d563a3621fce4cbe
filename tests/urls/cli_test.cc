// The norvane url command, run as a program when it has been built.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

const std::string kProgram = std::string(NORVANE_BINARY_DIR) + "/src/cli/norvane";

// Runs the command line through the shell, with `input` (free of single
// quotes) on standard input; answers the exit status and standard output.
std::pair<int, std::string> run(const std::string& arguments, const std::string& input = "") {
  std::string output;
  std::string command = "printf '%s' '" + input + "' | " + kProgram + " " + arguments + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return {-1, output};
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, n);
  int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

class UrlCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kProgram)) GTEST_SKIP() << "norvane not built";
  }
};

TEST_F(UrlCommand, SimplifiesArgumentsAndStandardInput) {
  auto [status, out] = run("url simplify 'https://www.Example.com/a/index.html?utm_source=x#top' http://x.com/");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(out, "http://example.com/a\nhttp://x.com\n");

  std::tie(status, out) = run("url normalize -", "http://x//a/.\r\n\nhttp://y/b\n");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(out, "http://x/a\nhttp://y/b\n");
}

TEST_F(UrlCommand, JSONAndClassification) {
  auto [status, out] = run("url clean --json ' <http://x.com/> '");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(out, "[{\"result\":\"http://x.com/\",\"url\":\" <http://x.com/> \"}]\n");

  std::tie(status, out) = run("url classify http://ads.example.com/banner.gif john@example.com");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(out,
            "http://ads.example.com/banner.gif\tadvertisement,http,web,remote,downloadable,image-file\n"
            "john@example.com\tmail\n");
}

TEST_F(UrlCommand, UnknownActionIsAUsageError) {
  EXPECT_EQ(run("url tidy http://x").first, 2);
  EXPECT_EQ(run("url").first, 2);
}

}  // namespace
