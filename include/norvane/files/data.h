// Data helpers: zlib compression, reading submitted forms, tests and dumps
// of byte blocks.
//
// Compression uses deflate with memory level 8 and the default strategy;
// gzip streams are written with window bits 31, zlib streams with 15, and
// inflating detects either (window bits 47). Raw deflate streams (no
// header, window bits -15, as zip members hold them) have functions of their
// own. Levels: -1 is zlib's default; anything else is forced into 1..9.
//
// Failures answer nullopt or false and log nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "norvane/core/string.h"
#include "norvane/core/value.h"

namespace norvane::files {

// Compression. Null bytes, a length below 1 or above 0xFFFFFFFF, or a zlib
// failure answer nullopt; so compressing nothing gives nullopt, not an
// empty stream.
std::optional<Data> dataByCompressingBytes(const uint8_t* bytes, int64_t length, int level, bool useGzip);
std::optional<Data> dataByGzippingBytes(const uint8_t* bytes, int64_t length, int level = -1);
std::optional<Data> dataByDeflatingBytes(const uint8_t* bytes, int64_t length, int level = -1);
std::optional<Data> dataByGzippingData(const Data& data, int level = -1);
std::optional<Data> dataByDeflatingData(const Data& data, int level = -1);

// Inflates a zlib or gzip stream into `data`. False for bad arguments (the
// data stays as it was), a corrupt or truncated stream (what was inflated so
// far stays), or bytes behind the end of the stream.
bool setDataByInflatingBytes(Data& data, const uint8_t* bytes, int64_t length);
bool setDataByInflating(Data& data, const Data& source);
std::optional<Data> dataByInflatingBytes(const uint8_t* bytes, int64_t length);
std::optional<Data> dataByInflatingData(const Data& data);

// Raw deflate streams, with the same rules.
std::optional<Data> dataByRawDeflatingData(const Data& data, int level = -1);
std::optional<Data> dataByRawInflatingData(const Data& data);

// Text of the data; null when it does not decode.
String stringUsingUTF8Encoding(const Data& data);
String stringUsingEncoding(const Data& data, uint32_t nsStringEncoding);

// A multipart/form-data body (RFC 7578) with the given boundary: each field
// as data under its name, and for a file field its file name under
// "<name>_filename". Nullopt for a null boundary, no bytes, or a body that
// does not end in "--\r\n".
std::optional<Dictionary> formDataUsingBoundary(const Data& body, const String& boundary);

// An application/x-www-form-urlencoded body: values percent-decoded byte by
// byte into data, keys taken as they stand, "+" kept, later keys winning.
Dictionary URLEncodedFormData(const Data& body);

// True for a non-empty block of ASCII text: no byte of 0x80 or more, and
// control bytes only among 0x03, 0x08, 0x09, 0x0A, 0x0C and 0x0D.
bool isAsciiData(const Data& data);

// Reads a whole file without leaving it in the page cache; nullopt on
// failure.
std::optional<Data> dataWithUncachedContentsOfFile(const std::string& path);

// Hexadecimal listing and C array of the bytes, to the log.
void dump(const Data& data);
void dumpAsArray(const Data& data);

// Appends the string's UTF-8 bytes; a null string appends nothing.
void appendString(Data& data, const String& string);

}  // namespace norvane::files
