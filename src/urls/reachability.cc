// Reachability from the resolver and the interface table.

#include "norvane/urls/reachability.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace norvane::urls {
namespace {

struct Address {
  int family = AF_UNSPEC;
  uint8_t bytes[16] = {};
  size_t size() const { return family == AF_INET ? 4 : 16; }
};

bool toAddress(const sockaddr* sa, Address& out) {
  if (!sa) return false;
  if (sa->sa_family == AF_INET) {
    out.family = AF_INET;
    memcpy(out.bytes, &reinterpret_cast<const sockaddr_in*>(sa)->sin_addr, 4);
    return true;
  }
  if (sa->sa_family == AF_INET6) {
    out.family = AF_INET6;
    memcpy(out.bytes, &reinterpret_cast<const sockaddr_in6*>(sa)->sin6_addr, 16);
    return true;
  }
  return false;
}

bool isLoopback(const Address& a) {
  if (a.family == AF_INET) return a.bytes[0] == 127;
  static const uint8_t kLoopback6[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  return memcmp(a.bytes, kLoopback6, 16) == 0;
}

bool sameAddress(const Address& a, const Address& b) {
  return a.family == b.family && memcmp(a.bytes, b.bytes, a.size()) == 0;
}

bool sameSubnet(const Address& a, const Address& b, const Address& mask) {
  if (a.family != b.family || mask.family != a.family) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if ((a.bytes[i] & mask.bytes[i]) != (b.bytes[i] & mask.bytes[i])) return false;
  }
  return true;
}

// The state a resolver worker shares with its caller, which may stop
// waiting before the worker is done.
struct Lookup {
  std::mutex mutex;
  std::condition_variable done;
  bool finished = false;
  std::vector<Address> addresses;
};

std::vector<Address> resolve(const std::string& host, std::chrono::milliseconds deadline) {
  auto lookup = std::make_shared<Lookup>();
  std::thread([lookup, host] {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* result = nullptr;
    std::vector<Address> addresses;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &result) == 0) {
      for (addrinfo* info = result; info; info = info->ai_next) {
        Address a;
        if (toAddress(info->ai_addr, a)) addresses.push_back(a);
      }
      freeaddrinfo(result);
    }
    std::lock_guard<std::mutex> lock(lookup->mutex);
    lookup->addresses = std::move(addresses);
    lookup->finished = true;
    lookup->done.notify_all();
  }).detach();
  std::unique_lock<std::mutex> lock(lookup->mutex);
  if (!lookup->done.wait_for(lock, deadline, [&] { return lookup->finished; })) return {};
  return lookup->addresses;
}

}  // namespace

uint32_t SystemReachability::connectionFlagsForHost(const char* host) {
  if (!host || !*host) return 0;
  std::vector<Address> addresses = resolve(host, deadline_);
  if (addresses.empty()) return 0;

  ifaddrs* interfaces = nullptr;
  if (getifaddrs(&interfaces) != 0) interfaces = nullptr;
  uint32_t flags = 0;
  bool routable = false;
  for (const Address& address : addresses) {
    if (isLoopback(address)) flags |= kReachabilityIsLocalAddress | kReachabilityIsDirect;
    for (ifaddrs* i = interfaces; i; i = i->ifa_next) {
      Address own;
      Address mask;
      if (!(i->ifa_flags & IFF_UP) || !toAddress(i->ifa_addr, own) || own.family != address.family) continue;
      if (!(i->ifa_flags & IFF_LOOPBACK)) routable = true;
      if (sameAddress(own, address)) flags |= kReachabilityIsLocalAddress | kReachabilityIsDirect;
      if (toAddress(i->ifa_netmask, mask) && !(i->ifa_flags & IFF_LOOPBACK) && sameSubnet(own, address, mask)) {
        flags |= kReachabilityIsDirect;
      }
    }
  }
  if (interfaces) freeifaddrs(interfaces);
  if (routable || (flags & kReachabilityIsLocalAddress)) flags |= kReachabilityReachable;
  return flags;
}

Reachability& systemReachability() {
  static SystemReachability reachability;
  return reachability;
}

uint32_t connectionFlagsForHost(const char* host) {
  return systemReachability().connectionFlagsForHost(host);
}

}  // namespace norvane::urls
