// Assertion for fuzz targets.
#ifndef VEXO_FUZZ_REQUIRE_H_
#define VEXO_FUZZ_REQUIRE_H_

#include <cstdlib>

inline void Require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

#endif  // VEXO_FUZZ_REQUIRE_H_
