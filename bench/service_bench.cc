// Round trips per second between a client and a real norvane-helper, over
// both channels: the named socket and the socket-activation listener
// (LISTEN_FDS). One helper process serves both; it runs in a private
// runtime directory and is ended when the benchmark ends.
//
// Needs norvane-helper: $NORVANE_HELPER, or the one of this build tree.
#include <benchmark/benchmark.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "norvane/client/helper_task.h"
#include "norvane/wire/socket.h"

namespace {

using namespace norvane;
using namespace norvane::client;

struct Helper {
  std::filesystem::path runtimeDir;
  std::string listenerPath;
  std::string textFile;
  std::unique_ptr<Task> task;
};

Helper* gHelper = nullptr;

int listenOn(const std::string& path) {
  int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || ::listen(fd, 64) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

bool startHelper() {
  const std::string program = findHelperExecutable();
  if (program.empty()) return false;
  auto helper = std::make_unique<Helper>();
  std::string pattern = (std::filesystem::temp_directory_path() / "service-bench-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) return false;
  helper->runtimeDir = pattern;
  ::setenv("XDG_RUNTIME_DIR", pattern.c_str(), 1);
  helper->listenerPath = (helper->runtimeDir / "listener").string();
  helper->textFile = (helper->runtimeDir / "small.txt").string();
  std::ofstream(helper->textFile) << "A small text file for the benchmark.\n";

  int listener = listenOn(helper->listenerPath);
  if (listener < 0) return false;
  helper->task = std::make_unique<Task>(program, std::vector<std::string>{});
  helper->task->setPassedDescriptors({listener});
  helper->task->setNullStandardInputOutput(true);
  bool launched = helper->task->launch();
  ::close(listener);
  if (!launched) return false;
  if (!waitForRootProxyForConnectionWithRegisteredName(wire::kServiceName, 5.0, Protocol::ImExportXPC)) return false;
  gHelper = helper.release();
  return true;
}

void stopHelper() {
  if (!gHelper) return;
  gHelper->task->terminate();
  gHelper->task->waitUntilExit();
  std::error_code ignored;
  std::filesystem::remove_all(gHelper->runtimeDir, ignored);
  delete gHelper;
  gHelper = nullptr;
}

enum class Channel { Named, Listener };

// One proxy per benchmark thread. The named channel goes through the
// per-thread cache, as HelperTask does.
std::optional<HelperProxy> proxyFor(Channel channel) {
  if (channel == Channel::Named)
    return rootProxyForConnectionWithRegisteredName(wire::kServiceName, 15.0, Protocol::ImExportXPC);
  int fd = wire::connectUnixSocket(gHelper->listenerPath);
  if (fd < 0) return std::nullopt;
  return HelperProxy(std::make_shared<Connection>(fd, "listener"), Protocol::ImExportXPC);
}

void BM_Ping(benchmark::State& state, Channel channel) {
  auto proxy = proxyFor(channel);
  if (!proxy) return state.SkipWithError("no connection to the helper");
  for (auto _ : state) {
    if (!proxy->ping()) return state.SkipWithError("ping failed");
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_SupportsFile(benchmark::State& state, Channel channel) {
  auto proxy = proxyFor(channel);
  if (!proxy) return state.SkipWithError("no connection to the helper");
  const Value file(String::fromUtf8(gHelper->textFile));
  for (auto _ : state) {
    bool supported = proxy->supportsFile(file);
    if (proxy->lastError() != TransportError::None) return state.SkipWithError("supportsFile: failed");
    benchmark::DoNotOptimize(supported);
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK_CAPTURE(BM_Ping, named, Channel::Named)->Threads(1)->Threads(2)->Threads(4)->UseRealTime();
BENCHMARK_CAPTURE(BM_Ping, listener, Channel::Listener)->Threads(1)->Threads(2)->Threads(4)->UseRealTime();
BENCHMARK_CAPTURE(BM_SupportsFile, named, Channel::Named)->Threads(1)->Threads(4)->UseRealTime();
BENCHMARK_CAPTURE(BM_SupportsFile, listener, Channel::Listener)->Threads(1)->Threads(4)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (!startHelper()) {
    std::fprintf(stderr, "service_bench: norvane-helper not found or not starting (set NORVANE_HELPER)\n");
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  stopHelper();
  return 0;
}
