// Value: the property-list value variant used for results, attributes and
// items: null, boolean, integer, 32- and 64-bit real, string, data, date,
// URL, array, dictionary (keys keep insertion order) and set.
//
// Values are cheap to copy: containers and data share their storage until
// one side changes them (copy on write).
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "norvane/core/string.h"

namespace norvane {

class Value;

// A point in time: seconds since 1970-01-01T00:00:00Z.
struct Date {
  double secondsSince1970 = 0;
  // The platform's reference date, 2001-01-01T00:00:00Z, in the same scale.
  static constexpr double kReferenceDate = 978307200.0;
  friend bool operator==(const Date&, const Date&) = default;
};

// A URL held as a string.
struct Url {
  String string;
  friend bool operator==(const Url& a, const Url& b) { return a.string == b.string; }
};

using Data = std::vector<uint8_t>;
using Array = std::vector<Value>;

// Ordered dictionary with string keys. Lookups are linear, which beats a
// hash for the few dozen keys a result holds.
class Dictionary {
 public:
  using Entry = std::pair<String, Value>;

  size_t size() const;
  bool empty() const;
  // Null when the key is absent.
  const Value* find(std::u16string_view key) const;
  Value* find(std::u16string_view key);
  bool contains(std::u16string_view key) const { return find(key) != nullptr; }
  // Replaces the value of an existing key in place, else appends.
  void set(const String& key, Value value);
  // Removes the key; answers whether it was there.
  bool erase(std::u16string_view key);

  std::vector<Entry>::const_iterator begin() const;
  std::vector<Entry>::const_iterator end() const;
  const std::vector<Entry>& entries() const { return entries_; }
  // Entries may be edited in place; keys must stay unique.
  std::vector<Entry>& mutableEntries() { return entries_; }

  friend bool operator==(const Dictionary& a, const Dictionary& b);

 private:
  std::vector<Entry> entries_;
};

// A set of values: members are unique by ==, kept in insertion order.
class ValueSet {
 public:
  size_t size() const;
  bool contains(const Value& value) const;
  // Answers false when the value was already a member.
  bool insert(Value value);
  const Array& members() const { return members_; }
  friend bool operator==(const ValueSet& a, const ValueSet& b);

 private:
  Array members_;
};

class Value {
 public:
  enum class Type { Null, Boolean, Integer, Real32, Real64, String, Data, Date, Url, Array, Dictionary, Set };

  Value() = default;
  Value(std::nullptr_t) {}
  Value(bool b) : storage_(b) {}
  Value(int v) : storage_(int64_t{v}) {}
  Value(int64_t v) : storage_(v) {}
  Value(uint32_t v) : storage_(int64_t{v}) {}
  Value(float v) : storage_(v) {}
  Value(double v) : storage_(v) {}
  Value(String s);
  Value(std::u16string_view s) : Value(String(s)) {}
  Value(const char16_t* s) : Value(String(s)) {}
  Value(Data d) : storage_(std::make_shared<Data>(std::move(d))) {}
  Value(Date d) : storage_(d) {}
  Value(Url u) : storage_(std::move(u)) {}
  Value(Array a) : storage_(std::make_shared<Array>(std::move(a))) {}
  Value(Dictionary d) : storage_(std::make_shared<Dictionary>(std::move(d))) {}
  Value(ValueSet s) : storage_(std::make_shared<ValueSet>(std::move(s))) {}

  Type type() const { return static_cast<Type>(storage_.index()); }
  bool isNull() const { return type() == Type::Null; }
  bool isBoolean() const { return type() == Type::Boolean; }
  bool isInteger() const { return type() == Type::Integer; }
  bool isReal() const { return type() == Type::Real32 || type() == Type::Real64; }
  bool isNumber() const { return isInteger() || isReal(); }
  bool isString() const { return type() == Type::String; }
  bool isData() const { return type() == Type::Data; }
  bool isDate() const { return type() == Type::Date; }
  bool isUrl() const { return type() == Type::Url; }
  bool isArray() const { return type() == Type::Array; }
  bool isDictionary() const { return type() == Type::Dictionary; }
  bool isSet() const { return type() == Type::Set; }

  // Typed reads answer the fallback when the type differs. Numbers convert
  // among themselves (booleans count as 0 and 1).
  bool asBool(bool fallback = false) const;
  int64_t asInteger(int64_t fallback = 0) const;
  double asReal(double fallback = 0) const;
  // The string, or the null String.
  String asString() const;

  // Typed access; null when the type differs.
  const Data* data() const;
  const Date* date() const;
  const Url* url() const;
  const Array* array() const;
  const Dictionary* dictionary() const;
  const ValueSet* set() const;
  // Mutable access detaches shared storage first.
  Array* mutableArray();
  Dictionary* mutableDictionary();

  // Deep equality; a 32-bit and a 64-bit real of the same value are equal.
  friend bool operator==(const Value& a, const Value& b);

  // The type's name for messages ("string", "dictionary", ...).
  static std::string_view typeName(Type type);

 private:
  using Storage = std::variant<std::monostate, bool, int64_t, float, double, String, std::shared_ptr<Data>, Date, Url,
                               std::shared_ptr<Array>, std::shared_ptr<Dictionary>, std::shared_ptr<ValueSet>>;
  Storage storage_;
};

// Bodies that need Value complete.
inline size_t Dictionary::size() const {
  return entries_.size();
}
inline bool Dictionary::empty() const {
  return entries_.empty();
}
inline std::vector<Dictionary::Entry>::const_iterator Dictionary::begin() const {
  return entries_.begin();
}
inline std::vector<Dictionary::Entry>::const_iterator Dictionary::end() const {
  return entries_.end();
}
inline size_t ValueSet::size() const {
  return members_.size();
}

}  // namespace norvane
