// norvane: the command-line face of the library and the helper service.
#include <cstring>
#include <exception>
#include <iostream>
#include <string>

#include "command.h"

namespace norvane::cli {
namespace {

void printMainHelp(std::ostream& out) {
  out << "usage: norvane <command> [options] [arguments]\n"
         "       norvane --help | --version\n\n"
         "Commands:\n";
  size_t width = 0;
  for (const auto& c : registeredCommands()) width = std::max(width, c.name.size());
  for (const auto& c : registeredCommands()) {
    out << "  " << c.name << std::string(width - c.name.size() + 2, ' ') << c.summary << '\n';
  }
  out << "\nEvery command takes --help and --json. Exit status: 0 success, 1 failure, 2 bad usage.\n";
}

void printCommandHelp(const Command& c) {
  std::cout << "usage: " << c.usage << "\n\n" << c.summary << "\n";
  if (!c.details.empty()) std::cout << '\n' << c.details << (c.details.back() == '\n' ? "" : "\n");
  std::cout << "\nOptions:\n";
  auto line = [](const std::string& flag, const std::string& help) {
    std::cout << "  " << flag << std::string(flag.size() < 24 ? 24 - flag.size() : 1, ' ') << help << '\n';
  };
  for (const auto& o : c.options) {
    std::string flag = o.shortName ? std::string("-") + o.shortName + ", --" + o.name : "    --" + o.name;
    if (o.takesValue) flag += " VALUE";
    line(flag, o.help);
  }
  line("    --json", "machine-readable output");
  line("-h, --help", "show this help");
}

const Option* findLong(const Command& c, std::string_view name) {
  for (const auto& o : c.options) {
    if (o.name == name) return &o;
  }
  return nullptr;
}

const Option* findShort(const Command& c, char name) {
  for (const auto& o : c.options) {
    if (o.shortName == name) return &o;
  }
  return nullptr;
}

// Parses argv[2...] into `in`. Answers an error message, empty on success;
// sets `help` when --help was asked for.
std::string parse(const Command& c, int argc, char** argv, Invocation& in, bool& help) {
  in.command = &c;
  bool optionsEnded = false;
  for (int i = 2; i < argc; ++i) {
    std::string arg = argv[i];
    if (optionsEnded || arg == "-" || arg.size() < 2 || arg[0] != '-') {
      in.positionals.push_back(arg);
      continue;
    }
    if (arg == "--") {
      optionsEnded = true;
      continue;
    }
    if (arg == "--help" || arg == "-h") {
      help = true;
      return {};
    }
    if (arg == "--json") {
      in.json = true;
      continue;
    }
    const Option* option = nullptr;
    std::optional<std::string> inlineValue;
    if (arg.rfind("--", 0) == 0) {
      std::string name = arg.substr(2);
      if (auto eq = name.find('='); eq != std::string::npos) {
        inlineValue = name.substr(eq + 1);
        name.resize(eq);
      }
      option = findLong(c, name);
      if (!option) return "unknown option '" + arg + "'";
    } else {
      option = findShort(c, arg[1]);
      if (!option) return "unknown option '" + arg.substr(0, 2) + "'";
      if (arg.size() > 2) {
        if (!option->takesValue) return "option '" + arg.substr(0, 2) + "' takes no value";
        inlineValue = arg.substr(2);
      }
    }
    if (option->takesValue) {
      if (!inlineValue) {
        if (i + 1 >= argc) return "option '--" + option->name + "' needs a value";
        inlineValue = argv[++i];
      }
      in.values[option->name].push_back(*inlineValue);
    } else {
      if (inlineValue) return "option '--" + option->name + "' takes no value";
      in.flags.insert(option->name);
    }
  }
  if (in.positionals.size() < c.minPositionals) return "missing argument";
  if (in.positionals.size() > c.maxPositionals) return "too many arguments";
  return {};
}

int run(int argc, char** argv) {
  if (argc < 2) {
    printMainHelp(std::cerr);
    return kUsage;
  }
  std::string name = argv[1];
  if (name == "--help" || name == "-h" || name == "help") {
    printMainHelp(std::cout);
    return kSuccess;
  }
  if (name == "--version") {
    std::cout << "norvane " << NORVANE_VERSION << '\n';
    return kSuccess;
  }
  for (const auto& c : registeredCommands()) {
    if (c.name != name) continue;
    Invocation in;
    bool help = false;
    std::string error = parse(c, argc, argv, in, help);
    if (help) {
      printCommandHelp(c);
      return kSuccess;
    }
    if (!error.empty()) return usageError(in, error);
    return c.run(in);
  }
  std::cerr << "norvane: unknown command '" << name << "'\nTry 'norvane --help'.\n";
  return kUsage;
}

}  // namespace
}  // namespace norvane::cli

int main(int argc, char** argv) {
  try {
    return norvane::cli::run(argc, argv);
  } catch (const std::exception& e) {
    return norvane::cli::fail(e.what());
  }
}
