// String: an immutable, reference-counted UTF-16 string that can be null.
//
// Copying a String copies a pointer. Operations that would change nothing
// hand back the very same String, and `isSameObject` lets callers (and
// tests) observe that. A null String and an empty String are different:
// `isNull()` tells them apart, while `length()` is 0 for both.
//
// Mutable work happens in std::u16string; views are std::u16string_view.
#pragma once

#include <atomic>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>

#include "norvane/core/types.h"

namespace norvane {

class String {
 public:
  // The null string.
  String() = default;
  String(std::nullptr_t) {}
  // Copies the units.
  String(std::u16string_view units);
  String(const unichar* units, size_t length) : String(std::u16string_view(units, length)) {}
  String(const std::u16string& units) : String(std::u16string_view(units)) {}
  String(const char16_t* nullTerminated) : String(std::u16string_view(nullTerminated)) {}
  // Takes a std::u16string by value; no second copy when moved in.
  static String fromU16(std::u16string&& units);
  // Decodes UTF-8; malformed sequences become U+FFFD.
  static String fromUtf8(std::string_view utf8);
  // Characters 0..255 as the units of the same value (ISO 8859-1); for
  // ASCII literals.
  static String fromLatin1(std::string_view bytes);
  // An empty, non-null string.
  static String empty();

  String(const String& other) : rep_(other.rep_) { retain(); }
  String(String&& other) noexcept : rep_(other.rep_) { other.rep_ = nullptr; }
  String& operator=(const String& other) {
    if (rep_ != other.rep_) {
      other.retain();
      release();
      rep_ = other.rep_;
    }
    return *this;
  }
  String& operator=(String&& other) noexcept {
    if (this != &other) {
      release();
      rep_ = other.rep_;
      other.rep_ = nullptr;
    }
    return *this;
  }
  ~String() { release(); }

  bool isNull() const { return rep_ == nullptr; }
  // Null or of length 0.
  bool isEmpty() const { return rep_ == nullptr || rep_->length == 0; }
  size_t length() const { return rep_ ? rep_->length : 0; }
  // The units; never null (an empty buffer for the null string). The
  // buffer is followed by a 0 unit, so it can be handed to ICU as
  // null-terminated.
  const unichar* data() const { return rep_ ? rep_->units : &kEmptyUnit; }
  unichar operator[](size_t index) const { return rep_->units[index]; }
  std::u16string_view view() const { return {data(), length()}; }
  operator std::u16string_view() const { return view(); }
  std::u16string toU16() const { return std::u16string(view()); }
  // UTF-8; unpaired surrogates become U+FFFD.
  std::string toUtf8() const;

  // The units from `range`, clamped to the string. The receiver itself when
  // the range covers it all.
  String substring(Range range) const;
  String substring(size_t from) const;

  // True when both are the same object (or both null).
  bool isSameObject(const String& other) const { return rep_ == other.rep_; }

  // Equal content; a null string equals only a null string.
  friend bool operator==(const String& a, const String& b) {
    if (a.rep_ == b.rep_) return true;
    if (!a.rep_ || !b.rep_) return false;
    return a.view() == b.view();
  }
  friend bool operator==(const String& a, std::u16string_view b) { return !a.isNull() && a.view() == b; }
  friend bool operator==(const String& a, const char16_t* b) {
    return !a.isNull() && a.view() == std::u16string_view(b);
  }
  // Unit-wise ordering; null sorts first.
  friend bool operator<(const String& a, const String& b) {
    if (!a.rep_ || !b.rep_) return !a.rep_ && b.rep_;
    return a.view() < b.view();
  }

 private:
  struct Rep {
    std::atomic<uint32_t> references;
    size_t length;
    unichar units[1];  // length + 1 units, the last one 0
  };
  static Rep* allocate(size_t length);
  void retain() const {
    if (rep_) rep_->references.fetch_add(1, std::memory_order_relaxed);
  }
  void release() {
    if (rep_ && rep_->references.fetch_sub(1, std::memory_order_acq_rel) == 1) ::operator delete(rep_);
    rep_ = nullptr;
  }

  static constexpr unichar kEmptyUnit = 0;
  Rep* rep_ = nullptr;
};

// Writes the UTF-8 form; "(null)" for the null string. For tests and logs.
std::ostream& operator<<(std::ostream& out, const String& s);

struct StringHash {
  size_t operator()(const String& s) const { return std::hash<std::u16string_view>()(s.view()); }
};

}  // namespace norvane
