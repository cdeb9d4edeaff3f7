#ifndef VIRTUAL_PRINTER_MODEL_KEY_SETTINGS_H_
#define VIRTUAL_PRINTER_MODEL_KEY_SETTINGS_H_

#include <optional>
#include <string>

#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/command_parser.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// The settings that one connection sets, reads and stores by key number.
class KeySettings {
 public:
  // The state must outlive the settings.
  explicit KeySettings(PrinterState& state) : state_(state) {}

  // Nothing when the command is about something else.
  std::optional<Reaction> Execute(const Command& command);

 private:
  Reaction SetKey(const Command& command);
  Reaction GetKey(const Command& command) const;
  Reaction SaveParameterZone(const Command& command);
  Reaction Refuse(std::string received);

  PrinterState& state_;
  bool refused_ = false;  // A setkey since the last save_param_zone.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_KEY_SETTINGS_H_
