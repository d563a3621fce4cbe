// Fuzzes the submitted-form readers and the inflater on arbitrary bytes. The
// first byte picks a boundary length; the rest is the body.
#include <cstddef>
#include <cstdint>

#include "norvane/files/data.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace norvane;
  if (size == 0) return 0;
  size_t boundaryLength = bytes[0] % 16;
  if (boundaryLength + 1 > size) return 0;
  String boundary = String::fromLatin1(std::string_view(reinterpret_cast<const char*>(bytes + 1), boundaryLength));
  Data body(bytes + 1 + boundaryLength, bytes + size);

  if (auto fields = files::formDataUsingBoundary(body, boundary)) {
    for (const auto& [name, value] : *fields) {
      // Every field value is a piece of the body.
      if (const Data* data = value.data(); data && data->size() > body.size()) __builtin_trap();
    }
  }
  files::URLEncodedFormData(body);
  if (auto inflated = files::dataByInflatingData(body)) {
    auto again = files::dataByDeflatingData(*inflated);
    if (!inflated->empty() && (!again || files::dataByInflatingData(*again) != *inflated)) __builtin_trap();
  }
  return 0;
}
