// Collection and object helpers on the library's own value and container
// types: set operations on arrays, sort comparators, typed dictionary access
// with defaults, key paths with indexes, and the checked reach for optional
// operations.
//
// Arrays are std::vector; "identical" means the same String object
// (`isSameObject`), "equal" means ==.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/value.h"

namespace norvane::files {

// ---- Arrays ----------------------------------------------------------------

bool containsObjectIdenticalTo(const std::vector<String>& array, const String& object);

// Binary search of a sorted range with a three-way compare (negative, 0,
// positive). Answers the index of an equal element, or else the index where
// the value would be inserted to keep the order.
template <typename T, typename Compare>
size_t indexOfObjectUsingBinarySearch(const std::vector<T>& array, const T& value, Range range, Compare compare) {
  size_t low = std::min(range.location, array.size());
  size_t high = std::min(range.end(), array.size());
  while (low < high) {
    size_t middle = low + (high - low) / 2;
    int order = compare(array[middle], value);
    if (order == 0) return middle;
    if (order < 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

// Calls `function` for the elements from range.location up to its end, cut
// at the array's end; nothing when the location lies beyond it.
template <typename T, typename Function>
void applyFunction(const std::vector<T>& array, Function function, Range range = Range{0, NotFound}) {
  if (range.location >= array.size()) return;
  size_t available = array.size() - range.location;
  size_t end = range.location + std::min(range.length, available);
  for (size_t i = range.location; i < end; ++i) function(array[i]);
}

template <typename T>
std::vector<T> subarrayWithoutObjectAtIndex(const std::vector<T>& array, size_t index) {
  if (index >= array.size()) return array;
  std::vector<T> result = array;
  result.erase(result.begin() + static_cast<ptrdiff_t>(index));
  return result;
}

// Cuts the array to `count` (never grows it) and answers the new count.
template <typename T>
size_t setCount(std::vector<T>& array, size_t count) {
  if (count < array.size()) array.resize(count);
  return array.size();
}

// Keeps only the elements the other array holds; walks from the end.
template <typename T>
void joinWithObjectsFromArray(std::vector<T>& array, const std::vector<T>& other) {
  for (size_t i = array.size(); i-- > 0;) {
    if (std::find(other.begin(), other.end(), array[i]) == other.end()) array.erase(array.begin() + i);
  }
}
void joinWithIdenticalObjectsFromArray(std::vector<String>& array, const std::vector<String>& other);

// Removes the elements the other array holds.
template <typename T>
void removeObjectsFromArray(std::vector<T>& array, const std::vector<T>& other) {
  if (other.empty()) return;
  std::erase_if(array, [&](const T& x) { return std::find(other.begin(), other.end(), x) != other.end(); });
}
void removeIdenticalObjectsFromArray(std::vector<String>& array, const std::vector<String>& other);

// Appends each object not yet present.
template <typename T>
void unionWithObjects(std::vector<T>& array, std::initializer_list<T> objects) {
  for (const T& x : objects) {
    if (std::find(array.begin(), array.end(), x) == array.end()) array.push_back(x);
  }
}
void unionWithIdenticalObjects(std::vector<String>& array, std::initializer_list<String> objects);

// Sorts with a three-way compare; nothing below two elements. The range
// form sorts only a range that fits into the array.
template <typename T, typename Compare>
void quickSortUsingFunction(std::vector<T>& array, Compare compare, Range range = Range{0, NotFound}) {
  if (range.length == NotFound) range.length = array.size() - std::min(range.location, array.size());
  if (array.size() < 2 || range.location > array.size() || range.length > array.size() - range.location) return;
  auto first = array.begin() + static_cast<ptrdiff_t>(range.location);
  std::stable_sort(first, first + static_cast<ptrdiff_t>(range.length),
                   [&](const T& a, const T& b) { return compare(a, b) < 0; });
}

// Moves one element; the target index counts before removal, as the
// element is removed first and inserted one lower when the target lies
// behind the source. False for an index beyond the end.
template <typename T>
bool moveObjectAtIndex(std::vector<T>& array, size_t from, size_t to) {
  if (from == to) return true;
  if (from >= array.size() || to > array.size()) return false;
  T element = std::move(array[from]);
  array.erase(array.begin() + static_cast<ptrdiff_t>(from));
  if (to > from) --to;
  array.insert(array.begin() + static_cast<ptrdiff_t>(std::min(to, array.size())), std::move(element));
  return true;
}

// ---- Sort comparators (negative, 0, positive) --------------------------------

int sortAscending(const String& a, const String& b);  // by code units
int sortDescending(const String& a, const String& b);
int sortCaseInsensitiveAscending(const String& a, const String& b);  // full case folding
int sortCaseInsensitiveDescending(const String& a, const String& b);
// With the collation of the user's locale, no regard to case.
int sortLocalizedCaseInsensitiveAscending(const String& a, const String& b);
int sortLocalizedCaseInsensitiveDescending(const String& a, const String& b);
int sortAscendingByLength(const String& a, const String& b);   // shorter first, then case-insensitive
int sortDescendingByLength(const String& a, const String& b);  // longer first, then case-insensitive ascending
int sortAscending(double a, double b);
int sortDescending(double a, double b);

// ---- Dictionaries ---------------------------------------------------------------

// Typed reads: the value in the type, or `fallback` when the key is missing
// (0, false or null without one).
bool boolForKey(const Dictionary& d, std::u16string_view key, bool fallback = false);
int32_t intForKey(const Dictionary& d, std::u16string_view key, int32_t fallback = 0);
int64_t integerForKey(const Dictionary& d, std::u16string_view key, int64_t fallback = 0);
uint32_t unsignedIntForKey(const Dictionary& d, std::u16string_view key, uint32_t fallback = 0);
uint64_t unsignedIntegerForKey(const Dictionary& d, std::u16string_view key, uint64_t fallback = 0);
int64_t longLongForKey(const Dictionary& d, std::u16string_view key, int64_t fallback = 0);
uint64_t unsignedLongLongForKey(const Dictionary& d, std::u16string_view key, uint64_t fallback = 0);
float floatForKey(const Dictionary& d, std::u16string_view key, float fallback = 0);
double doubleForKey(const Dictionary& d, std::u16string_view key, double fallback = 0);
// Strings, and numbers in their text form; `fallback` otherwise.
String stringForKey(const Dictionary& d, std::u16string_view key, const String& fallback = String());
Value objectForKey(const Dictionary& d, std::u16string_view key, const Value& fallback = Value());
// Four-character codes are keys in their decimal text form.
Value objectForCode(const Dictionary& d, uint32_t code, const Value& fallback = Value());
Value objectForKeyCode(const Dictionary& d, std::u16string_view key, uint32_t code);
// A string, or a dictionary of language to string read in the order of the
// user's preferred languages ($LANGUAGE, $LC_ALL, $LC_MESSAGES, $LANG), then
// "English"; `fallback` otherwise.
String localizedStringForKey(const Dictionary& d, std::u16string_view key, const String& fallback = String());
std::vector<std::string> preferredLocalizations();

void setBool(Dictionary& d, const String& key, bool value);
void setInteger(Dictionary& d, const String& key, int64_t value);
void setDouble(Dictionary& d, const String& key, double value);
void setFloat(Dictionary& d, const String& key, float value);
void setString(Dictionary& d, const String& key, const String& value);  // a null string removes the key

// ---- Key paths ------------------------------------------------------------------

// Walks "a.b[2].c" through dictionaries and arrays; null when a key is
// missing, an index is out of range or a step meets the wrong type.
Value valueForKeyPathWithIndexes(const Value& root, std::u16string_view keyPath);
// That value, or its only element for an array of one; null if no string.
String stringValueForKeyPathWithIndexes(const Value& root, std::u16string_view keyPath);

// ---- Optional operations -----------------------------------------------------

// The checked reach for an optional operation: answers `offers`. When the
// operation is missing it logs "Class %@ does not respond to selector %@."
// once per token (always without one).
bool safeRespondsToSelector(bool offers, std::string_view className, std::string_view selector, bool* token = nullptr);

// Writes a string (UTF-8) or data into the user's desktop folder, not
// atomically. False for other values or on failure.
bool dumpToDesktopWithFilename(const Value& value, const std::string& filename);

}  // namespace norvane::files
