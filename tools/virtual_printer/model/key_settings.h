#ifndef VIRTUAL_PRINTER_MODEL_KEY_SETTINGS_H_
#define VIRTUAL_PRINTER_MODEL_KEY_SETTINGS_H_

#include <optional>
#include <string>

#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/command_parser.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// One connection's access to the settings: setkey, getkey and save_param_zone.
class KeySettings {
 public:
  // The state must outlive the settings.
  explicit KeySettings(PrinterState& state) : state_(state) {}

  // Returns nothing if the command does not concern settings.
  std::optional<CommandResult> Execute(const Command& command);

 private:
  CommandResult SetKey(const Command& command);
  CommandResult GetKey(const Command& command) const;
  CommandResult SaveParameterZone(const Command& command);
  CommandResult Refuse(std::string description);

  PrinterState& state_;
  bool refused_ = false;  // A setkey since the last save_param_zone.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_KEY_SETTINGS_H_
