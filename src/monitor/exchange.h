// What the job monitor's functions say to the printer, and how they wait for an answer.
#ifndef VEXO_MONITOR_EXCHANGE_H_
#define VEXO_MONITOR_EXCHANGE_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "monitor/printer_read_helper.h"
#include "monitor/report_record.h"
#include "protocol/bytes.h"

namespace vexo {

// "1D 28 48" and the body, which begins with its length (16 bits, low byte first).
Bytes BuildGsParenHCommand(const Bytes& body);

// Decimal, padded with "0" to four digits.
std::string TaskNumberText(int32_t task_id);

// Sends without waiting for a reply, and without a lock. The result is that of the send.
int32_t SendSetVal(CVEXOPrinterReadHelper* monitor, std::string_view key, std::string_view value);
int32_t SendGsParenH(CVEXOPrinterReadHelper* monitor, const Bytes& body, uint32_t delay_ms = 0);

// Sends after making sure that an answer taken from now on belongs to this command: what has come is decoded and old
// replies are dropped.
int32_t SendForAnswer(CVEXOPrinterReadHelper* monitor, const Bytes& command);

// Sends a command and waits for its answer, without letting the reader thread in between. 0: answered; -7003: no
// answer; else the result of the send.
int32_t AwaitAnswer(CVEXOPrinterReadHelper* monitor, const Bytes& command);

}  // namespace vexo

#endif  // VEXO_MONITOR_EXCHANGE_H_
