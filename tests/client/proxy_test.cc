#include "norvane/client/proxy.h"

#include <gtest/gtest.h>

#include <thread>

#include "fake_helper.h"
#include "test_env.h"

namespace norvane::client {
namespace {

using testing::FakeServer;

class ProxyTest : public testing::PrivateRuntimeDir {};

const Value kTextPath(String::fromUtf8("/tmp/notes.txt"));

TEST_F(ProxyTest, NoHelperNoProxy) {
  EXPECT_FALSE(rootProxyForConnectionWithRegisteredName("nobody.here").has_value());
  EXPECT_EQ(connectionRegisteredWithName("nobody.here"), nullptr);
}

TEST_F(ProxyTest, SameThreadReusesItsConnectionAndRenewsTimeouts) {
  FakeServer server("test.reuse");
  auto first = rootProxyForConnectionWithRegisteredName("test.reuse", 3.0, Protocol::ImExportXPC);
  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(first->connection()->replyTimeout(), 3.0);
  auto second = rootProxyForConnectionWithRegisteredName("test.reuse", 7.5, Protocol::ImExportXPC);
  ASSERT_TRUE(second.has_value());
  EXPECT_EQ(first->connection(), second->connection());
  EXPECT_EQ(second->connection()->requestTimeout(), 7.5);
  EXPECT_EQ(second->connection()->replyTimeout(), 7.5);
  // No timeout, or a negative one, leaves them alone.
  rootProxyForConnectionWithRegisteredName("test.reuse", 0.0, Protocol::ImExportXPC);
  rootProxyForConnectionWithRegisteredName("test.reuse", -1.0, Protocol::ImExportXPC);
  EXPECT_EQ(second->connection()->replyTimeout(), 7.5);
  EXPECT_TRUE(second->ping());
  EXPECT_EQ(server.connections(), 1);
  removeConnectionRegisteredWithName("test.reuse");
}

TEST_F(ProxyTest, TwoThreadsHoldTwoConnections) {
  FakeServer server("test.threads");
  auto mine = rootProxyForConnectionWithRegisteredName("test.threads", 1.0, Protocol::ImExportXPC);
  ASSERT_TRUE(mine.has_value());
  std::shared_ptr<Connection> theirs;
  bool theirPing = false;
  std::thread other([&] {
    auto proxy = rootProxyForConnectionWithRegisteredName("test.threads", 1.0, Protocol::ImExportXPC);
    if (!proxy) return;
    theirs = proxy->connection();
    theirPing = proxy->ping();
    // The other thread's cache is its own.
    EXPECT_EQ(connectionRegisteredWithName("test.threads"), theirs);
  });
  other.join();
  ASSERT_NE(theirs, nullptr);
  EXPECT_NE(theirs, mine->connection());
  EXPECT_TRUE(theirPing);
  EXPECT_TRUE(mine->ping());
  EXPECT_EQ(connectionRegisteredWithName("test.threads"), mine->connection());
  EXPECT_EQ(server.connections(), 2);
  removeConnectionRegisteredWithName("test.threads");
}

TEST_F(ProxyTest, DeadConnectionIsReplacedAtTheNextRequest) {
  FakeServer server("test.dies");
  auto first = rootProxyForConnectionWithRegisteredName("test.dies", 1.0, Protocol::ImExportXPC);
  ASSERT_TRUE(first.has_value());
  auto held = first->connection();
  server.dropConnections();
  EXPECT_FALSE(held->isValid());
  EXPECT_EQ(connectionRegisteredWithName("test.dies"), nullptr);  // removed by the validity test
  auto second = rootProxyForConnectionWithRegisteredName("test.dies", 1.0, Protocol::ImExportXPC);
  ASSERT_TRUE(second.has_value());
  EXPECT_NE(second->connection(), held);
  EXPECT_TRUE(second->ping());
  EXPECT_EQ(server.connections(), 2);
  removeConnectionRegisteredWithName("test.dies");
}

TEST_F(ProxyTest, FailedCallLeavesTheThreadsCache) {
  FakeServer server("test.fails");
  auto proxy = rootProxyForConnectionWithRegisteredName("test.fails", 1.0, Protocol::ImExportXPC);
  ASSERT_TRUE(proxy.has_value());
  server.dropConnections();
  EXPECT_FALSE(proxy->ping());
  EXPECT_TRUE(isPortException(proxy->lastError()));
  EXPECT_FALSE(proxy->connection()->isValid());
  EXPECT_EQ(connectionRegisteredWithName("test.fails"), nullptr);
}

TEST_F(ProxyTest, CacheIgnoresEmptyNamesAndInvalidConnections) {
  FakeServer server("test.cache");
  auto connection = Connection::connectToName("test.cache");
  ASSERT_NE(connection, nullptr);
  setConnectionRegisteredWithName(connection, "");
  EXPECT_EQ(connectionRegisteredWithName(""), nullptr);
  setConnectionRegisteredWithName(connection, "test.cache");
  EXPECT_EQ(connectionRegisteredWithName("test.cache"), connection);
  // Storing an invalid connection removes what was there.
  auto closed = Connection::connectToName("test.cache");
  closed->invalidate();
  setConnectionRegisteredWithName(closed, "test.cache");
  EXPECT_EQ(connectionRegisteredWithName("test.cache"), nullptr);
  // removeConnection removes by identity.
  setConnectionRegisteredWithName(connection, "test.cache");
  removeConnection(closed.get());
  EXPECT_EQ(connectionRegisteredWithName("test.cache"), connection);
  removeConnection(connection.get());
  EXPECT_EQ(connectionRegisteredWithName("test.cache"), nullptr);
  removeConnection(nullptr);
}

TEST_F(ProxyTest, WaitingWithNoTimeTriesNothing) {
  FakeServer server("test.wait");
  auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(
      waitForTimeIntervalForRootProxyForConnectionWithRegisteredName(0, "test.wait", 1.0, Protocol::ImExportXPC));
  EXPECT_FALSE(
      waitForTimeIntervalForRootProxyForConnectionWithRegisteredName(-1, "test.wait", 1.0, Protocol::ImExportXPC));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(ProxyTest, WaitingFindsAHelperThatRegistersLate) {
  std::unique_ptr<FakeServer> server;
  std::thread late([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    server = std::make_unique<FakeServer>("test.late");
  });
  auto proxy = waitForRootProxyForConnectionWithRegisteredName("test.late", 1.0, Protocol::ImExportXPC);
  late.join();
  ASSERT_TRUE(proxy.has_value());
  EXPECT_TRUE(proxy->ping());
  proxy.reset();
  removeConnectionRegisteredWithName("test.late");
}

TEST_F(ProxyTest, WaitingGivesUpAfterItsTime) {
  auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(
      waitForTimeIntervalForRootProxyForConnectionWithRegisteredName(0.1, "test.never", 1.0, Protocol::ImExportXPC));
  auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(100));
}

TEST_F(ProxyTest, RequestsAndReplies) {
  FakeServer server("test.requests");
  auto proxy = rootProxyForConnectionWithRegisteredName("test.requests", 2.0, Protocol::ImExportXPC);
  ASSERT_TRUE(proxy.has_value());
  EXPECT_TRUE(proxy->supportsFile(kTextPath));
  EXPECT_FALSE(proxy->supportsFile(Value(String::fromUtf8("/tmp/a.bin"))));
  EXPECT_EQ(proxy->lastError(), TransportError::None);

  auto metadata = proxy->metaDataForFile(kTextPath);
  ASSERT_TRUE(metadata.has_value());
  EXPECT_EQ(*metadata->find(u"path"), kTextPath);

  bool called = false;
  proxy->supportsFile(kTextPath, [&](bool supported) {
    called = true;
    EXPECT_TRUE(supported);
  });
  EXPECT_TRUE(called);

  std::optional<Dictionary> viaHandler;
  proxy->metaDataForFile(Value(Url{String::fromUtf8("file:///x.txt")}),
                         [&](std::optional<Dictionary> d) { viaHandler = std::move(d); });
  ASSERT_TRUE(viaHandler.has_value());
  EXPECT_TRUE(viaHandler->find(u"path")->isUrl());
  removeConnectionRegisteredWithName("test.requests");
}

TEST_F(ProxyTest, EmptyHandlerSendsWithoutWaiting) {
  FakeServer server("test.noreply");
  auto proxy = rootProxyForConnectionWithRegisteredName("test.noreply", 2.0, Protocol::ImExportXPC);
  ASSERT_TRUE(proxy.has_value());
  proxy->metaDataForFile(kTextPath, HelperProxy::DictionaryHandler());
  EXPECT_EQ(proxy->lastError(), TransportError::None);
  // Had a reply been sent, it would now stand in the stream and spoil the
  // next call.
  EXPECT_TRUE(proxy->ping());
  EXPECT_TRUE(proxy->supportsFile(kTextPath));
  removeConnectionRegisteredWithName("test.noreply");
}

TEST_F(ProxyTest, RefusedRequestsKeepTheConnection) {
  FakeServer server("test.refused");
  auto proxy = rootProxyForConnectionWithRegisteredName("test.refused", 2.0, Protocol::ImExportXPC);
  ASSERT_TRUE(proxy.has_value());
  // The fake helper does not offer previews: it answers with an error.
  EXPECT_FALSE(proxy->previewForFile(kTextPath, 128, false).has_value());
  EXPECT_EQ(proxy->lastError(), TransportError::Refused);
  EXPECT_FALSE(isPortException(proxy->lastError()));
  EXPECT_FALSE(proxy->stillBusy());
  EXPECT_TRUE(proxy->connection()->isValid());
  EXPECT_TRUE(proxy->ping());
  removeConnectionRegisteredWithName("test.refused");
}

TEST_F(ProxyTest, ProtocolLimitsWhatIsSent) {
  FakeServer server("test.protocol");
  auto proxy = rootProxyForConnectionWithRegisteredName("test.protocol", 2.0, Protocol::ImExportHelper);
  ASSERT_TRUE(proxy.has_value());
  EXPECT_FALSE(proxy->ping());  // not part of the synchronous protocol
  EXPECT_EQ(proxy->lastError(), TransportError::Refused);
  EXPECT_TRUE(proxy->supportsFile(kTextPath));
  removeConnectionRegisteredWithName("test.protocol");
}

TEST_F(ProxyTest, TimeoutClosesTheConnection) {
  FakeServer server("test.slow");
  auto proxy = rootProxyForConnectionWithRegisteredName("test.slow", 0.1, Protocol::ServiceObject);
  ASSERT_TRUE(proxy.has_value());
  wire::Reply reply;
  // "slow:" is not an operation of the table; go below the proxy.
  wire::Request request{"slow:", 0, {}, false};
  EXPECT_EQ(proxy->connection()->call(request, reply), TransportError::Timeout);
  EXPECT_TRUE(isPortTimeoutException(TransportError::Timeout));
  EXPECT_FALSE(proxy->connection()->isValid());
  EXPECT_EQ(connectionRegisteredWithName("test.slow"), nullptr);
}

TEST_F(ProxyTest, MalformedReplyClosesTheConnection) {
  FakeServer server("test.garbage");
  auto connection = Connection::connectToName("test.garbage");
  ASSERT_NE(connection, nullptr);
  connection->setReplyTimeout(1.0);
  wire::Request request{"garbage:", 0, {}, false};
  wire::Reply reply;
  EXPECT_EQ(connection->call(request, reply), TransportError::Receive);
  EXPECT_FALSE(connection->isValid());
  EXPECT_EQ(connection->call(request, reply), TransportError::Invalid);
}

TEST_F(ProxyTest, ArgumentsOfTheWrongTypeAreNotSent) {
  FakeServer server("test.types");
  auto proxy = rootProxyForConnectionWithRegisteredName("test.types", 2.0, Protocol::ImExportXPC);
  ASSERT_TRUE(proxy.has_value());
  EXPECT_FALSE(proxy->stringFromPDF(Value(String::fromUtf8("not data")), 1).has_value());
  EXPECT_EQ(proxy->lastError(), TransportError::Refused);
  wire::Reply reply;
  EXPECT_FALSE(proxy->invoke("noSuchOperation:", {Value()}, reply));
  EXPECT_EQ(proxy->lastError(), TransportError::Refused);
  removeConnectionRegisteredWithName("test.types");
}

}  // namespace
}  // namespace norvane::client
