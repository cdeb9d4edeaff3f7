// The byte substitution that configuration files are stored in.
//
// Compatibility: it only obscures the text, but every file in the field is stored this way.
#ifndef VEXO_CONFIG_STORED_ALPHABET_H_
#define VEXO_CONFIG_STORED_ALPHABET_H_

#include <string>

namespace vexo {

void DecodeConfigText(std::string* bytes);
void EncodeConfigText(std::string* bytes);

}  // namespace vexo

#endif  // VEXO_CONFIG_STORED_ALPHABET_H_
