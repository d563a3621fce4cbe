// The fixed URL tables: null-terminated arrays of lower-case rows.
#pragma once

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

}  // namespace norvane::urls::tables
