#include "protocol/bytes.h"

namespace vexo {

void Append(Bytes* bytes, std::string_view text) { bytes->insert(bytes->end(), text.begin(), text.end()); }

void Append(Bytes* bytes, const Bytes& more) { bytes->insert(bytes->end(), more.begin(), more.end()); }

}  // namespace vexo
