#include "importers/plugin_host.h"

#include <dlfcn.h>

#include <mutex>
#include <unordered_map>

#include "norvane/importer.h"

namespace norvane::importers {
namespace {

// The values importers build are plain Values on the heap.
Value* unwrap(NorvaneValue* v) {
  return reinterpret_cast<Value*>(v);
}
NorvaneValue* wrap(Value&& v) {
  return reinterpret_cast<NorvaneValue*>(new Value(std::move(v)));
}

// The import running on this thread; norvane_raise marks it.
struct RunningImport {
  bool raised = false;
};
thread_local RunningImport* runningImport = nullptr;

const NorvaneImporterHost kHost = {
    sizeof(NorvaneImporterHost),
    [](const char* utf8, size_t length) {
      return wrap(Value(String::fromUtf8({utf8 ? utf8 : "", utf8 ? length : 0})));
    },
    [](int64_t v) { return wrap(Value(v)); },
    [](double v) { return wrap(Value(v)); },
    [](int v) { return wrap(Value(v != 0)); },
    [](double seconds) { return wrap(Value(Date{seconds})); },
    [](const void* bytes, size_t length) {
      const auto* p = static_cast<const uint8_t*>(bytes);
      return wrap(Value(Data(p, p + (p ? length : 0))));
    },
    [](const char* utf8) { return wrap(Value(Url{String::fromUtf8(utf8 ? utf8 : "")})); },
    []() { return wrap(Value()); },
    []() { return wrap(Value(Array())); },
    []() { return wrap(Value(Dictionary())); },
    [](NorvaneValue* array, NorvaneValue* item) {
      if (Array* a = array ? unwrap(array)->mutableArray() : nullptr; a && item) a->push_back(std::move(*unwrap(item)));
      delete unwrap(item);
    },
    [](NorvaneValue* dictionary, const char* key, NorvaneValue* value) {
      Dictionary* d = dictionary ? unwrap(dictionary)->mutableDictionary() : nullptr;
      if (d && key && value) d->set(String::fromUtf8(key), std::move(*unwrap(value)));
      delete unwrap(value);
    },
    [](NorvaneValue* value) { delete unwrap(value); },
    [](NorvaneValue*, const char*, const char*) {
      if (runningImport) runningImport->raised = true;
    },
};

void* loadedLibrary(const std::string& executable) {
  static std::mutex mutex;
  static std::unordered_map<std::string, void*> libraries;
  std::lock_guard<std::mutex> lock(mutex);
  auto it = libraries.find(executable);
  if (it != libraries.end()) return it->second;
  void* handle = ::dlopen(executable.c_str(), RTLD_NOW | RTLD_LOCAL);
  libraries.emplace(executable, handle);  // a failure is remembered too
  return handle;
}

NorvaneImporterInterface* vtable(void* object) {
  return *static_cast<NorvaneImporterInterface**>(object);
}

void* queryInterface(void* instance, const char* interfaceID) {
  void* out = nullptr;
  if (vtable(instance)->queryInterface(instance, interfaceID, &out) != 0) return nullptr;
  return out;
}

}  // namespace

ImportOutcome runImporter(const FactoryLocation& factory, const std::string& contentType, const std::string& path,
                          std::optional<Dictionary>* attributes) {
  void* library = loadedLibrary(factory.executable);
  if (!library) return ImportOutcome::NoInterface;
  auto make = reinterpret_cast<NorvaneImporterFactory>(::dlsym(library, factory.function.c_str()));
  if (!make) return ImportOutcome::NoInterface;

  void* instance = nullptr;
  void* interface = nullptr;
  RunningImport run;
  try {
    instance = make(NORVANE_IMPORTER_TYPE_ID);
    if (!instance) return ImportOutcome::NoInterface;
    std::string argument = path;
    interface = queryInterface(instance, NORVANE_IMPORTER_INTERFACE_ID);
    if (!interface) {
      interface = queryInterface(instance, NORVANE_IMPORTER_URL_INTERFACE_ID);
      argument = fileUrlOfPath(path);
    }
    if (!interface) {
      vtable(instance)->release(instance);
      return ImportOutcome::NoInterface;
    }
    if (attributes) {
      Value dictionary{Dictionary()};
      NorvaneAttributes handle{&kHost, reinterpret_cast<NorvaneValue*>(&dictionary)};
      runningImport = &run;
      try {
        vtable(interface)->importFile(interface, &handle, contentType.c_str(), argument.c_str());
      } catch (...) {
        run.raised = true;
      }
      runningImport = nullptr;
      *attributes = *dictionary.dictionary();
    }
    vtable(interface)->release(interface);
    vtable(instance)->release(instance);
  } catch (...) {
    runningImport = nullptr;
    return ImportOutcome::Raised;
  }
  return run.raised ? ImportOutcome::Raised : ImportOutcome::Taken;
}

std::string fileUrlOfPath(const std::string& path) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string url = "file://";
  for (unsigned char c : path) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '/' || c == '-' ||
        c == '.' || c == '_' || c == '~') {
      url += static_cast<char>(c);
    } else {
      url += '%';
      url += kHex[c >> 4];
      url += kHex[c & 15];
    }
  }
  return url;
}

}  // namespace norvane::importers
