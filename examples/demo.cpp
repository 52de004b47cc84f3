// Demonstration of the library over the bundled data.
#include <cstdio>

#include "KZCommon/KZCommon.h"

int main() {
  std::printf("KZCommon demo\n");
  return 0;
}
