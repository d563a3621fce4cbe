#include "norvane/client/machine.h"

#include <sched.h>
#include <unistd.h>

namespace norvane::client {

int numberOfBits() {
  return sizeof(void*) == 8 ? 64 : 32;
}

int numberOfCPUs() {
  long count = ::sysconf(_SC_NPROCESSORS_CONF);
  return count > 0 ? static_cast<int>(count) : 1;
}

int numberOfAvailableCPUs() {
  cpu_set_t set;
  if (::sched_getaffinity(0, sizeof set, &set) == 0) {
    int count = CPU_COUNT(&set);
    if (count > 0) return count;
  }
  long online = ::sysconf(_SC_NPROCESSORS_ONLN);
  return online > 0 ? static_cast<int>(online) : 1;
}

}  // namespace norvane::client
