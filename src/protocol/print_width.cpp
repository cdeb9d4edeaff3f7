#include "protocol/print_width.h"

#include "protocol/bytes.h"
#include "protocol/checked_printer.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint8_t kPrintWidthKeyLow = 0xCC;
constexpr uint8_t kPrintWidthKeyHigh = 0x00;
constexpr uint8_t kPrintWidthSize = 2;
constexpr uint8_t kSaved = 0;

// Holds the acknowledgement of setkey first, then, in its first byte, the answer to save_param_zone.
struct Reply {
  uint8_t bytes[3] = {};
  uint32_t count = 0;
};

// Compatibility: printers acknowledge setkey differently or not at all, so the bytes are not checked. The only failure
// is an answer that was not counted although its third byte arrived.
bool ReadAcknowledgement(const CheckedPrinter& printer, Reply* reply) {
  printer.Read(reply->bytes, sizeof(reply->bytes), &reply->count);
  return !(reply->count == 0 && reply->bytes[2] != 0);
}

// Only the printer's confirmation counts: exactly one zero byte. If the handle has become unusable, the acknowledgement
// of setkey is checked in its place.
bool ReadSaved(const CheckedPrinter& printer, Reply* reply) {
  if (printer.Check() == VEXO_OK) {
    reply->count = 0;
    printer.Read(reply->bytes, 1, &reply->count);
  }
  return reply->count == 1 && reply->bytes[0] == kSaved;
}

}  // namespace

int32_t ChangePrintWidth(VexoPrinterHandle* handle, uint32_t width) {
  const CheckedPrinter printer(handle);
  const Bytes command = BuildSetKeyCommand(kPrintWidthKeyLow, kPrintWidthKeyHigh, {LowByte(width), HighByte(width)});
  const int32_t set = printer.Write(command);
  if (set != VEXO_OK) {
    return set;
  }
  Reply reply;
  if (!ReadAcknowledgement(printer, &reply)) {
    return VEXO_ERROR_IO_READ;
  }
  const int32_t save = printer.Write(kSaveParamZoneCommand);
  if (save != VEXO_OK) {
    return save;
  }
  return ReadSaved(printer, &reply) ? VEXO_OK : VEXO_ERROR_IO_READ;
}

int32_t QueryPrintWidth(VexoPrinterHandle* handle, uint32_t* width) {
  const CheckedPrinter printer(handle);
  const int32_t asked = printer.Write(BuildGetKeyCommand(kPrintWidthKeyLow, kPrintWidthKeyHigh, kPrintWidthSize));
  if (asked != VEXO_OK) {
    return asked;
  }
  uint8_t reply[2] = {};
  uint32_t count = 0;
  const int32_t result = printer.Read(reply, sizeof(reply), &count);
  if (count != sizeof(reply)) {
    return result;  // Compatibility: may be VEXO_OK, when a read succeeds but is short; *width is untouched then.
  }
  *width = ReadLittleEndian16(reply);
  return VEXO_OK;
}

}  // namespace vexo
