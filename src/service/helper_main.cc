// norvane-helper: the service process. It takes no arguments.
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <csignal>
#include <new>
#include <string>

#include "norvane/core/log.h"
#include "norvane/wire/socket.h"
#include "service/norvane_helper.h"
#include "service/transport.h"

using namespace norvane;

int main() {
  std::signal(SIGPIPE, SIG_IGN);

  auto* helper = new (std::nothrow) service::NorvaneHelper();
  if (!helper) ::_exit(0);

  int listener = service::obtainServiceListener();
  auto* named = new service::NamedConnection();
  if (!named->registerName(wire::kServiceName)) {
    logFormat("Couldn't register service {}", wire::kServiceName);
    ::sleep(1);
    delete named;
    delete helper;
    return 0;
  }
  sd_notify(0, "READY=1");

  if (listener >= 0) service::resumeListener(listener, *helper);
  service::runMainLoop(*helper, named->listeningFd());
}
