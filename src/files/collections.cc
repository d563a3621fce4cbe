#include "norvane/files/collections.h"

#include <unicode/coll.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <cmath>
#include <fstream>
#include <memory>
#include <mutex>

#include "norvane/core/log.h"
#include "norvane/files/folders.h"

namespace norvane::files {
namespace {

bool containsIdentical(const std::vector<String>& array, const String& object) {
  return std::any_of(array.begin(), array.end(), [&](const String& x) { return x.isSameObject(object); });
}

int sign(int64_t value) {
  return value < 0 ? -1 : value > 0 ? 1 : 0;
}

int foldedCompare(const String& a, const String& b) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t order = u_strCaseCompare(a.data(), static_cast<int32_t>(a.length()), b.data(),
                                   static_cast<int32_t>(b.length()), U_FOLD_CASE_DEFAULT, &status);
  return sign(order);
}

// A number's text form, as a dictionary value read as a string shows it.
String numberText(const Value& v) {
  if (v.isInteger()) return String::fromLatin1(std::to_string(v.asInteger()));
  if (v.isBoolean()) return String(v.asBool() ? u"1" : u"0");
  if (v.isReal()) return String::fromLatin1(fmt::format("{}", v.asReal()));
  return String();
}

const Value* lookUp(const Dictionary& d, std::u16string_view key) {
  return d.find(key);
}

template <typename T>
T numberForKey(const Dictionary& d, std::u16string_view key, T fallback) {
  const Value* v = lookUp(d, key);
  if (!v) return fallback;
  if (v->isString()) {
    // Numeric text reads as its number, as string values answer intValue.
    std::string text = v->asString().toUtf8();
    if constexpr (std::is_floating_point_v<T>) return static_cast<T>(std::strtod(text.c_str(), nullptr));
    return static_cast<T>(std::strtoll(text.c_str(), nullptr, 10));
  }
  if constexpr (std::is_floating_point_v<T>) return static_cast<T>(v->asReal());
  return static_cast<T>(v->asInteger());
}

}  // namespace

bool containsObjectIdenticalTo(const std::vector<String>& array, const String& object) {
  return containsIdentical(array, object);
}

void joinWithIdenticalObjectsFromArray(std::vector<String>& array, const std::vector<String>& other) {
  for (size_t i = array.size(); i-- > 0;) {
    if (!containsIdentical(other, array[i])) array.erase(array.begin() + static_cast<ptrdiff_t>(i));
  }
}

void removeIdenticalObjectsFromArray(std::vector<String>& array, const std::vector<String>& other) {
  if (other.empty()) return;
  std::erase_if(array, [&](const String& x) { return containsIdentical(other, x); });
}

void unionWithIdenticalObjects(std::vector<String>& array, std::initializer_list<String> objects) {
  for (const String& x : objects) {
    if (!containsIdentical(array, x)) array.push_back(x);
  }
}

int sortAscending(const String& a, const String& b) {
  return sign(a.view().compare(b.view()));
}
int sortDescending(const String& a, const String& b) {
  return -sortAscending(a, b);
}
int sortCaseInsensitiveAscending(const String& a, const String& b) {
  return foldedCompare(a, b);
}
int sortCaseInsensitiveDescending(const String& a, const String& b) {
  return -foldedCompare(a, b);
}

int sortLocalizedCaseInsensitiveAscending(const String& a, const String& b) {
  // One collator of the user's locale, at secondary strength (case ignored,
  // accents not). Collators are not thread-safe for compare: guard it.
  static std::mutex mutex;
  static std::unique_ptr<icu::Collator> collator = [] {
    UErrorCode status = U_ZERO_ERROR;
    // The C locale's collation orders capitals apart from small letters
    // even at secondary strength; it means "no preference", so use root.
    icu::Locale locale = icu::Locale::getDefault();
    if (std::string_view(locale.getName()) == "en_US_POSIX") locale = icu::Locale::getRoot();
    std::unique_ptr<icu::Collator> c(icu::Collator::createInstance(locale, status));
    if (U_FAILURE(status)) return std::unique_ptr<icu::Collator>();
    c->setStrength(icu::Collator::SECONDARY);
    return c;
  }();
  if (!collator) return foldedCompare(a, b);
  std::lock_guard lock(mutex);
  UErrorCode status = U_ZERO_ERROR;
  auto order =
      collator->compare(a.data(), static_cast<int32_t>(a.length()), b.data(), static_cast<int32_t>(b.length()), status);
  return U_SUCCESS(status) ? static_cast<int>(order) : foldedCompare(a, b);
}
int sortLocalizedCaseInsensitiveDescending(const String& a, const String& b) {
  return -sortLocalizedCaseInsensitiveAscending(a, b);
}

int sortAscendingByLength(const String& a, const String& b) {
  if (a.length() != b.length()) return a.length() < b.length() ? -1 : 1;
  return foldedCompare(a, b);
}
int sortDescendingByLength(const String& a, const String& b) {
  if (a.length() != b.length()) return a.length() > b.length() ? -1 : 1;
  return foldedCompare(a, b);
}

int sortAscending(double a, double b) {
  return a < b ? -1 : a > b ? 1 : 0;
}
int sortDescending(double a, double b) {
  return -sortAscending(a, b);
}

bool boolForKey(const Dictionary& d, std::u16string_view key, bool fallback) {
  const Value* v = lookUp(d, key);
  if (!v) return fallback;
  if (v->isString()) {
    std::u16string text = v->asString().toU16();
    for (auto& u : text) u = static_cast<char16_t>(u_tolower(u));
    return text == u"true" || text == u"yes" || numberForKey<int64_t>(d, key, 0) != 0;
  }
  return v->asBool();
}
int32_t intForKey(const Dictionary& d, std::u16string_view key, int32_t fallback) {
  return numberForKey(d, key, fallback);
}
int64_t integerForKey(const Dictionary& d, std::u16string_view key, int64_t fallback) {
  return numberForKey(d, key, fallback);
}
uint32_t unsignedIntForKey(const Dictionary& d, std::u16string_view key, uint32_t fallback) {
  return numberForKey(d, key, fallback);
}
uint64_t unsignedIntegerForKey(const Dictionary& d, std::u16string_view key, uint64_t fallback) {
  return numberForKey(d, key, fallback);
}
int64_t longLongForKey(const Dictionary& d, std::u16string_view key, int64_t fallback) {
  return numberForKey(d, key, fallback);
}
uint64_t unsignedLongLongForKey(const Dictionary& d, std::u16string_view key, uint64_t fallback) {
  return numberForKey(d, key, fallback);
}
float floatForKey(const Dictionary& d, std::u16string_view key, float fallback) {
  return numberForKey(d, key, fallback);
}
double doubleForKey(const Dictionary& d, std::u16string_view key, double fallback) {
  return numberForKey(d, key, fallback);
}

String stringForKey(const Dictionary& d, std::u16string_view key, const String& fallback) {
  const Value* v = lookUp(d, key);
  if (!v) return fallback;
  if (v->isString()) return v->asString();
  String number = numberText(*v);
  return number.isNull() ? fallback : number;
}

Value objectForKey(const Dictionary& d, std::u16string_view key, const Value& fallback) {
  const Value* v = lookUp(d, key);
  return v ? *v : fallback;
}

Value objectForCode(const Dictionary& d, uint32_t code, const Value& fallback) {
  std::string text = std::to_string(code);
  return objectForKey(d, std::u16string(text.begin(), text.end()), fallback);
}

Value objectForKeyCode(const Dictionary& d, std::u16string_view key, uint32_t code) {
  Value byCode = objectForCode(d, code);
  return byCode.isNull() ? objectForKey(d, key) : byCode;
}

std::vector<std::string> preferredLocalizations() {
  std::vector<std::string> languages;
  auto add = [&languages](std::string tag) {
    if (auto dot = tag.find_first_of(".@"); dot != std::string::npos) tag.resize(dot);
    if (tag.empty() || tag == "C" || tag == "POSIX") return;
    if (std::find(languages.begin(), languages.end(), tag) == languages.end()) languages.push_back(tag);
    if (auto underscore = tag.find('_'); underscore != std::string::npos) {
      std::string language = tag.substr(0, underscore);
      if (std::find(languages.begin(), languages.end(), language) == languages.end()) languages.push_back(language);
    }
  };
  if (const char* list = std::getenv("LANGUAGE")) {
    std::string all = list;
    for (size_t start = 0; start <= all.size();) {
      size_t colon = all.find(':', start);
      if (colon == std::string::npos) colon = all.size();
      add(all.substr(start, colon - start));
      start = colon + 1;
    }
  }
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (const char* value = std::getenv(variable); value && *value) {
      add(value);
      break;
    }
  }
  return languages;
}

String localizedStringForKey(const Dictionary& d, std::u16string_view key, const String& fallback) {
  const Value* v = lookUp(d, key);
  if (!v) return fallback;
  if (v->isString()) return v->asString();
  const Dictionary* languages = v->dictionary();
  if (!languages) return fallback;
  for (const auto& language : preferredLocalizations()) {
    if (const Value* text = languages->find(std::u16string(language.begin(), language.end()));
        text && text->isString()) {
      return text->asString();
    }
  }
  if (const Value* english = languages->find(u"English"); english && english->isString()) return english->asString();
  return fallback;
}

void setBool(Dictionary& d, const String& key, bool value) {
  d.set(key, Value(value));
}
void setInteger(Dictionary& d, const String& key, int64_t value) {
  d.set(key, Value(value));
}
void setDouble(Dictionary& d, const String& key, double value) {
  d.set(key, Value(value));
}
void setFloat(Dictionary& d, const String& key, float value) {
  d.set(key, Value(value));
}
void setString(Dictionary& d, const String& key, const String& value) {
  if (value.isNull()) {
    d.erase(key.view());
  } else {
    d.set(key, Value(value));
  }
}

namespace {
Value valueForKey(const Value& object, std::u16string_view key) {
  const Dictionary* d = object.dictionary();
  if (!d) return Value();
  const Value* v = d->find(key);
  return v ? *v : Value();
}
}  // namespace

Value valueForKeyPathWithIndexes(const Value& root, std::u16string_view keyPath) {
  Value current = root;
  size_t start = 0;
  while (start <= keyPath.size()) {
    size_t dot = keyPath.find(u'.', start);
    if (dot == std::u16string_view::npos) dot = keyPath.size();
    std::u16string_view part = keyPath.substr(start, dot - start);
    size_t bracket = part.find(u'[');
    if (bracket == std::u16string_view::npos) {
      current = valueForKey(current, part);
    } else {
      Value array = valueForKey(current, part.substr(0, bracket));
      const Array* elements = array.array();
      if (!elements) return Value();
      int64_t index = 0;
      for (size_t i = bracket + 1; i < part.size() && part[i] >= u'0' && part[i] <= u'9'; ++i) {
        index = index * 10 + (part[i] - u'0');
      }
      if (index < 0 || static_cast<size_t>(index) >= elements->size()) return Value();
      current = (*elements)[static_cast<size_t>(index)];
    }
    if (current.isNull()) return Value();
    start = dot + 1;
  }
  return current;
}

String stringValueForKeyPathWithIndexes(const Value& root, std::u16string_view keyPath) {
  Value value = valueForKeyPathWithIndexes(root, keyPath);
  if (const Array* array = value.array(); array && array->size() == 1) value = (*array)[0];
  return value.asString();
}

bool safeRespondsToSelector(bool offers, std::string_view className, std::string_view selector, bool* token) {
  if (offers) return true;
  if (token && *token) return false;
  if (token) *token = true;
  logFormat("Class {} does not respond to selector {}.", className, selector);
  return false;
}

bool dumpToDesktopWithFilename(const Value& value, const std::string& filename) {
  std::string bytes;
  if (value.isString()) {
    bytes = value.asString().toUtf8();
  } else if (const Data* data = value.data()) {
    bytes.assign(data->begin(), data->end());
  } else {
    return false;
  }
  std::ofstream file(userDesktopFolder() + "/" + filename, std::ios::binary | std::ios::trunc);
  return file && file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace norvane::files
