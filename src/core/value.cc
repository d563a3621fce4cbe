#include "norvane/core/value.h"

namespace norvane {

// Dictionary

const Value* Dictionary::find(std::u16string_view key) const {
  for (const auto& entry : entries_) {
    if (entry.first.view() == key) return &entry.second;
  }
  return nullptr;
}

Value* Dictionary::find(std::u16string_view key) {
  return const_cast<Value*>(static_cast<const Dictionary*>(this)->find(key));
}

void Dictionary::set(const String& key, Value value) {
  if (Value* existing = find(key.view())) {
    *existing = std::move(value);
  } else {
    entries_.emplace_back(key, std::move(value));
  }
}

bool Dictionary::erase(std::u16string_view key) {
  for (auto it = entries_.begin(); it != entries_.end(); ++it) {
    if (it->first.view() == key) {
      entries_.erase(it);
      return true;
    }
  }
  return false;
}

// Dictionaries are equal when they hold the same keys with equal values,
// whatever the order.
bool operator==(const Dictionary& a, const Dictionary& b) {
  if (a.size() != b.size()) return false;
  for (const auto& [key, value] : a) {
    const Value* other = b.find(key.view());
    if (!other || !(*other == value)) return false;
  }
  return true;
}

// ValueSet

bool ValueSet::contains(const Value& value) const {
  for (const auto& member : members_) {
    if (member == value) return true;
  }
  return false;
}

bool ValueSet::insert(Value value) {
  if (contains(value)) return false;
  members_.push_back(std::move(value));
  return true;
}

bool operator==(const ValueSet& a, const ValueSet& b) {
  if (a.size() != b.size()) return false;
  for (const auto& member : a.members()) {
    if (!b.contains(member)) return false;
  }
  return true;
}

// Value

Value::Value(String s) {
  if (!s.isNull()) storage_ = std::move(s);
}

bool Value::asBool(bool fallback) const {
  switch (type()) {
    case Type::Boolean:
      return std::get<bool>(storage_);
    case Type::Integer:
      return std::get<int64_t>(storage_) != 0;
    case Type::Real32:
    case Type::Real64:
      return asReal() != 0;
    default:
      return fallback;
  }
}

int64_t Value::asInteger(int64_t fallback) const {
  switch (type()) {
    case Type::Boolean:
      return std::get<bool>(storage_) ? 1 : 0;
    case Type::Integer:
      return std::get<int64_t>(storage_);
    case Type::Real32:
      return static_cast<int64_t>(std::get<float>(storage_));
    case Type::Real64:
      return static_cast<int64_t>(std::get<double>(storage_));
    default:
      return fallback;
  }
}

double Value::asReal(double fallback) const {
  switch (type()) {
    case Type::Boolean:
      return std::get<bool>(storage_) ? 1 : 0;
    case Type::Integer:
      return static_cast<double>(std::get<int64_t>(storage_));
    case Type::Real32:
      return std::get<float>(storage_);
    case Type::Real64:
      return std::get<double>(storage_);
    default:
      return fallback;
  }
}

String Value::asString() const {
  if (auto s = std::get_if<String>(&storage_)) return *s;
  return String();
}

const Data* Value::data() const {
  auto p = std::get_if<std::shared_ptr<Data>>(&storage_);
  return p ? p->get() : nullptr;
}

const Date* Value::date() const {
  return std::get_if<Date>(&storage_);
}
const Url* Value::url() const {
  return std::get_if<Url>(&storage_);
}

const Array* Value::array() const {
  auto p = std::get_if<std::shared_ptr<Array>>(&storage_);
  return p ? p->get() : nullptr;
}

const Dictionary* Value::dictionary() const {
  auto p = std::get_if<std::shared_ptr<Dictionary>>(&storage_);
  return p ? p->get() : nullptr;
}

const ValueSet* Value::set() const {
  auto p = std::get_if<std::shared_ptr<ValueSet>>(&storage_);
  return p ? p->get() : nullptr;
}

namespace {

// Copy on write: a shared container is cloned before it is changed.
template <typename T>
T* detach(std::shared_ptr<T>& pointer) {
  if (pointer.use_count() > 1) pointer = std::make_shared<T>(*pointer);
  return pointer.get();
}

}  // namespace

Array* Value::mutableArray() {
  auto p = std::get_if<std::shared_ptr<Array>>(&storage_);
  return p ? detach(*p) : nullptr;
}

Dictionary* Value::mutableDictionary() {
  auto p = std::get_if<std::shared_ptr<Dictionary>>(&storage_);
  return p ? detach(*p) : nullptr;
}

bool operator==(const Value& a, const Value& b) {
  if (a.isReal() && b.isReal()) return a.asReal() == b.asReal();
  if (a.type() != b.type()) return false;
  switch (a.type()) {
    case Value::Type::Null:
      return true;
    case Value::Type::Boolean:
    case Value::Type::Integer:
      return a.asInteger() == b.asInteger();
    case Value::Type::String:
      return a.asString() == b.asString();
    case Value::Type::Data:
      return *a.data() == *b.data();
    case Value::Type::Date:
      return *a.date() == *b.date();
    case Value::Type::Url:
      return *a.url() == *b.url();
    case Value::Type::Array:
      return *a.array() == *b.array();
    case Value::Type::Dictionary:
      return *a.dictionary() == *b.dictionary();
    case Value::Type::Set:
      return *a.set() == *b.set();
    default:
      return false;
  }
}

std::string_view Value::typeName(Type type) {
  switch (type) {
    case Type::Null:
      return "null";
    case Type::Boolean:
      return "boolean";
    case Type::Integer:
      return "integer";
    case Type::Real32:
      return "real32";
    case Type::Real64:
      return "real";
    case Type::String:
      return "string";
    case Type::Data:
      return "data";
    case Type::Date:
      return "date";
    case Type::Url:
      return "url";
    case Type::Array:
      return "array";
    case Type::Dictionary:
      return "dictionary";
    case Type::Set:
      return "set";
  }
  return "unknown";
}

}  // namespace norvane
