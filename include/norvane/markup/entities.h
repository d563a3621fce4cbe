// Character entity references: conversion in place towards characters, and
// conversion of characters towards entities.
//
// Towards characters the conversion is tolerant of what real pages hold:
// missing semicolons, unknown names and out-of-range numbers leave their '&'
// as text. Towards entities it is exact.
//
// The named table holds the HTML 4 Latin-1, symbol and special sets, minus
// "quot", "amp", "lt" and "gt" (handled on their own) and minus "cedil" and
// "fnof", which are not converted. Names are case-sensitive.
#pragma once

#include <cstddef>

#include "norvane/core/string.h"
#include "norvane/core/types.h"

namespace norvane::markup {

// Converts `length` units of `characters` from `location` on and writes the
// result from `destination` on; answers the number of units written.
// `destination` may be `characters + location`: no reference is shorter than
// what it yields, so the output never overtakes the input. Units behind the
// new end are left as they were. Nothing is allocated.
//
// Recognised, after '&':
//   "apos" and "nbsp"              always, ';' optional
//   "quot", "amp", "lt", "gt"      only with `convertStandard`, ';' optional
//                                  ("&amplifier" gives "&lifier")
//   "#" digits, "#x"/"#X" hex      ended by any unit; a ';' is consumed;
//                                  values above U+FFFF give a surrogate pair,
//                                  values beyond U+10FFFF stay text; without
//                                  `convertStandard` the values of '"', '&',
//                                  '<' and '>' stay text
//   a table name                   unless `onlyNumeric`; letters and digits
//                                  ended by any unit, ';' consumed
// A reference of more than 30 units behind its '&' stays text. The end of
// the range also ends a reference: "caf&eacute" converted up to a following
// tag gives "café", and "&#65" at the end gives "A".
// With `nonUmlauted`, units written as text or by the table and number paths
// pass through the umlauts table (diacritics removed).
size_t convertEntities2Characters(const unichar* characters, unichar* destination, size_t location, size_t length,
                                  bool convertStandard, bool onlyNumeric, bool nonUmlauted);

// In place, only "&quot;", "&amp;", "&#38;", "&#60;", "&#62;", "&#34;",
// "&lt;" and "&gt;", the ';' required. The position of the ';' decides which
// form is tried (the longest first), and a failing form is not retried as a
// shorter one. Answers the new length.
size_t convertStdEntities2Characters(unichar* characters, size_t length);

// The unit of a named reference, or 0 if the table has no such name.
unichar characterOfEntityName(const char* name, size_t nameLength);
// The table's name for a unit, or null.
const char* entityNameOfCharacter(unichar c);
// The table, for inspection: `count` names and their units, in order.
size_t entityTableCount();
const char* entityTableName(size_t index);
unichar entityTableCharacter(size_t index);

// Builds the reverse table (and the character sets the conversion reads).
// Safe to call from several threads; later calls do nothing.
void initConversionTables();

// String forms. Each answers the receiver itself when nothing changed, and
// also for fewer than 4 units.
String stringByConvertingEntitiesToCharacters(const String& string, bool convertStandard, bool onlyNumericEntities,
                                              bool nonUmlauted);
String stringByConvertingEntitiesToCharacters(const String& string);  // true, false, false
String stringByConvertingEntitiesToCharactersNonUmlauted(const String& string, bool nonUmlauted);
String stringByConvertingStandardEntitiesToCharacters(const String& string);

// Each unit as a named entity ("&eacute;"), itself if below 128, or "&#N;"
// with the 16-bit value (a surrogate pair gives two references). The result
// is pure ASCII. An empty or null receiver comes back unchanged.
String stringByConvertingCharactersToEntities(const String& string);
// Each unit above 127 as "&#N;". Null gives null; the receiver itself if
// there is no such unit.
String stringByConvertingHighCharactersToEntities(const String& string);
// '"', '&', '<' and '>' as "&quot;", "&amp;", "&lt;" and "&gt;"; '\'' stays.
// Null gives null; the receiver itself if there is no such unit.
String stringByConvertingCharactersToStandardEntities(const String& string);

// The exact number of bytes that stringByConvertingCharactersToEntities
// reserves for `length` units: 10 for a unit with a name, 1 below 128, 8
// otherwise.
size_t entitiesBufferBound(const unichar* characters, size_t length);

}  // namespace norvane::markup
