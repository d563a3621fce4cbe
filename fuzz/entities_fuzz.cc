// Fuzzes entity conversion with arbitrary code units.
//
// Invariants: the conversion never writes more units than it reads, in place
// and into another buffer alike, and both give the same units; units behind
// the new end stay; the standard-entity pass only shortens; conversion to
// entities stays within its bound, is pure ASCII, and converts back to the
// original text when that holds no '&'.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "norvane/markup/entities.h"

using norvane::String;
using norvane::unichar;
namespace markup = norvane::markup;

namespace {

void check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const bool convertStandard = data[0] & 1, onlyNumeric = data[0] & 2, nonUmlauted = data[0] & 4;
  std::vector<unichar> units((size - 1) / 2);
  if (!units.empty()) std::memcpy(units.data(), data + 1, units.size() * sizeof(unichar));
  const size_t n = units.size();

  // Into a separate buffer, from an offset.
  const size_t location = n > 0 ? data[0] % (n + 1) / 2 : 0;
  std::vector<unichar> separate(n + 1, 0xABCD);
  const size_t written = markup::convertEntities2Characters(units.data(), separate.data(), location, n - location,
                                                            convertStandard, onlyNumeric, nonUmlauted);
  check(written <= n - location);
  for (size_t k = written; k < separate.size(); ++k) check(separate[k] == 0xABCD);

  // In place gives the same units and leaves the tail.
  std::vector<unichar> inPlace = units;
  const size_t again = markup::convertEntities2Characters(inPlace.data(), inPlace.data() + location, location,
                                                          n - location, convertStandard, onlyNumeric, nonUmlauted);
  check(again == written);
  if (n > 0) {
    check(std::memcmp(inPlace.data() + location, separate.data(), written * sizeof(unichar)) == 0);
    check(std::memcmp(inPlace.data() + location + written, units.data() + location + written,
                      (n - location - written) * sizeof(unichar)) == 0);
  }

  std::vector<unichar> standard = units;
  check(markup::convertStdEntities2Characters(standard.data(), n) <= n);

  const String text(units.data(), n);
  const String entities = markup::stringByConvertingCharactersToEntities(text);
  check(entities.length() <= markup::entitiesBufferBound(units.data(), n));
  for (size_t k = 0; k < entities.length(); ++k) check(entities[k] < 128);
  bool hasAmpersand = false;
  for (unichar c : units) hasAmpersand |= c == '&';
  if (!hasAmpersand && n > 0) check(markup::stringByConvertingEntitiesToCharacters(entities) == text);
  markup::stringByConvertingHighCharactersToEntities(text);
  markup::stringByConvertingCharactersToStandardEntities(text);
  markup::stringByConvertingStandardEntitiesToCharacters(text);
  markup::stringByConvertingEntitiesToCharacters(text, convertStandard, onlyNumeric, nonUmlauted);
  return 0;
}
