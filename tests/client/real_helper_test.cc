// The client against the real norvane-helper of this build tree.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "norvane/client/helper_task.h"
#include "norvane/wire/socket.h"
#include "test_env.h"

namespace norvane::client {
namespace {

const std::string kHelperPath = NORVANE_BINARY_DIR "/bin/norvane-helper";

class RealHelperTest : public testing::PrivateRuntimeDir {
 protected:
  void SetUp() override {
    if (::access(kHelperPath.c_str(), X_OK) != 0) GTEST_SKIP() << "norvane-helper is not built at " << kHelperPath;
    PrivateRuntimeDir::SetUp();
    task_ = HelperTask::create(kHelperPath, std::string(wire::kServiceName), Protocol::ImExportXPC, 15.0,
                               kQualityOfServiceDefault);
    ASSERT_NE(task_, nullptr);
  }
  void TearDown() override {
    task_.reset();
    if (!IsSkipped()) PrivateRuntimeDir::TearDown();
  }
  Value writeFile(const std::string& name, const std::string& content) {
    std::string path = (dir() / name).string();
    std::ofstream(path) << content;
    return Value(String::fromUtf8(path));
  }

  std::unique_ptr<HelperTask> task_;
};

TEST_F(RealHelperTest, AnswersMetadataOfATextFileForEveryKindOfReference) {
  const Value path = writeFile("note.txt", "Quarterly figures for the harbour office\n");
  auto proxy = task_->proxy();
  ASSERT_TRUE(proxy.has_value());
  EXPECT_TRUE(proxy->ping());
  EXPECT_TRUE(proxy->supportsFile(path));

  auto metadata = proxy->metaDataForFile(path);
  ASSERT_TRUE(metadata.has_value());
  const Value* text = metadata->find(u"kMDItemTextContent");
  ASSERT_NE(text, nullptr);
  EXPECT_NE(text->asString().toUtf8().find("harbour office"), std::string::npos);

  const Value url(Url{String::fromUtf8("file://" + path.asString().toUtf8())});
  auto viaUrl = proxy->metaDataForFile(url);
  ASSERT_TRUE(viaUrl.has_value());
  EXPECT_EQ(*viaUrl->find(u"kMDItemTextContent"), *text);

  bool boxed = false;
  proxy->supportsFile(path, [&](bool supported) { boxed = supported; });
  EXPECT_TRUE(boxed);
}

TEST_F(RealHelperTest, MissingFilesAndOtherReferencesAnswerNothing) {
  auto proxy = task_->proxy();
  ASSERT_TRUE(proxy.has_value());
  const Value missing(String::fromUtf8((dir() / "absent.txt").string()));
  EXPECT_FALSE(proxy->supportsFile(missing));
  auto metadata = proxy->metaDataForFile(missing);
  EXPECT_TRUE(!metadata || metadata->empty());
  EXPECT_FALSE(proxy->supportsFile(Value(int64_t{42})));  // no file at all
  EXPECT_EQ(proxy->lastError(), TransportError::None);
}

TEST_F(RealHelperTest, TerminateWithAnArgumentLeavesItRunning) {
  auto proxy = task_->proxy();
  ASSERT_TRUE(proxy.has_value());
  proxy->setProtocol(Protocol::ServiceObject);
  EXPECT_TRUE(proxy->terminate(Value(String::fromUtf8("anything"))));
  EXPECT_TRUE(proxy->ping());
  const pid_t pid = task_->launchedProcessIdentifier();
  proxy->terminate();
  // The helper ends at once: its socket stops answering. The next proxy
  // launches a new one.
  int fd = -1;
  for (int i = 0; i < 200 && (fd = wire::connectNamedSocket(wire::kServiceName)) >= 0; ++i) {
    ::close(fd);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_LT(fd, 0);
  auto next = task_->proxy();
  ASSERT_TRUE(next.has_value());
  EXPECT_NE(task_->launchedProcessIdentifier(), pid);
  EXPECT_TRUE(next->ping());
}

TEST_F(RealHelperTest, ConnectionLimitRestartsTheRealHelper) {
  task_->setConnectionLimit(2);
  auto first = task_->proxy();
  ASSERT_TRUE(first.has_value());
  const pid_t pid = task_->launchedProcessIdentifier();
  auto second = task_->proxy();
  ASSERT_TRUE(second.has_value());
  EXPECT_NE(task_->launchedProcessIdentifier(), pid);
  EXPECT_EQ(second->connection()->peerProcessIdentifier(), task_->launchedProcessIdentifier());
  EXPECT_TRUE(second->ping());
}

}  // namespace
}  // namespace norvane::client
