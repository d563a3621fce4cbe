// Runs the URL normal forms and classification over arbitrary text, read
// both as UTF-8 and as raw UTF-16 units.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "norvane/urls/classification.h"
#include "norvane/urls/normal_forms.h"
#include "norvane/urls/url_object.h"

namespace {

using namespace norvane;
using namespace norvane::urls;

void exercise(const String& url) {
  String simplified = simplifiedStringURL(url);
  // A form that changes nothing must hand back the receiver itself.
  String again = standardizedStringURL(simplified);
  if (again == simplified && !again.isSameObject(simplified)) abort();

  stringByReplacingASCIIPercentEscapesOfURL(url);
  stringByReplacingPercentEscapesOfURL(url);
  stringByReplacingPercentEscapesOfURL(url, 5);
  stringByAddingStandardPercentEscapesToURL(url);
  stringByAddingASCIIPercentEscapesToURL(url);
  stringByAddingPercentEscapesToURL(url);
  stringByFormattingQueryTerm(url, 4);
  stringByFormattingURL(url);
  stringURLWithoutCredentials(url);
  stringURLScheme(url);
  stringURLPathExtension(url);
  displayStringURL(url);
  isEqualToStringURL(url, simplified);
  stringURLByRemovingQueryParam(url, u"ved=");
  simplifiedStringURL(url, true, false, true, false, false);
  invertedHostComponents(url, 3);
  stringByAppendingInvertedHostComponentsToPath(url, String::fromLatin1("/tmp"), 2);
  WebKitStringURL(url);
  validFeedStringURL(url);

  stringURLIsAdvertisement(url);
  stringURLIsBookmarklet(url);
  stringURLIsTopicOrThread(url);
  stringURLIsCached(url);
  isMailStringURL(url);
  isMarkupMIMEType(url);
  isMultimediaType(url);
  isArchiveType(url);

  Url object{url};
  isSearchEngine(object);
  displayString(object);
  absoluteStringWithoutUserAndPassword(object);
  absoluteStringWithHostAndPath(object);
  pathExtension(object);
  simplifiedStringURL(object);

  // In-place conversion never grows the text.
  std::u16string units = url.toU16();
  if (convertPercentEscapesOfURL(units.data(), units.size(), true) > units.size()) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  exercise(String::fromUtf8(std::string_view(reinterpret_cast<const char*>(data), size)));
  std::u16string units(size / 2, u'\0');
  if (!units.empty()) memcpy(units.data(), data, units.size() * 2);
  exercise(String(units));
  return 0;
}
