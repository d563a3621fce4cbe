#include "norvane/core/string.h"

#include <algorithm>
#include <new>
#include <ostream>

#include "norvane/core/unicode.h"

namespace norvane {

String::Rep* String::allocate(size_t length) {
  void* memory = ::operator new(offsetof(Rep, units) + (length + 1) * sizeof(unichar));
  Rep* rep = static_cast<Rep*>(memory);
  new (&rep->references) std::atomic<uint32_t>(1);
  rep->length = length;
  rep->units[length] = 0;
  return rep;
}

String::String(std::u16string_view units) : rep_(allocate(units.size())) {
  if (!units.empty()) std::memcpy(rep_->units, units.data(), units.size() * sizeof(unichar));
}

String String::fromU16(std::u16string&& units) {
  return String(std::u16string_view(units));
}

String String::fromUtf8(std::string_view utf8) {
  return String(utf8ToUtf16(utf8));
}

String String::fromLatin1(std::string_view bytes) {
  String result;
  result.rep_ = allocate(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) result.rep_->units[i] = static_cast<unsigned char>(bytes[i]);
  return result;
}

String String::empty() {
  return String(std::u16string_view());
}

std::string String::toUtf8() const {
  return utf16ToUtf8(view());
}

String String::substring(Range range) const {
  size_t total = length();
  if (range.location >= total) return isNull() ? String() : empty();
  size_t count = std::min(range.length, total - range.location);
  if (range.location == 0 && count == total) return *this;
  return String(data() + range.location, count);
}

String String::substring(size_t from) const {
  return substring(Range{from, NotFound});
}

std::ostream& operator<<(std::ostream& out, const String& s) {
  return s.isNull() ? out << "(null)" : out << s.toUtf8();
}

}  // namespace norvane
