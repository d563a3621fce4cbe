// The service object and the request dispatch, in this process: file
// references, the reply rules and the failure answers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "bundle_fixture.h"
#include "norvane/core/log.h"
#include "service/dispatch.h"
#include "service/file_reference.h"
#include "service/transport.h"

namespace norvane::service {
namespace {

using testing_support::TemporaryFolder;
using testing_support::writeFile;
using wire::Protocol;

const importers::ImporterRoots kShipped{"", "", NORVANE_BINARY_DIR "/lib/norvane/importers"};

class HelperTest : public testing::Test {
 protected:
  HelperTest() {
    setenv("NORVANE_IMPORTER_PATH", "::" NORVANE_BINARY_DIR "/lib/norvane/importers", 1);
    helper_ = std::make_unique<NorvaneHelper>();
    unsetenv("NORVANE_IMPORTER_PATH");
    textFile_ = folder_ / "notes.txt";
    writeFile(textFile_, "First line\nsecond\n");
  }

  std::optional<wire::Reply> send(const std::string& operation, std::vector<wire::Argument> arguments,
                                  bool noReply = false, Protocol channel = Protocol::ImExportXPC) {
    wire::Request request{operation, ++id_, std::move(arguments), noReply};
    return handleRequest(*helper_, request, channel);
  }

  TemporaryFolder folder_;
  std::string textFile_;
  std::unique_ptr<NorvaneHelper> helper_;
  uint64_t id_ = 0;
};

std::string textContent(const Value& result) {
  const Dictionary* d = result.dictionary();
  const Value* text = d ? d->find(u"kMDItemTextContent") : nullptr;
  return text ? text->asString().toUtf8() : "<absent>";
}

TEST_F(HelperTest, EveryKindOfFileReferenceReachesTheFile) {
  Value path(String::fromUtf8(textFile_));
  Value url(fileURLWithPath(String::fromUtf8(textFile_)));
  Value bookmark(*bookmarkDataForPath(String::fromUtf8(textFile_), kBookmarkSecurityScopeReadOnly));
  for (const Value& reference : {path, url, bookmark}) {
    SecurityScopeCalls before = securityScopeCalls();
    EXPECT_EQ(textContent(helper_->metaDataForFile(reference)), "First line\nsecond\n");
    EXPECT_TRUE(helper_->supportsFile(reference));
    SecurityScopeCalls after = securityScopeCalls();
    uint64_t scoped = reference.isString() ? 0 : 2;  // one start and one stop per request
    EXPECT_EQ(after.starts - before.starts, scoped);
    EXPECT_EQ(after.stops - before.stops, scoped);
  }
}

TEST_F(HelperTest, ReferencesWithoutAPathRunWithNone) {
  SecurityScopeCalls before = securityScopeCalls();
  LogCapture log;
  // Another class, a URL that cannot be accessed, and a bookmark that does
  // not resolve.
  EXPECT_TRUE(helper_->metaDataForFile(Value(int64_t{42})).isNull());
  EXPECT_TRUE(helper_->metaDataForFile(Value(Url{u"https://example.org/notes.txt"})).isNull());
  EXPECT_FALSE(helper_->supportsFile(Value(Data{'n', 'o', 'p', 'e'})));
  SecurityScopeCalls after = securityScopeCalls();
  EXPECT_EQ(after.starts - before.starts, 1u);
  EXPECT_EQ(after.stops - before.stops, 1u);  // stopped although start answered false
  EXPECT_TRUE(log.contains("The bookmark data isn't in the correct format."));
}

TEST_F(HelperTest, BookmarkOfAVanishedFileLogsAndRunsWithoutPath) {
  std::string gone = folder_ / "gone.txt";
  writeFile(gone, "x");
  Data bookmark = *bookmarkDataForPath(String::fromUtf8(gone), kBookmarkWithSecurityScope);
  std::filesystem::remove(gone);
  LogCapture log;
  SecurityScopeCalls before = securityScopeCalls();
  EXPECT_TRUE(helper_->metaDataForFile(Value(bookmark)).isNull());
  EXPECT_TRUE(log.contains("doesn't exist"));
  EXPECT_EQ(securityScopeCalls().starts, before.starts);  // nothing resolved, nothing to access
}

TEST(FileReferences, BookmarksNeedAbsolutePaths) {
  EXPECT_FALSE(bookmarkDataForPath(String(), kBookmarkWithSecurityScope));
  EXPECT_FALSE(bookmarkDataForPath(String(u""), kBookmarkWithSecurityScope));
  EXPECT_FALSE(bookmarkDataForPath(String(u"relative/file"), kBookmarkWithSecurityScope));
  std::string error;
  EXPECT_FALSE(URLByResolvingBookmarkData(Data{}, &error));
  EXPECT_FALSE(error.empty());
}

TEST(FileReferences, FileUrlsAndPaths) {
  const std::pair<std::u16string, std::u16string> cases[] = {
      {u"file:///tmp/a%20b.txt", u"/tmp/a b.txt"},
      {u"file://localhost/etc/hosts", u"/etc/hosts"},
      {u"FILE:///x/", u"/x"},
      {u"file:///", u"/"},
      {u"file:///q?query#frag", u"/q"},
      {u"file:///caf%C3%A9", u"/café"},
      {u"file:///bad%zz", u"/bad%zz"},
  };
  for (const auto& [url, path] : cases) EXPECT_EQ(pathOfFileURL(Url{url}).view(), path) << String(url).toUtf8();
  EXPECT_TRUE(pathOfFileURL(Url{u"https://example.org/"}).isNull());
  EXPECT_TRUE(pathOfFileURL(Url{u"file:relative"}).isNull());
  EXPECT_EQ(fileURLWithPath(String(u"/a b/é#?")).string.view(), u"file:///a%20b/%C3%A9%23%3F");
  EXPECT_EQ(pathOfFileURL(fileURLWithPath(String(u"/a b/é#?"))).view(), u"/a b/é#?");
}

TEST_F(HelperTest, RefusedRequestsCarryAnErrorAndDoNoWork) {
  SecurityScopeCalls before = securityScopeCalls();
  auto unknown = send("noSuchRequest:", {});
  ASSERT_TRUE(unknown);
  EXPECT_THAT(unknown->error, testing::HasSubstr("unknown operation"));
  auto wrongCount = send("metaDataForFile:", {});
  ASSERT_TRUE(wrongCount);
  EXPECT_FALSE(wrongCount->error.empty());
  auto wrongType = send("previewForFile:maxThumbnailSize:asIcon:", {Value(u"/x"), Value(u"big"), Value(true)});
  ASSERT_TRUE(wrongType);
  EXPECT_FALSE(wrongType->error.empty());
  auto outOfRange = send("stringFromPDF:type:", {Value(Data{1}), Value(int64_t{1} << 40)});
  ASSERT_TRUE(outOfRange);
  EXPECT_FALSE(outOfRange->error.empty());
  auto badUrl = send("metaDataForFile:", {Value(Url{fileURLWithPath(String::fromUtf8(textFile_)).string})});
  EXPECT_TRUE(badUrl && badUrl->error.empty());
  // terminate: belongs to the service object, not to the listener's protocol.
  auto notOffered = send("terminate:", {Value()});
  ASSERT_TRUE(notOffered);
  EXPECT_FALSE(notOffered->error.empty());
  EXPECT_EQ(securityScopeCalls().starts - before.starts, 1u);
  EXPECT_EQ(unknown->id + 1, wrongCount->id);
}

TEST_F(HelperTest, RepliesKeepTheirShapes) {
  auto boxed = send("supportsFile:handler:", {Value(String::fromUtf8(textFile_))});
  ASSERT_TRUE(boxed);
  EXPECT_TRUE(boxed->boxed);
  EXPECT_EQ(boxed->result, Value(true));
  auto plain = send("supportsFile:", {Value(String::fromUtf8(textFile_))});
  EXPECT_FALSE(plain->boxed);
  EXPECT_EQ(plain->result, Value(true));
  auto preflight = send("preflightWebArchiveData:handler:", {Value(Data{1, 2})});
  EXPECT_FALSE(preflight->boxed);
  EXPECT_EQ(preflight->result, Value(false));
  auto ping = send("ping", {});
  ASSERT_TRUE(ping);
  EXPECT_TRUE(ping->result.isNull());
  EXPECT_FALSE(send("ping", {}, true).has_value());
  // terminate: with an argument does nothing, on the named connection.
  auto terminateWithArgument = send("terminate:", {Value(u"now")}, false, Protocol::ServiceObject);
  ASSERT_TRUE(terminateWithArgument);
  EXPECT_TRUE(terminateWithArgument->error.empty());
}

TEST_F(HelperTest, HandlerFormsWithoutHandlerDoNothing) {
  SecurityScopeCalls before = securityScopeCalls();
  Value url(fileURLWithPath(String::fromUtf8(textFile_)));
  EXPECT_FALSE(send("metaDataForFile:handler:", {url}, true));
  EXPECT_FALSE(send("posterImageForMovieWithFile:handler:", {url}, true));
  EXPECT_EQ(securityScopeCalls().starts, before.starts);
  auto withHandler = send("metaDataForFile:handler:", {url});
  ASSERT_TRUE(withHandler);
  EXPECT_EQ(textContent(withHandler->result), "First line\nsecond\n");
  EXPECT_EQ(securityScopeCalls().starts - before.starts, 1u);
}

Dictionary posterFailure() {
  Dictionary d;
  d.set(String(u"Duration"), Value(0.0f));
  d.set(String(u"Size"), Value(u"{0, 0}"));
  return d;
}

TEST_F(HelperTest, RequestsWithoutAttachedWorkAnswerTheirFailure) {
  Value file(String::fromUtf8(textFile_));
  const std::pair<std::string, std::vector<wire::Argument>> requests[] = {
      {"PDFImageRepOfFile:", {file}},
      {"imageWithContentsOfFile:maxThumbnailSize:alwaysFromImage:stringType:",
       {file, Value(128), Value(false), Value(1)}},
      {"previewForFile:maxThumbnailSize:asIcon:", {file, Value(128), Value(true)}},
      {"stringFromPDF:type:", {Value(Data{'%', 'P', 'D', 'F'}), Value(1)}},
      {"attributedStringWithContentsOfFile:", {file}},
      {"RTFDWithHTML:baseURL:allowRemoteRequest:charset:",
       {Value(Data{'<', 'p', '>'}), Value(), Value(false), Value()}},
  };
  for (const auto& [operation, arguments] : requests) {
    auto reply = send(operation, arguments);
    ASSERT_TRUE(reply) << operation;
    EXPECT_TRUE(reply->error.empty()) << operation;
    EXPECT_TRUE(reply->result.isNull()) << operation;
  }
  EXPECT_EQ(send("posterImageForMovieWithFile:", {file})->result, Value(posterFailure()));
  EXPECT_EQ(send("searchableTextOfWebArchive:", {file})->result, Value(Dictionary()));
  EXPECT_EQ(send("preflightWebArchiveData:", {Value(Data{1})})->result, Value(false));
}

TEST_F(HelperTest, ExceptionsOfCaughtRequestsGiveNilQuietly) {
  RequestWork work;
  work.PDFImageRepOfFile = [](const String&) -> std::optional<Data> { throw std::runtime_error("broken"); };
  work.stringFromPDF = [](const Data&, int32_t) -> std::optional<Dictionary> { throw std::runtime_error("pdf"); };
  bool stoppedBeforeEncoding = false;
  work.posterImageForMovieWithFile = [&](const String& path, const std::function<void()>& stopAccess) {
    SecurityScopeCalls before = securityScopeCalls();
    stopAccess();
    stoppedBeforeEncoding = securityScopeCalls().stops == before.stops + 1 && !path.isNull();
    Dictionary d;
    d.set(String(u"Duration"), Value(1.5f));
    return d;
  };
  helper_->setRequestWork(work);
  LogCapture log;
  auto caught = send("PDFImageRepOfFile:", {Value(String::fromUtf8(textFile_))});
  EXPECT_TRUE(caught->result.isNull());
  EXPECT_TRUE(log.messages().empty());
  // Not caught in the request: the dispatch logs it and answers nil.
  auto uncaught = send("stringFromPDF:type:", {Value(Data{1}), Value(2)});
  EXPECT_TRUE(uncaught->result.isNull());
  EXPECT_TRUE(log.contains("stringFromPDF:type: (NorvaneHelper): std::runtime_error:\npdf"));

  SecurityScopeCalls before = securityScopeCalls();
  send("posterImageForMovieWithFile:", {Value(fileURLWithPath(String::fromUtf8(textFile_)))});
  EXPECT_TRUE(stoppedBeforeEncoding);
  EXPECT_EQ(securityScopeCalls().stops - before.stops, 1u);  // stopped once, not twice
}

TEST_F(HelperTest, ScriptsRunUnderTheLockEvenWithoutHandler) {
  std::vector<std::string> ran;
  RequestWork work;
  work.compileAndExecuteSource = [&](const String& source, const String& function, const wire::ScriptDescriptor& p) {
    EXPECT_TRUE(helper_->osaLock().mutex.try_lock());  // recursive: held by this thread
    helper_->osaLock().mutex.unlock();
    ran.push_back(source.toUtf8() + "/" + function.toUtf8() + "/" + std::to_string(p.descriptorType));
    if (function == u"fails") throw std::runtime_error("script error");
  };
  helper_->setRequestWork(work);
  wire::ScriptDescriptor descriptor{0x75747874, Data{'h', 'i'}};
  auto replied = send("executeSource:function:param:handler:", {Value(u"return 1"), Value(u"run"), descriptor});
  ASSERT_TRUE(replied);
  EXPECT_TRUE(replied->result.isNull());
  EXPECT_FALSE(send("executeSource:function:param:handler:", {Value(u"src"), Value(u"again"), descriptor}, true));
  EXPECT_TRUE(send("executeSource:function:param:handler:", {Value(u"src"), Value(u""), descriptor}));
  EXPECT_TRUE(send("executeSource:function:param:handler:", {Value(), Value(u"f"), descriptor}));
  EXPECT_TRUE(send("executeFile:function:param:handler:", {Value(u"/x.lua"), Value(u"f"), descriptor}));
  LogCapture log;
  auto failed = send("executeSource:function:param:handler:", {Value(u"src"), Value(u"fails"), Value()});
  EXPECT_TRUE(failed->result.isNull());
  EXPECT_THAT(ran, testing::ElementsAre("return 1/run/1970567284", "src/again/1970567284", "src/fails/0"));
  EXPECT_TRUE(log.contains("executeSource:function:param:handler: (NorvaneHelper): std::runtime_error:\nscript error"));
  EXPECT_EQ(helper_->osaLock().name, "OSA");
}

TEST_F(HelperTest, ScriptsOfManyThreadsAreSerialised) {
  std::atomic<int> inside{0}, most{0};
  RequestWork work;
  work.compileAndExecuteFile = [&](const String&, const String&, const wire::ScriptDescriptor&) {
    int now = ++inside;
    most = std::max(most.load(), now);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    --inside;
  };
  helper_->setRequestWork(work);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 5; ++i) helper_->executeFile(Value(u"/s.lua"), Value(u"f"), nullptr);
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(most.load(), 1);
}

TEST_F(HelperTest, StraySetImageIsLoggedAndHarmless) {
  LogCapture log;
  helper_->setImage(Value(Data{1, 2, 3}));
  EXPECT_TRUE(log.contains("-[NorvaneHelper setImage:]: Unrecognized selector."));
}

TEST(MainQueue, WithoutALoopWorkRunsOnTheCaller) {
  std::thread::id ranOn;
  performOnMainThread([&] { ranOn = std::this_thread::get_id(); });
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  EXPECT_THROW(performOnMainThread([] { throw std::logic_error("x"); }), std::logic_error);
}

TEST(Sizes, AreWrittenInBraces) {
  EXPECT_EQ(stringFromSize(0, 0), "{0, 0}");
  EXPECT_EQ(stringFromSize(612, 792), "{612, 792}");
  EXPECT_EQ(stringFromSize(10.5, 3), "{10.5, 3}");
}

}  // namespace
}  // namespace norvane::service
