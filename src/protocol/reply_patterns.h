// The grammar of the two structured replies, as regular expressions (ECMAScript syntax). They are the reference that
// the decoders are held against; decoding itself does not run them.
#ifndef VEXO_PROTOCOL_REPLY_PATTERNS_H_
#define VEXO_PROTOCOL_REPLY_PATTERNS_H_

#include <regex>

namespace vexo {

// The report command and two fields of two bytes each, of any value.
const std::regex& StatusReportPattern();

// The getval command with key and value, each at least one byte long and free of double quotes.
const std::regex& GetValAnswerPattern();

}  // namespace vexo

#endif  // VEXO_PROTOCOL_REPLY_PATTERNS_H_
