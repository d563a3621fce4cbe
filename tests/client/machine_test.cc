#include "norvane/client/machine.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <thread>

namespace norvane::client {
namespace {

TEST(Machine, CountsAgreeWithTheSystem) {
  EXPECT_EQ(numberOfBits(), 64);  // the supported build is x86-64
  EXPECT_GE(numberOfCPUs(), 1);
  EXPECT_GE(numberOfAvailableCPUs(), 1);
  EXPECT_LE(numberOfAvailableCPUs(), numberOfCPUs());
}

TEST(Machine, AvailableFollowsTheAffinityMask) {
  cpu_set_t saved;
  ASSERT_EQ(::sched_getaffinity(0, sizeof saved, &saved), 0);
  int first = 0;
  while (!CPU_ISSET(first, &saved)) ++first;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(first, &one);
  // Run on a thread of its own so the mask change stays local.
  int seen = 0;
  std::thread probe([&] {
    ::sched_setaffinity(0, sizeof one, &one);
    seen = numberOfAvailableCPUs();
  });
  probe.join();
  EXPECT_EQ(seen, 1);
}

}  // namespace
}  // namespace norvane::client
