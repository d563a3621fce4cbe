#include "urls/url_text.h"

namespace norvane::urls::detail {

LoweredText::LoweredText(View s) : size_(s.size()) {
  const unichar* lower = text::lowerCharsTable();
  unichar* out = buffer_;
  if (s.size() > sizeof(buffer_) / sizeof(buffer_[0])) {
    heap_.resize(s.size());
    out = heap_.data();
  }
  for (size_t i = 0; i < s.size(); ++i) out[i] = lower[s[i]];
  data_ = out;
}

}  // namespace norvane::urls::detail
