// The duration of transfers: applies the time limits of VexoPortTimeouts to each attempt.
#ifndef VEXO_PORT_TRANSFER_PACING_H_
#define VEXO_PORT_TRANSFER_PACING_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// multiplier * length + constant in milliseconds, capped below the value that means "no limit" in waits.
uint32_t TransferBudget(uint32_t multiplier, uint32_t length, uint32_t constant);

// The pacing of one Write on a device file. All waits of the call share its budget.
class WritePacing {
 public:
  WritePacing(const VexoPortTimeouts& timeouts, uint32_t length);

  // Starts a transfer and returns its longest wait.
  uint32_t StartTransfer();

  // Records a transfer that wrote its whole chunk...
  void EndTransfer();

  // ...or a part of it. Returns false when the time for the chunk or for the call is used up.
  //
  // Compatibility: the time of such transfers adds up over the whole call, also against the limit of a single chunk.
  bool EndPartialTransfer(uint32_t chunk_length);

 private:
  uint32_t ChargeElapsed();

  const VexoPortTimeouts timeouts_;
  const uint32_t budget_;
  uint32_t wait_left_;
  uint32_t spent_ = 0;  // In transfers that left a part of their chunk.
  uint32_t started_ = 0;
};

// The pacing of one Read on a device file with overlapped I/O: up to five attempts. They share the budget until data
// arrives; from then on each may last as long as the read interval.
class ReadPacing {
 public:
  // Starts the call.
  ReadPacing(const VexoPortTimeouts& timeouts, uint32_t length);

  // Starts the next attempt. Returns false when all are used up.
  bool StartAttempt();

  // The longest wait for this attempt.
  uint32_t wait() const { return wait_; }

  // Records an attempt after which bytes are still missing. Returns false when the time is up.
  bool EndAttempt(uint32_t bytes);

  // Sleeps before the next attempt when the device answered at once without data: some devices complete every read
  // immediately, and the attempts would be used up before a printer could answer.
  void Pause() const;

 private:
  const uint32_t budget_;
  const uint32_t interval_;
  uint32_t wait_;
  uint32_t spent_ = 0;
  uint32_t attempts_left_;
  uint32_t attempt_started_ = 0;
  uint32_t last_attempt_ended_;
  uint32_t attempt_took_ = 0;
  bool data_flows_ = false;
};

}  // namespace vexo

#endif  // VEXO_PORT_TRANSFER_PACING_H_
