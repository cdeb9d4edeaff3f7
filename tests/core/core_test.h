// Common includes of the core tests: scripted ports, report frames and the virtual clock.
#ifndef VEXO_TESTS_CORE_CORE_TEST_H_
#define VEXO_TESTS_CORE_CORE_TEST_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "protocol/bytes.h"
#include "support/report_frames.h"
#include "support/scripted_port.h"
#include "support/virtual_clock.h"
#include "vexo/error.h"
#include "vexo/extend.h"
#include "vexo/printer.h"

#endif  // VEXO_TESTS_CORE_CORE_TEST_H_
