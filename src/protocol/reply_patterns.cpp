#include "protocol/reply_patterns.h"

namespace vexo {
namespace {

// Compiled when the library is loaded, released when it is unloaded.
const std::regex kStatusReport(
    "^\\x1b\\x1c\\x26\\x20\\x56\\x31\\x20\\x72\\x65\\x70\\x6f\\x72\\x74([\\s\\S]{2})([\\s\\S]{2})");
const std::regex kGetValAnswer(
    "^\\x1b\\x1c\\x26\\x20\\x56\\x31\\x20\\x67\\x65\\x74\\x76\\x61\\x6c\\x20\\x22([^\\x22]+)\\x22\\x20\\x22([^\\x22]+)"
    "\\x22");

}  // namespace

const std::regex& StatusReportPattern() { return kStatusReport; }

const std::regex& GetValAnswerPattern() { return kGetValAnswer; }

}  // namespace vexo
