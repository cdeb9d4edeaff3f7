// The grammar of the two structured replies, as regular expressions (ECMAScript syntax). They are the reference that
// tests and benchmarks check the decoders against; the decoders do not run them.
//
// Compatibility: the DLL compiles them when it is loaded although no exchange uses them.
#ifndef VEXO_PROTOCOL_REPLY_PATTERNS_H_
#define VEXO_PROTOCOL_REPLY_PATTERNS_H_

#include <regex>

namespace vexo {

// The report command followed by two fields of two arbitrary bytes each.
const std::regex& StatusReportPattern();

// The getval command with key and value, each at least one byte long and without double quotes.
const std::regex& GetValAnswerPattern();

}  // namespace vexo

#endif  // VEXO_PROTOCOL_REPLY_PATTERNS_H_
