// The fixed URL tables: null-terminated arrays of lower-case rows.
#pragma once

#include "urls/row_matcher.h"

namespace norvane::urls::tables {

extern const char* const kImageAd[];
extern const char* const kTextAd[];
extern const char* const kGeneralAd[];
extern const char* const kAdPath[];
extern const char* const kAdException[];
extern const char* const kCommonAdHost[];
extern const char* const kShare[];
extern const char* const kSecondShare[];
extern const char* const kCaptcha[];
extern const char* const kTranslation[];
extern const char* const kTopic[];
extern const char* const kForum[];
extern const char* const kCache[];
extern const char* const kSearchHost[];

// One matcher per table, built at first use.
const detail::RowMatcher& imageAdMatcher();
const detail::RowMatcher& captchaMatcher();
const detail::RowMatcher& translationMatcher();
const detail::RowMatcher& topicMatcher();
const detail::RowMatcher& forumMatcher();
const detail::RowMatcher& cacheMatcher();
const detail::RowMatcher& searchHostMatcher();

// The tables of the advertisement test in one walk, with these bits.
enum AdTable : uint32_t { kTextAdBit = 1, kImageAdBit = 2, kGeneralAdBit = 4, kAdPathBit = 8, kCommonAdHostBit = 16 };
const detail::RowMatcher& advertisementMatcher();
// The two share tables: bit 1 the first, bit 2 the second.
const detail::RowMatcher& shareMatcher();

}  // namespace norvane::urls::tables
