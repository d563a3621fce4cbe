// The URL tables. Rows are lower case and match anywhere in the lower-cased
// URL (the search-host table: in the host). Each table ends with a null row.

#include "urls/url_tables.h"

namespace norvane::urls::tables {

const char* const kImageAd[] = {".com/ads/per_site/",
                                "/realmedia/ads/creatives/oasdefault/",
                                "/realmedia/ads/creatives/qc/",
                                "pagead2.googlesyndication.com/pagead/imgad",
                                "tpc.googlesyndication.com/",
                                "ad.doubleclick.net/ad/",
                                "view.atdmt.com/",
                                "ad.yieldmanager.com/imp",
                                "ads.bluelithium.com/",
                                "a.tribalfusion.com/",
                                "adserver.adtechus.com/",
                                "images.linksynergy.com/",
                                "banners.webmasterplan.com/",
                                nullptr};

const char* const kTextAd[] = {".com/google/box?",
                               "external/overture/iframe/",
                               "/overturead.",
                               "/partner/overture/",
                               "pagead2.googlesyndication.com/pagead/show_ads",
                               "pagead2.googlesyndication.com/pagead/ads?",
                               "googleads.g.doubleclick.net/pagead/",
                               "partner.googleadservices.com/",
                               "afs.googlesyndication.com/",
                               "ypn-js.overture.com/",
                               "ads.adbrite.com/",
                               "kona.kontera.com/",
                               "us.intellitxt.com/",
                               "ads.vibrantmedia.com/",
                               "resources.infolinks.com/",
                               "mm.chitika.net/",
                               "scripts.chitika.net/",
                               "pub.clicksor.net/",
                               "ads.clicksor.com/",
                               "adserver.bidvertiser.com/",
                               "ads.pheedo.com/",
                               "js.adsonar.com/",
                               "tag.contextweb.com/",
                               "ads.revenuehits.com/",
                               "contextual.media.net/",
                               "aax.amazon-adsystem.com/",
                               "engine.adzerk.net/",
                               "static.adzerk.net/",
                               "ads.lijit.com/",
                               "ads.adtegrity.net/",
                               "ads.xtendmedia.com/",
                               "text-link-ads.com/",
                               "textlinkads.com/",
                               "ads.yieldbuild.com/",
                               "adserver.yahoo.com/",
                               "ads.adsupply.com/",
                               nullptr};

const char* const kGeneralAd[] = {"-ads.",
                                  "/ads.",
                                  "&adid=",
                                  "adframe.",
                                  "adframe2.",
                                  "adframe3.",
                                  "_ads/iframe",
                                  "/iframepops",
                                  "iframepop.php",
                                  "adfetch?adid",
                                  "adsserver",
                                  "adclass=",
                                  "/images/circulation/",
                                  "popupwrapper",
                                  "slideshow.cgi",
                                  "maintiles.php",
                                  "/annonser",
                                  "/reklama",
                                  "/sponsor/frame",
                                  "textad.php",
                                  "textad2.php",
                                  "160x90.php",
                                  "_footerads_",
                                  "/adlog.php?",
                                  "iframead.cgi?ad=",
                                  "/sponsor_banners/",
                                  "displayadleader.asp?showbanner=",
                                  "displayadbanner_tile.asp?showbanner=",
                                  "smartserve/ad?placement=",
                                  "/st?ad_type=",
                                  "/www/delivery/afr.php?",
                                  "/iframe_ad_code.",
                                  "/mgbanner/banner/",
                                  ".doubleclick.net/",
                                  ".googlesyndication.com/",
                                  ".googleadservices.com/",
                                  ".adnxs.com/",
                                  ".advertising.com/",
                                  ".atdmt.com/",
                                  ".yieldmanager.com/",
                                  ".fastclick.net/",
                                  ".valueclick.com/",
                                  ".tribalfusion.com/",
                                  ".adbrite.com/",
                                  ".adtech.de/",
                                  ".adtechus.com/",
                                  ".zedo.com/",
                                  ".casalemedia.com/",
                                  ".burstnet.com/",
                                  ".revsci.net/",
                                  ".mediaplex.com/",
                                  ".qksrv.net/",
                                  ".anrdoezrs.net/",
                                  ".dpbolvw.net/",
                                  ".jdoqocy.com/",
                                  ".tkqlhce.com/",
                                  ".kqzyfj.com/",
                                  "click.linksynergy.com/",
                                  ".awin1.com/",
                                  ".tradedoubler.com/",
                                  ".zanox.com/",
                                  ".webgains.com/",
                                  ".shareasale.com/",
                                  ".hop.clickbank.net",
                                  ".pricegrabber.com/",
                                  ".shopzilla.com/",
                                  ".kelkoo.",
                                  ".criteo.com/",
                                  ".openx.net/",
                                  ".pubmatic.com/",
                                  ".rubiconproject.com/",
                                  ".adform.net/",
                                  ".smartadserver.com/",
                                  ".2mdn.net/",
                                  ".serving-sys.com/",
                                  nullptr};

const char* const kAdPath[] = {"/ad/",
                               "/ad_",
                               "/ads",
                               "/adv/",
                               "/adv.php",
                               "/adverts/",
                               "/adclick.",
                               "/adview.",
                               "/ad_detail.",
                               "/adref/",
                               "/ad_refresh.",
                               "_adbox.html",
                               "/iframead/display.aspx",
                               nullptr};

// Matched exactly in the original URL: they only exempt it from the ad path
// table.
const char* const kAdException[] = {
    "//adshop.", "adsoftheworld.com", "adsabs.harvard.edu", "adsbit.harvard.edu", "/adsk/", nullptr};

const char* const kCommonAdHost[] = {
    "imageshack.us/", "photobucket.com/", "tinypic.com/",   "about.com/",       "myspace.com/",
    "geocities.com/", "tripod.com/",      "angelfire.com/", "fortunecity.com/", "bravenet.com/",
    "sitemeter.com/", "ask.com/",         nullptr};

const char* const kShare[] = {"/ngs/subscriber/subext.aspx?",
                              "action/submitbookmark?url=",
                              "del.icio.us/post",
                              "delicious.com/save",
                              "digg.com/submit",
                              "reddit.com/submit",
                              "stumbleupon.com/submit",
                              "facebook.com/sharer",
                              "facebook.com/share.php",
                              "twitter.com/home?status=",
                              "twitter.com/share",
                              "linkedin.com/sharearticle",
                              "linkedin.com/sharing/share-offsite",
                              "pinterest.com/pin/create",
                              "tumblr.com/share",
                              "tumblr.com/widgets/share",
                              "plus.google.com/share",
                              "technorati.com/faves",
                              "newsvine.com/_tools/seed",
                              "furl.net/storeit",
                              "blinklist.com/index.php?action=blink",
                              "ma.gnolia.com/bookmarklet",
                              "simpy.com/simpy/linkadd",
                              "spurl.net/spurl.php",
                              "blogmarks.net/my/new.php",
                              "diigo.com/post",
                              "myweb2.search.yahoo.com/myresults/bookmarklet",
                              "bookmarks.yahoo.com/toolbar/savebm",
                              "google.com/bookmarks/mark",
                              "slashdot.org/bookmark.pl",
                              "fark.com/cgi/farkit.pl",
                              "mister-wong.com/index.php?action=addurl",
                              "bibsonomy.org/showbookmarkentry",
                              "connotea.org/addpopup",
                              "citeulike.org/posturl",
                              "fusion.google.com/add?",
                              "add.my.yahoo.com/rss?",
                              "add.my.yahoo.com/content?",
                              "netvibes.com/subscribe.php",
                              "bloglines.com/sub",
                              "feeds.my.aol.com/add.jsp",
                              "rojo.com/add-subscription",
                              "pageflakes.com/subscribe.aspx",
                              "feedly.com/i/subscription",
                              "api.addthis.com/oexchange",
                              "shareaholic.com/api/share",
                              "buffer.com/add",
                              "bufferapp.com/add",
                              "getpocket.com/save",
                              "getpocket.com/edit",
                              "instapaper.com/hello",
                              "instapaper.com/edit",
                              "news.ycombinator.com/submitlink",
                              "vk.com/share.php",
                              "mix.com/add",
                              "flipboard.com/bookmarklet",
                              "evernote.com/clip.action",
                              "api.whatsapp.com/send?",
                              "telegram.me/share",
                              "xing.com/spi/shares",
                              "service.weibo.com/share",
                              nullptr};

const char* const kSecondShare[] = {"addthis.com/bookmark", "sharethis.com/share", "addtoany.com/share",
                                    "facebook.com/sharer/", "twitter.com/intent/", nullptr};

const char* const kCaptcha[] = {"google.com/recaptcha/", "api.recaptcha.net/", "hcaptcha.com/", nullptr};

const char* const kTranslation[] = {"/language/translation/translatedpage",
                                    "/wp-content/plugins/global-translator/translator.php?",
                                    "language/translatedpage",
                                    "/language/interstitial",
                                    "/translate_c?",
                                    "/translate?hl=",
                                    "translate.googleusercontent.com/",
                                    "babelfish.yahoo.com/",
                                    "babelfish.altavista.com/",
                                    "microsofttranslator.com/bv.aspx",
                                    "translate.yandex.",
                                    nullptr};

const char* const kTopic[] = {"viewtopic.php", "viewthread.php", "showtopic.php",
                              "showpost.php",  "showthread.php", nullptr};

const char* const kForum[] = {"comment", "forum", "board", "phpbb", "yabb", nullptr};

const char* const kCache[] = {"/cache?q=",
                              "search/cache?",
                              "/search/cache%3f",
                              "/mac?q=cache:",
                              "/linux?q=cache:",
                              "/scholar?q=cache:",
                              "/bsd?q=cache:",
                              "/windows?q=cache:",
                              "/custom?q=cache:",
                              "/unclesam?q=cache:",
                              "search?q=cache:",
                              "&cached=http://",
                              "/search/srpcache?",
                              "webcache.googleusercontent.com/",
                              "cc.bingj.com/cache.aspx",
                              "cc.msnscache.com/cache.aspx",
                              "cache.baidu.com/",
                              "hghltd.yandex.net/yandbtm",
                              nullptr};

const char* const kSearchHost[] = {
    "search.",        ".search",       "duckduckgo.",  "startpage.",    "ixquick.",    "dogpile.",
    "metacrawler.",   "webcrawler.",   "excite.",      "lycos.",        "altavista.",  "alltheweb.",
    "hotbot.",        "teoma.",        "gigablast.",   "mojeek.",       "qwant.",      "ecosia.",
    "yandex.",        "baidu.",        "naver.",       "daum.net",      "sogou.",      ".so.com",
    "seznam.",        "swisscows.",    "searx.",       "wolframalpha.", "dmoz.",       "curlie.",
    "botw.org",       "web.archive.",  "archive.org",  "archive.today", "archive.is",  "archive.ph",
    "webcitation.",   "britannica.",   "dictionary.",  "thesaurus.",    "answers.com", "wiktionary.",
    "scholar.",       "citeseerx.",    "base-search.", "worldcat.",     "pubmed.",     "semanticscholar.",
    "stackexchange.", "encyclopedia.", "infoplease.",  "reference.com", "metager.",    ".ask.com",
    "mamma.",         "kartoo.",       "vivisimo.",    "clusty.",       "wisenut.",    "cuil.",
    "blekko.",        "entireweb.",    "yippy.",       "info.com",      "looksmart.",  ".bing.com",
    "jayde.",         "joeant.",       "gibiru.",      "presearch.",    "you.com",     nullptr};

const detail::RowMatcher& imageAdMatcher() {
  static const detail::RowMatcher matcher(kImageAd);
  return matcher;
}
const detail::RowMatcher& captchaMatcher() {
  static const detail::RowMatcher matcher(kCaptcha);
  return matcher;
}
const detail::RowMatcher& translationMatcher() {
  static const detail::RowMatcher matcher(kTranslation);
  return matcher;
}
const detail::RowMatcher& topicMatcher() {
  static const detail::RowMatcher matcher(kTopic);
  return matcher;
}
const detail::RowMatcher& forumMatcher() {
  static const detail::RowMatcher matcher(kForum);
  return matcher;
}
const detail::RowMatcher& cacheMatcher() {
  static const detail::RowMatcher matcher(kCache);
  return matcher;
}
const detail::RowMatcher& searchHostMatcher() {
  static const detail::RowMatcher matcher(kSearchHost);
  return matcher;
}
const detail::RowMatcher& advertisementMatcher() {
  static const detail::RowMatcher matcher({kTextAd, kImageAd, kGeneralAd, kAdPath, kCommonAdHost});
  return matcher;
}
const detail::RowMatcher& shareMatcher() {
  static const detail::RowMatcher matcher({kShare, kSecondShare});
  return matcher;
}

}  // namespace norvane::urls::tables
