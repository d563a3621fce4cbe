// The command-line tool's subcommand framework.
//
// Each subcommand lives in a file cmd_<name>.cc of this folder and registers
// itself with a static Registration:
//
//   namespace norvane::cli {
//   namespace {
//   int runDecode(const Invocation& in) { ... }
//   const Registration kDecode{{
//       .name = "decode",
//       .summary = "decode markup bytes into text",
//       .usage = "norvane decode [--json] [-o FILE] FILE|-",
//       .options = {{"output", 'o', true, "write to FILE instead of stdout"}},
//       .minPositionals = 1, .maxPositionals = 1,
//       .run = runDecode}};
//   }  // namespace
//   }  // namespace norvane::cli
//
// The framework parses options ("--name", "--name=value", "--name value",
// "-x", "-x value", "--" ends options), answers --help for every command,
// adds --json to every command, and maps outcomes to exit codes: 0 success,
// 1 failure (one line on stderr), 2 bad usage.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace norvane::cli {

struct Option {
  std::string name;  // long name without "--"
  char shortName = 0;
  bool takesValue = false;
  std::string help;
};

struct Invocation;
using RunFunction = int (*)(const Invocation&);

struct Command {
  std::string name;
  std::string summary;
  std::string usage;  // one or more lines, shown by --help
  std::vector<Option> options;
  size_t minPositionals = 0;
  size_t maxPositionals = SIZE_MAX;
  RunFunction run = nullptr;
  std::string details;  // optional extra text for --help
};

struct Invocation {
  const Command* command = nullptr;
  std::set<std::string> flags;                             // long names of options given without a value
  std::map<std::string, std::vector<std::string>> values;  // long name -> values in order
  std::vector<std::string> positionals;
  bool json = false;

  bool has(std::string_view name) const;
  // The last value of an option, if given.
  std::optional<std::string> value(std::string_view name) const;
};

class Registration {
 public:
  explicit Registration(Command command);
};

const std::vector<Command>& registeredCommands();

// Exit codes.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kUsage = 2;

// Prints "norvane: <message>" to stderr and answers kFailure.
int fail(std::string_view message);
// Prints "norvane <command>: <message>" and a hint to --help; answers kUsage.
int usageError(const Invocation& in, std::string_view message);

// Reads a whole file, "-" meaning standard input. Answers nullopt and sets
// `error` to a one-line reason on failure.
std::optional<std::string> readInput(const std::string& path, std::string* error);

// Writes to the -o/--output file when given, else standard output. Answers
// false and prints the failure when the file cannot be written.
bool writeOutput(const Invocation& in, std::string_view text);

// Quotes a string for JSON output.
std::string jsonQuote(std::string_view utf8);

}  // namespace norvane::cli
