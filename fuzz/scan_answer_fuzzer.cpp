// For any answers of printers, the list must equal that of a simple reference parser and stay within its bounds.
//
// Input: the length of the TCP reply at its end, then answers separated by zeros.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "discovery/scan_answer.h"
#include "require.h"
#include "vexo/error.h"

namespace {

using Fields = std::vector<std::string>;

Fields Lines(const std::string& answer) {
  Fields lines(1);
  for (size_t i = 0; i < answer.size(); ++i) {
    if (answer.compare(i, 2, "\r\n") == 0) {
      lines.emplace_back();
      ++i;
    } else {
      lines.back() += answer[i];
    }
  }
  lines.resize(vexo::kScanFieldCount);
  return lines;
}

std::string Address(const vexo::Bytes& reply, size_t last) {
  std::string text;
  for (size_t i = 0; i < 4; ++i) {
    text += (i == 0 ? "" : ".") + std::to_string(reply[last - i]);
  }
  return text;
}

std::string ExpectedRecord(Fields fields, const vexo::Bytes& reply) {
  if (reply.size() > 11) {
    fields[10] = Address(reply, 11);
  }
  if (reply.size() > 15) {
    fields[11] = Address(reply, 15);
  }
  std::string text = fields[0];
  for (size_t i = 1; i < fields.size(); ++i) {
    text += ';' + fields[i];
  }
  return text.substr(0, vexo::kMaxScanRecordLength) + '|';
}

void RequireCopyStaysInside(const std::string& text, int32_t size) {
  // The exact size that hosts must provide.
  const std::unique_ptr<char[]> buffer(new char[static_cast<size_t>(size) + 1]);
  const int32_t result = vexo::CopyScanText(text, buffer.get(), size);
  const bool fits = text.size() <= static_cast<size_t>(size);
  Require(result == (fits ? VEXO_OK : VEXO_ERROR_BUFFER_TOO_SMALL));
  Require(!fits || text == buffer.get());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) {
    return 0;
  }
  const size_t reply_size = std::min<size_t>(data[0], size - 1);
  const vexo::Bytes reply(data + size - reply_size, data + size);
  const std::string answers(data + 1, data + size - reply_size);

  vexo::ScanList list;
  std::string expected;
  for (size_t begin = 0; begin < answers.size();) {
    const std::string answer = answers.c_str() + begin;
    begin += answer.size() + 1;
    list.Add(answer);
    const Fields fields = Lines(answer);
    if (fields[1] == "ready") {
      expected += ExpectedRecord(fields, reply);
    }
  }
  for (vexo::ScanRecord& record : list.records()) {
    const std::string descriptor = record.DescriptorOfPrinter();
    Require(descriptor.size() < 64 && descriptor.rfind("NET,", 0) == 0);
    record.TakeReply(reply);
  }
  Require(list.Text() == expected);
  RequireCopyStaysInside(list.Text(), static_cast<int32_t>(expected.size()));
  RequireCopyStaysInside(list.Text(), static_cast<int32_t>(data[0]));
  return 0;
}
