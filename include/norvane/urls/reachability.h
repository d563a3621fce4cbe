// Whether a host can be reached, and whether it is this machine or on a
// directly attached network.
//
// The library asks through the abstract `Reachability`, so that a caller (or
// a test) can answer for the network. `systemReachability()` is the real
// one: it resolves the name with a deadline and compares the addresses with
// those of the machine's interfaces.
#pragma once

#include <chrono>
#include <cstdint>

namespace norvane::urls {

// Flags of a host; their values are those the host application knows.
enum ReachabilityFlags : uint32_t {
  kReachabilityTransientConnection = 1u << 0,
  kReachabilityReachable = 1u << 1,
  kReachabilityConnectionRequired = 1u << 2,
  kReachabilityInterventionRequired = 1u << 4,
  kReachabilityIsLocalAddress = 1u << 16,
  kReachabilityIsDirect = 1u << 17,
};

class Reachability {
 public:
  virtual ~Reachability() = default;
  // The flags of the host name; 0 for a null name or when it cannot be
  // resolved.
  virtual uint32_t connectionFlagsForHost(const char* host) = 0;
};

// Resolves with getaddrinfo on a worker, giving up after `deadline`. A name
// is reachable when it resolves and an interface that is up can carry the
// address; it is local when the address belongs to an interface (or is a
// loopback address), direct when it lies in an interface's own subnet.
class SystemReachability final : public Reachability {
 public:
  explicit SystemReachability(std::chrono::milliseconds deadline = std::chrono::milliseconds(2000))
      : deadline_(deadline) {}
  uint32_t connectionFlagsForHost(const char* host) override;

 private:
  std::chrono::milliseconds deadline_;
};

// The process's shared SystemReachability.
Reachability& systemReachability();

// `systemReachability().connectionFlagsForHost(host)`.
uint32_t connectionFlagsForHost(const char* host);

}  // namespace norvane::urls
