#include "importers/bundle.h"

#include <elf.h>
#include <link.h>
#include <plist/plist.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

namespace norvane::importers {
namespace {

struct PlistFree {
  void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

String takeString(char* utf8) {
  String s = utf8 ? String::fromUtf8(utf8) : String();
  std::free(utf8);
  return s;
}

Value valueOfNode(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      uint8_t b = 0;
      plist_get_bool_val(node, &b);
      return Value(b != 0);
    }
    case PLIST_UINT: {
      uint64_t v = 0;
      plist_get_uint_val(node, &v);
      return Value(static_cast<int64_t>(v));
    }
    case PLIST_REAL: {
      double v = 0;
      plist_get_real_val(node, &v);
      return Value(v);
    }
    case PLIST_STRING: {
      char* s = nullptr;
      plist_get_string_val(node, &s);
      return Value(takeString(s));
    }
    case PLIST_DATA: {
      char* bytes = nullptr;
      uint64_t length = 0;
      plist_get_data_val(node, &bytes, &length);
      Data data(bytes, bytes + length);
      std::free(bytes);
      return Value(std::move(data));
    }
    case PLIST_DATE: {
      int32_t sec = 0, usec = 0;
      plist_get_date_val(node, &sec, &usec);
      return Value(Date{Date::kReferenceDate + sec + usec / 1e6});
    }
    case PLIST_ARRAY: {
      Array array;
      uint32_t n = plist_array_get_size(node);
      array.reserve(n);
      for (uint32_t i = 0; i < n; ++i) array.push_back(valueOfNode(plist_array_get_item(node, i)));
      return Value(std::move(array));
    }
    case PLIST_DICT: {
      Dictionary dictionary;
      plist_dict_iter it = nullptr;
      plist_dict_new_iter(node, &it);
      for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, it, &key, &item);
        if (!item) {
          std::free(key);
          break;
        }
        dictionary.set(takeString(key), valueOfNode(item));
      }
      std::free(it);
      return Value(std::move(dictionary));
    }
    default:
      return Value();
  }
}

bool readFile(const std::string& path, std::string& out) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  out.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

}  // namespace

std::optional<Value> readPropertyList(const std::string& bytes) {
  if (bytes.empty() || bytes.size() > UINT32_MAX) return std::nullopt;
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
  if (!root) return std::nullopt;
  PlistPtr owner(root);
  return valueOfNode(root);
}

std::optional<Bundle> Bundle::bundleWithPath(const std::string& path) {
  std::string bytes;
  if (!readFile(path + "/Info.plist", bytes)) return std::nullopt;
  std::optional<Value> info = readPropertyList(bytes);
  if (!info || !info->isDictionary()) return std::nullopt;
  return Bundle(path, *info->dictionary());
}

String Bundle::bundleIdentifier() const {
  const Value* v = info_.find(u"CFBundleIdentifier");
  return v ? v->asString() : String();
}

std::string Bundle::executablePath() const {
  const Value* v = info_.find(u"CFBundleExecutable");
  if (!v || !v->isString() || v->asString().isEmpty()) return {};
  return path_ + "/" + v->asString().toUtf8();
}

bool Bundle::preflight() const {
  std::string executable = executablePath();
  if (executable.empty()) return false;
  std::ifstream in(executable, std::ios::binary);
  ElfW(Ehdr) header;
  if (!in.read(reinterpret_cast<char*>(&header), sizeof header)) return false;
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return false;
#if __WORDSIZE == 64
  constexpr unsigned char kClass = ELFCLASS64;
#else
  constexpr unsigned char kClass = ELFCLASS32;
#endif
#if defined(__x86_64__)
  constexpr uint16_t kMachine = EM_X86_64;
#elif defined(__aarch64__)
  constexpr uint16_t kMachine = EM_AARCH64;
#elif defined(__i386__)
  constexpr uint16_t kMachine = EM_386;
#else
  constexpr uint16_t kMachine = 0;
#endif
  return header.e_ident[EI_CLASS] == kClass && header.e_type == ET_DYN &&
         (kMachine == 0 || header.e_machine == kMachine);
}

}  // namespace norvane::importers
