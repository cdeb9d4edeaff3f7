// The alphabet that configuration files are stored in: each plain byte stands as another one.
#ifndef VEXO_CONFIG_STORED_ALPHABET_H_
#define VEXO_CONFIG_STORED_ALPHABET_H_

#include <string>

namespace vexo {

void DecodeConfigText(std::string* bytes);
void EncodeConfigText(std::string* bytes);

}  // namespace vexo

#endif  // VEXO_CONFIG_STORED_ALPHABET_H_
