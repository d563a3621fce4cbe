// The norvane tool as a user meets it: every command has help, bad usage
// exits 2 with a message, failures exit 1 with one line on stderr.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string kTool = NORVANE_BINARY_DIR "/src/cli/norvane";

struct Outcome {
  int status = -1;
  std::string out, err;
};

// Runs the tool with `arguments` (already shell-quoted), stdin from
// `input`, with a private runtime folder so no user's helper is met.
Outcome run(const std::string& arguments, const std::string& input = "") {
  std::string dir = ::testing::TempDir() + "/cli-" + std::to_string(::getpid());
  std::string inFile = dir + "/in", outFile = dir + "/out", errFile = dir + "/err";
  std::system(("mkdir -p " + dir + " && chmod 700 " + dir).c_str());
  std::ofstream(inFile) << input;
  std::string command =
      "XDG_RUNTIME_DIR=" + dir + " " + kTool + " " + arguments + " <" + inFile + " >" + outFile + " 2>" + errFile;
  int raw = std::system(command.c_str());
  Outcome r;
  r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  std::stringstream out, err;
  out << std::ifstream(outFile).rdbuf();
  err << std::ifstream(errFile).rdbuf();
  r.out = out.str();
  r.err = err.str();
  return r;
}

std::vector<std::string> commands() {
  Outcome help = run("--help");
  std::vector<std::string> names;
  std::istringstream lines(help.out);
  std::string line;
  bool inList = false;
  while (std::getline(lines, line)) {
    if (line == "Commands:") {
      inList = true;
      continue;
    }
    if (inList && line.rfind("  ", 0) == 0) {
      names.push_back(line.substr(2, line.find(' ', 2) - 2));
    } else if (inList) {
      break;
    }
  }
  return names;
}

TEST(CliTest, TopLevel) {
  EXPECT_EQ(run("--help").status, 0);
  EXPECT_EQ(run("--version").status, 0);
  Outcome none = run("");
  EXPECT_EQ(none.status, 2);
  Outcome unknown = run("no-such-command");
  EXPECT_EQ(unknown.status, 2);
  EXPECT_NE(unknown.err.find("unknown command"), std::string::npos);
}

TEST(CliTest, EveryCommandHasHelpAndRefusesUnknownOptions) {
  std::vector<std::string> names = commands();
  ASSERT_GE(names.size(), 5u);
  for (const auto& name : names) {
    SCOPED_TRACE(name);
    Outcome help = run(name + " --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("usage: norvane " + name), std::string::npos);
    Outcome bad = run(name + " --no-such-option x");
    EXPECT_EQ(bad.status, 2);
    EXPECT_NE(bad.err.find("unknown option"), std::string::npos);
  }
}

TEST(CliTest, FailuresAreOneLine) {
  for (const char* command : {"html2text", "decode", "error-page"}) {
    SCOPED_TRACE(command);
    Outcome r = run(std::string(command) + " /no/such/file");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1);
    EXPECT_EQ(r.err.rfind("norvane: ", 0), 0u);
  }
}

TEST(CliTest, Html2TextFromStandardInput) {
  Outcome r = run("html2text -", "<p>caf&eacute;</p><p>two</p>");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "caf\xC3\xA9\n\ntwo\n\n");
  Outcome folded = run("html2text --fold-diacritics --json -", "<p>caf&eacute;</p>");
  EXPECT_EQ(folded.status, 0);
  EXPECT_NE(folded.out.find("\"text\":\"cafe\\n\\n\""), std::string::npos);
}

TEST(CliTest, ErrorPageKinds) {
  Outcome error = run("error-page --json -", "<title>404 Not Found</title><body></body>");
  EXPECT_EQ(error.status, 0);
  EXPECT_NE(error.out.find("\"kind\":\"error\""), std::string::npos);
  Outcome limit =
      run("error-page -", "<body>Woah, slow down! You have exceeded the allowed page load frequency.</body>");
  EXPECT_NE(limit.out.find("rate-limit page"), std::string::npos);
  Outcome fine = run("error-page -", "<title>Welcome</title><body>Hello</body>");
  EXPECT_NE(fine.out.find("not an error page"), std::string::npos);
}

}  // namespace
