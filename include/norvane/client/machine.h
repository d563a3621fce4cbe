// Facts about the machine, for sizing helper work.
#pragma once

namespace norvane::client {

// 64 on a 64-bit build, else 32.
int numberOfBits();
// Processors configured in the system; at least 1.
int numberOfCPUs();
// Processors this process may run on (its affinity mask); at least 1.
int numberOfAvailableCPUs();

}  // namespace norvane::client
