#include "discovery/scan_follow_up.h"

#include "protocol/device_session.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// Every printer understands the question, whatever its model: any name that is always configured will do.
constexpr char kModel[] = "KM451";

constexpr int64_t kPauseWhileConnecting = 200;
constexpr int64_t kPauseWhileReceiving = 20;

const Bytes kAddressQuestion = {0x12, 0x43, 0x45, 0x52};  // DC2 "CER"

}  // namespace

void AskScannedPrinter(ScanRecord* record) {
  DeviceSession session;
  session.set_pause(kPauseWhileConnecting);
  if (session.Connect(kModel, record->DescriptorOfPrinter()) != VEXO_OK) {
    return;
  }
  session.set_pause(kPauseWhileReceiving);
  if (session.Send(kAddressQuestion) == VEXO_OK) {
    session.Receive();
  }
  session.Disconnect();
  record->TakeReply(session.received());
}

}  // namespace vexo
