// How long transfers may take: the time limits of VexoPortTimeouts, applied attempt by attempt.
#ifndef VEXO_PORT_TRANSFER_PACING_H_
#define VEXO_PORT_TRANSFER_PACING_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// multiplier * length + constant in milliseconds, held below the value that stands for "no limit" in waits.
uint32_t TransferBudget(uint32_t multiplier, uint32_t length, uint32_t constant);

// The pacing of one Write on a device file. All waits of the call share its budget.
class WritePacing {
 public:
  WritePacing(const VexoPortTimeouts& timeouts, uint32_t length);

  // Longest wait for the transfer that starts now.
  uint32_t StartTransfer();

  // Accounts for a transfer that wrote all of its chunk...
  void EndTransfer();

  // ...or left a part of it. False: the time for the chunk, or for the call, is used up. The time that such transfers
  // have spent is counted over the whole call, also for the limit of a single chunk.
  bool EndPartialTransfer(uint32_t chunk_length);

 private:
  uint32_t ChargeElapsed();

  const VexoPortTimeouts timeouts_;
  const uint32_t budget_;
  uint32_t wait_left_;
  uint32_t spent_ = 0;  // On transfers that left a part.
  uint32_t started_ = 0;
};

// The pacing of one Read on a device file with overlapped I/O: up to five attempts. Until data comes they share the
// budget; from the first data on, each may only last as long as the read interval.
class ReadPacing {
 public:
  // The call begins now.
  ReadPacing(const VexoPortTimeouts& timeouts, uint32_t length);

  // Begins the next attempt. False: all attempts are used up.
  bool StartAttempt();

  // Longest wait for the attempt.
  uint32_t wait() const { return wait_; }

  // Accounts for an attempt that left bytes missing. False: the time is up.
  bool EndAttempt(uint32_t bytes);

  // Sleeps before the next attempt when the device answered at once and with nothing: some devices complete every read
  // immediately, and the attempts would be over before a printer could answer.
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
