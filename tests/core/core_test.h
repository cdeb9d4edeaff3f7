// What most tests of the core are written with: ports that follow a script, reports as printers send them, and time
// that passes when somebody sleeps.
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
