#include "command.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

namespace norvane::cli {

namespace {
std::vector<Command>& commandList() {
  static std::vector<Command> commands;
  return commands;
}
}  // namespace

bool Invocation::has(std::string_view name) const {
  return flags.count(std::string(name)) || values.count(std::string(name));
}

std::optional<std::string> Invocation::value(std::string_view name) const {
  auto it = values.find(std::string(name));
  if (it == values.end() || it->second.empty()) return std::nullopt;
  return it->second.back();
}

Registration::Registration(Command command) {
  auto& commands = commandList();
  commands.push_back(std::move(command));
  std::sort(commands.begin(), commands.end(), [](const Command& a, const Command& b) { return a.name < b.name; });
}

const std::vector<Command>& registeredCommands() {
  return commandList();
}

int fail(std::string_view message) {
  std::fflush(stdout);
  std::cerr << "norvane: " << message << '\n';
  return kFailure;
}

int usageError(const Invocation& in, std::string_view message) {
  std::fflush(stdout);
  std::cerr << "norvane " << in.command->name << ": " << message << "\n"
            << "Try 'norvane " << in.command->name << " --help'.\n";
  return kUsage;
}

std::optional<std::string> readInput(const std::string& path, std::string* error) {
  if (path == "-") {
    std::string data((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    return data;
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    if (error) *error = path + ": " + std::strerror(errno);
    return std::nullopt;
  }
  std::ostringstream buffer;
  buffer << file.rdbuf();
  if (file.bad()) {
    if (error) *error = path + ": read error";
    return std::nullopt;
  }
  return buffer.str();
}

bool writeOutput(const Invocation& in, std::string_view text) {
  if (auto path = in.value("output"); path && *path != "-") {
    std::ofstream file(*path, std::ios::binary | std::ios::trunc);
    if (!file || !file.write(text.data(), static_cast<std::streamsize>(text.size()))) {
      fail(*path + ": " + std::strerror(errno));
      return false;
    }
    return true;
  }
  std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
  std::cout.flush();
  return static_cast<bool>(std::cout);
}

std::string jsonQuote(std::string_view utf8) {
  std::string out = "\"";
  for (unsigned char c : utf8) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (c < 0x20) {
          char escape[8];
          std::snprintf(escape, sizeof escape, "\\u%04x", c);
          out += escape;
        } else {
          out.push_back(static_cast<char>(c));
        }
    }
  }
  out.push_back('"');
  return out;
}

}  // namespace norvane::cli
