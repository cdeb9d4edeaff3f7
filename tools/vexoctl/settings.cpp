#include "vexoctl/settings.h"

#include "vexoctl/console_text.h"

namespace vexoctl {

std::string Settings::PrinterName() const { return Utf8FromAnsi(descriptor); }

}  // namespace vexoctl
