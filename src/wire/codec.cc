#include "norvane/wire/codec.h"

#include <bit>
#include <cstring>
#include <unordered_map>

#include "norvane/core/unicode.h"

namespace norvane::wire {

// ---- Encoder ----

void Encoder::putBigEndian(uint64_t v, int bytes) {
  for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) put(static_cast<uint8_t>(v >> shift));
}

void Encoder::putBytes(const void* bytes, size_t count) {
  auto* p = static_cast<const uint8_t*>(bytes);
  out_.insert(out_.end(), p, p + count);
}

void Encoder::nil() {
  put(0xc0);
}

void Encoder::boolean(bool b) {
  put(b ? 0xc3 : 0xc2);
}

void Encoder::unsignedInteger(uint64_t v) {
  if (v < 0x80) {
    put(static_cast<uint8_t>(v));
  } else if (v <= 0xff) {
    put(0xcc);
    putBigEndian(v, 1);
  } else if (v <= 0xffff) {
    put(0xcd);
    putBigEndian(v, 2);
  } else if (v <= 0xffffffff) {
    put(0xce);
    putBigEndian(v, 4);
  } else {
    put(0xcf);
    putBigEndian(v, 8);
  }
}

void Encoder::integer(int64_t v) {
  if (v >= 0) return unsignedInteger(static_cast<uint64_t>(v));
  if (v >= -32) {
    put(static_cast<uint8_t>(v));
  } else if (v >= INT8_MIN) {
    put(0xd0);
    putBigEndian(static_cast<uint64_t>(v), 1);
  } else if (v >= INT16_MIN) {
    put(0xd1);
    putBigEndian(static_cast<uint64_t>(v), 2);
  } else if (v >= INT32_MIN) {
    put(0xd2);
    putBigEndian(static_cast<uint64_t>(v), 4);
  } else {
    put(0xd3);
    putBigEndian(static_cast<uint64_t>(v), 8);
  }
}

void Encoder::stringHeader(size_t n) {
  if (n < 32) {
    put(static_cast<uint8_t>(0xa0 | n));
  } else if (n <= 0xff) {
    put(0xd9);
    putBigEndian(n, 1);
  } else if (n <= 0xffff) {
    put(0xda);
    putBigEndian(n, 2);
  } else {
    put(0xdb);
    putBigEndian(n, 4);
  }
}

void Encoder::string(std::string_view utf8) {
  stringHeader(utf8.size());
  putBytes(utf8.data(), utf8.size());
}

void Encoder::string(std::u16string_view utf16) {
  // ASCII, the common case, needs no conversion buffer.
  bool ascii = true;
  for (char16_t u : utf16) {
    if (u >= 0x80) {
      ascii = false;
      break;
    }
  }
  if (!ascii) return string(std::string_view(utf16ToUtf8(utf16)));
  stringHeader(utf16.size());
  for (char16_t u : utf16) put(static_cast<uint8_t>(u));
}

void Encoder::binary(std::span<const uint8_t> bytes) {
  size_t n = bytes.size();
  if (n <= 0xff) {
    put(0xc4);
    putBigEndian(n, 1);
  } else if (n <= 0xffff) {
    put(0xc5);
    putBigEndian(n, 2);
  } else {
    put(0xc6);
    putBigEndian(n, 4);
  }
  putBytes(bytes.data(), n);
}

void Encoder::arrayHeader(uint32_t count) {
  if (count < 16) {
    put(static_cast<uint8_t>(0x90 | count));
  } else if (count <= 0xffff) {
    put(0xdc);
    putBigEndian(count, 2);
  } else {
    put(0xdd);
    putBigEndian(count, 4);
  }
}

void Encoder::mapHeader(uint32_t count) {
  if (count < 16) {
    put(static_cast<uint8_t>(0x80 | count));
  } else if (count <= 0xffff) {
    put(0xde);
    putBigEndian(count, 2);
  } else {
    put(0xdf);
    putBigEndian(count, 4);
  }
}

void Encoder::extHeader(ExtType type, uint32_t length) {
  switch (length) {
    case 1:
      put(0xd4);
      break;
    case 2:
      put(0xd5);
      break;
    case 4:
      put(0xd6);
      break;
    case 8:
      put(0xd7);
      break;
    case 16:
      put(0xd8);
      break;
    default:
      if (length <= 0xff) {
        put(0xc7);
        putBigEndian(length, 1);
      } else if (length <= 0xffff) {
        put(0xc8);
        putBigEndian(length, 2);
      } else {
        put(0xc9);
        putBigEndian(length, 4);
      }
  }
  put(static_cast<uint8_t>(type));
}

void Encoder::ext(ExtType type, std::span<const uint8_t> payload) {
  extHeader(type, static_cast<uint32_t>(payload.size()));
  putBytes(payload.data(), payload.size());
}

void Encoder::descriptor(const ScriptDescriptor& descriptor) {
  extHeader(ExtType::ScriptDescriptor, static_cast<uint32_t>(4 + descriptor.data.size()));
  putBigEndian(descriptor.descriptorType, 4);
  putBytes(descriptor.data.data(), descriptor.data.size());
}

void Encoder::value(const Value& value) {
  switch (value.type()) {
    case Value::Type::Null:
      return nil();
    case Value::Type::Boolean:
      return boolean(value.asBool());
    case Value::Type::Integer:
      return integer(value.asInteger());
    case Value::Type::Real32:
      put(0xca);
      return putBigEndian(std::bit_cast<uint32_t>(static_cast<float>(value.asReal())), 4);
    case Value::Type::Real64:
      put(0xcb);
      return putBigEndian(std::bit_cast<uint64_t>(value.asReal()), 8);
    case Value::Type::String:
      return string(value.asString().view());
    case Value::Type::Data:
      return binary(*value.data());
    case Value::Type::Date:
      extHeader(ExtType::Date, 8);
      return putBigEndian(std::bit_cast<uint64_t>(value.date()->secondsSince1970), 8);
    case Value::Type::Url: {
      std::string utf8 = value.url()->string.toUtf8();
      return ext(ExtType::Url, {reinterpret_cast<const uint8_t*>(utf8.data()), utf8.size()});
    }
    case Value::Type::Array:
      arrayHeader(static_cast<uint32_t>(value.array()->size()));
      for (const Value& element : *value.array()) this->value(element);
      return;
    case Value::Type::Dictionary:
      mapHeader(static_cast<uint32_t>(value.dictionary()->size()));
      for (const auto& [key, element] : *value.dictionary()) {
        string(key.view());
        this->value(element);
      }
      return;
    case Value::Type::Set: {
      // The payload is an array encoded on its own, so its length is known
      // before the header is written.
      Bytes payload;
      Encoder inner(payload);
      const Array& members = value.set()->members();
      inner.arrayHeader(static_cast<uint32_t>(members.size()));
      for (const Value& member : members) inner.value(member);
      return ext(ExtType::Set, payload);
    }
  }
}

Bytes encodeValue(const Value& value) {
  Bytes out;
  Encoder(out).value(value);
  return out;
}

// ---- Decoder ----

bool Decoder::take(size_t count, const uint8_t*& bytes) {
  if (failed_ || static_cast<size_t>(end_ - next_) < count) return fail();
  bytes = next_;
  next_ += count;
  return true;
}

bool Decoder::bigEndian(int bytes, uint64_t& v) {
  const uint8_t* p;
  if (!take(static_cast<size_t>(bytes), p)) return false;
  v = 0;
  for (int i = 0; i < bytes; ++i) v = (v << 8) | p[i];
  return true;
}

// The length that follows a str/bin/array/map/ext marker of the 8/16/32 kind.
bool Decoder::lengthOf(uint8_t marker, uint32_t& length) {
  int width;
  switch (marker) {
    case 0xc4:
    case 0xc7:
    case 0xd9:
      width = 1;
      break;
    case 0xc5:
    case 0xc8:
    case 0xda:
    case 0xdc:
    case 0xde:
      width = 2;
      break;
    default:
      width = 4;
      break;
  }
  uint64_t v;
  if (!bigEndian(width, v)) return false;
  length = static_cast<uint32_t>(v);
  return true;
}

namespace {

enum class Kind { Other, Str, Bin, Array, Map, Ext };

// Classifies a marker byte and gives the length carried in fix forms (or -1
// when a length field follows).
Kind kindOf(uint8_t m, int64_t& fixLength) {
  fixLength = -1;
  if (m >= 0xa0 && m <= 0xbf) return fixLength = m & 0x1f, Kind::Str;
  if (m >= 0x90 && m <= 0x9f) return fixLength = m & 0x0f, Kind::Array;
  if (m >= 0x80 && m <= 0x8f) return fixLength = m & 0x0f, Kind::Map;
  switch (m) {
    case 0xd9:
    case 0xda:
    case 0xdb:
      return Kind::Str;
    case 0xc4:
    case 0xc5:
    case 0xc6:
      return Kind::Bin;
    case 0xdc:
    case 0xdd:
      return Kind::Array;
    case 0xde:
    case 0xdf:
      return Kind::Map;
    case 0xc7:
    case 0xc8:
    case 0xc9:
      return Kind::Ext;
    case 0xd4:
      return fixLength = 1, Kind::Ext;
    case 0xd5:
      return fixLength = 2, Kind::Ext;
    case 0xd6:
      return fixLength = 4, Kind::Ext;
    case 0xd7:
      return fixLength = 8, Kind::Ext;
    case 0xd8:
      return fixLength = 16, Kind::Ext;
    default:
      return Kind::Other;
  }
}

uint64_t loadBigEndian(const uint8_t* p, int bytes) {
  uint64_t v = 0;
  for (int i = 0; i < bytes; ++i) v = (v << 8) | p[i];
  return v;
}

}  // namespace

bool Decoder::valueAt(Value& out, int depth) {
  if (depth > kMaxDepth) return fail();
  const uint8_t* p;
  if (!take(1, p)) return false;
  const uint8_t m = *p;
  if (m <= 0x7f) return out = Value(int64_t{m}), true;
  if (m >= 0xe0) return out = Value(int64_t{static_cast<int8_t>(m)}), true;

  int64_t fix;
  const Kind kind = kindOf(m, fix);
  uint32_t length = 0;
  if (kind != Kind::Other) {
    if (fix >= 0) {
      length = static_cast<uint32_t>(fix);
    } else if (!lengthOf(m, length)) {
      return false;
    }
  }

  switch (kind) {
    case Kind::Str: {
      if (!take(length, p)) return false;
      out = Value(String::fromUtf8({reinterpret_cast<const char*>(p), length}));
      return true;
    }
    case Kind::Bin: {
      if (!take(length, p)) return false;
      out = Value(Data(p, p + length));
      return true;
    }
    case Kind::Array: {
      // Each element takes at least one byte: a count beyond what is left
      // is a lie, refused before anything is reserved.
      if (length > remaining()) return fail();
      Array array;
      array.reserve(length);
      for (uint32_t i = 0; i < length; ++i) {
        Value element;
        if (!valueAt(element, depth + 1)) return false;
        array.push_back(std::move(element));
      }
      out = Value(std::move(array));
      return true;
    }
    case Kind::Map: {
      if (length > remaining() / 2) return fail();
      Dictionary dictionary;
      auto& entries = dictionary.mutableEntries();
      entries.reserve(length);
      // Small maps look for a repeated key by scanning; large ones by hash,
      // so that decoding stays linear.
      std::unordered_map<std::u16string_view, size_t> index;
      const bool hashed = length > 16;
      for (uint32_t i = 0; i < length; ++i) {
        Value key, element;
        if (!valueAt(key, depth + 1) || !key.isString()) return fail();
        if (!valueAt(element, depth + 1)) return false;
        String name = key.asString();
        if (!hashed) {
          dictionary.set(name, std::move(element));
        } else if (auto [at, added] = index.try_emplace(name.view(), entries.size()); added) {
          entries.emplace_back(std::move(name), std::move(element));
        } else {
          entries[at->second].second = std::move(element);
        }
      }
      out = Value(std::move(dictionary));
      return true;
    }
    case Kind::Ext: {
      const uint8_t* typeByte;
      if (!take(1, typeByte) || !take(length, p)) return false;
      switch (static_cast<ExtType>(static_cast<int8_t>(*typeByte))) {
        case ExtType::Date:
          if (length != 8) return fail();
          out = Value(Date{std::bit_cast<double>(loadBigEndian(p, 8))});
          return true;
        case ExtType::Url:
          out = Value(Url{String::fromUtf8({reinterpret_cast<const char*>(p), length})});
          return true;
        case ExtType::Set: {
          Decoder inner({p, length});
          Value members;
          if (!inner.valueAt(members, depth + 1) || !inner.atEnd() || !members.isArray()) return fail();
          ValueSet set;
          for (const Value& member : *members.array()) set.insert(member);
          out = Value(std::move(set));
          return true;
        }
        default:
          return fail();  // descriptors are not values; unknown types
      }
    }
    case Kind::Other:
      break;
  }

  uint64_t v;
  switch (m) {
    case 0xc0:
      return out = Value(), true;
    case 0xc2:
      return out = Value(false), true;
    case 0xc3:
      return out = Value(true), true;
    case 0xcc:
    case 0xcd:
    case 0xce:
    case 0xcf: {
      if (!bigEndian(1 << (m - 0xcc), v)) return false;
      if (v > static_cast<uint64_t>(INT64_MAX)) return fail();
      return out = Value(static_cast<int64_t>(v)), true;
    }
    case 0xd0:
    case 0xd1:
    case 0xd2:
    case 0xd3: {
      const int width = 1 << (m - 0xd0);
      if (!bigEndian(width, v)) return false;
      // Sign-extend from the field's width.
      const int shift = 64 - width * 8;
      return out = Value(static_cast<int64_t>(v << shift) >> shift), true;
    }
    case 0xca:
      if (!bigEndian(4, v)) return false;
      return out = Value(std::bit_cast<float>(static_cast<uint32_t>(v))), true;
    case 0xcb:
      if (!bigEndian(8, v)) return false;
      return out = Value(std::bit_cast<double>(v)), true;
    default:
      return fail();  // 0xc1, never used
  }
}

bool Decoder::value(Value& out) {
  return valueAt(out, 0);
}

bool Decoder::atDescriptor() const {
  if (failed_ || next_ >= end_) return false;
  int64_t fix;
  if (kindOf(*next_, fix) != Kind::Ext) return false;
  size_t typeOffset = fix >= 0 ? 1 : (*next_ == 0xc7 ? 2 : *next_ == 0xc8 ? 3 : 5);
  return static_cast<size_t>(end_ - next_) > typeOffset &&
         static_cast<int8_t>(next_[typeOffset]) == static_cast<int8_t>(ExtType::ScriptDescriptor);
}

bool Decoder::descriptor(ScriptDescriptor& out) {
  if (!atDescriptor()) return fail();
  const uint8_t* p;
  take(1, p);
  const uint8_t m = *p;
  int64_t fix;
  kindOf(m, fix);
  uint32_t length;
  if (fix >= 0) {
    length = static_cast<uint32_t>(fix);
  } else if (!lengthOf(m, length)) {
    return false;
  }
  const uint8_t* typeByte;
  if (!take(1, typeByte) || length < 4 || !take(length, p)) return fail();
  out.descriptorType = static_cast<uint32_t>(loadBigEndian(p, 4));
  out.data.assign(p + 4, p + length);
  return true;
}

bool Decoder::arrayHeader(uint32_t& count) {
  const uint8_t* p;
  if (!take(1, p)) return false;
  int64_t fix;
  if (kindOf(*p, fix) != Kind::Array) return fail();
  if (fix >= 0) {
    count = static_cast<uint32_t>(fix);
  } else if (!lengthOf(*p, count)) {
    return false;
  }
  return count <= remaining() || fail();
}

bool Decoder::mapHeader(uint32_t& count) {
  const uint8_t* p;
  if (!take(1, p)) return false;
  int64_t fix;
  if (kindOf(*p, fix) != Kind::Map) return fail();
  if (fix >= 0) {
    count = static_cast<uint32_t>(fix);
  } else if (!lengthOf(*p, count)) {
    return false;
  }
  return count <= remaining() / 2 || fail();
}

bool Decoder::string(std::string& utf8) {
  const uint8_t* p;
  if (!take(1, p)) return false;
  int64_t fix;
  if (kindOf(*p, fix) != Kind::Str) return fail();
  uint32_t length;
  if (fix >= 0) {
    length = static_cast<uint32_t>(fix);
  } else if (!lengthOf(*p, length)) {
    return false;
  }
  if (!take(length, p)) return false;
  utf8.assign(reinterpret_cast<const char*>(p), length);
  return true;
}

bool Decoder::unsignedInteger(uint64_t& v) {
  if (failed_ || next_ >= end_) return fail();
  const uint8_t m = *next_;
  if (m <= 0x7f) {
    ++next_;
    v = m;
    return true;
  }
  if (m < 0xcc || m > 0xcf) return fail();
  ++next_;
  return bigEndian(1 << (m - 0xcc), v);
}

bool Decoder::boolean(bool& b) {
  if (failed_ || next_ >= end_ || (*next_ != 0xc2 && *next_ != 0xc3)) return fail();
  b = *next_++ == 0xc3;
  return true;
}

bool Decoder::skipAt(int depth) {
  if (depth > kMaxDepth) return fail();
  const uint8_t* p;
  if (!take(1, p)) return false;
  const uint8_t m = *p;
  if (m <= 0x7f || m >= 0xe0) return true;
  int64_t fix;
  const Kind kind = kindOf(m, fix);
  uint32_t length = 0;
  if (kind != Kind::Other) {
    if (fix >= 0) {
      length = static_cast<uint32_t>(fix);
    } else if (!lengthOf(m, length)) {
      return false;
    }
  }
  switch (kind) {
    case Kind::Str:
    case Kind::Bin:
      return take(length, p);
    case Kind::Ext:
      return take(1 + size_t{length}, p);
    case Kind::Array:
      for (uint32_t i = 0; i < length; ++i)
        if (!skipAt(depth + 1)) return false;
      return true;
    case Kind::Map:
      for (uint64_t i = 0; i < uint64_t{length} * 2; ++i)
        if (!skipAt(depth + 1)) return false;
      return true;
    case Kind::Other:
      break;
  }
  switch (m) {
    case 0xc0:
    case 0xc2:
    case 0xc3:
      return true;
    case 0xcc:
    case 0xd0:
      return take(1, p);
    case 0xcd:
    case 0xd1:
      return take(2, p);
    case 0xce:
    case 0xd2:
    case 0xca:
      return take(4, p);
    case 0xcf:
    case 0xd3:
    case 0xcb:
      return take(8, p);
    default:
      return fail();
  }
}

bool Decoder::skip() {
  return skipAt(0);
}

bool decodeValue(std::span<const uint8_t> bytes, Value& out) {
  Decoder decoder(bytes);
  return decoder.value(out) && decoder.atEnd();
}

}  // namespace norvane::wire
