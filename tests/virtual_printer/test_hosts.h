// Hosts of a printer model, and what they would note down.
#ifndef VEXO_TESTS_VIRTUAL_PRINTER_TEST_HOSTS_H_
#define VEXO_TESTS_VIRTUAL_PRINTER_TEST_HOSTS_H_

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "virtual_printer/model/printer_model.h"

namespace virtual_printer {

using Transcript = std::vector<std::string>;

inline std::string Hex(const Bytes& bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  for (const auto byte : bytes) {
    hex.append({kDigits[byte >> 4], kDigits[byte & 15]});
  }
  return hex;
}

// A V1 command; and a GS ( H command whose length says the truth.
inline std::string V1(const std::string& line) { return "\x1B\x1C& V1 " + line + "\r\n"; }
inline std::string GsH(const std::string& body) {
  return "\x1D(H" + std::string({static_cast<char>(body.size()), '\0'}) + body;
}

inline const std::string kClear = "\x1B\x1C&cl";
inline const std::string kOn = V1("setval \"job_monitor\" \"on\"");
inline const std::string kOff = V1("setval \"job_monitor\" \"off\"");
inline const std::string kGsHOn = GsH("102");

// A printer, its hosts, and the time. Notes read `1> words` for what host 1 sent, `1< words` for what it was sent.
class Shop {
 public:
  explicit Shop(const PrinterSetup& setup = {}, int hosts = 1) : model(setup) {
    for (int host = 1; host <= hosts; ++host) {
      model.Connect(host);
    }
  }

  PrinterModel::Events SendRaw(int host, const std::string& bytes) {
    return model.Receive(host, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), now);
  }
  Transcript Send(int host, const std::string& bytes) { return Note(SendRaw(host, bytes)); }
  Transcript Leave(int host) { return Note(model.Disconnect(host, now)); }
  Transcript Pass(int milliseconds) {
    now += std::chrono::milliseconds(milliseconds);
    return Note(model.Advance(now));
  }
  // Milliseconds until something falls due; -1 when nothing will.
  int UntilDeadline() const {
    const auto deadline = model.NextDeadline();
    return deadline ? static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(*deadline - now).count())
                    : -1;
  }

  static Transcript Note(const PrinterModel::Events& events) {
    Transcript notes;
    for (const WireEvent& event : events) {
      const bool sent = event.direction == WireEvent::Direction::kSent;
      notes.push_back(std::to_string(event.connection) + (sent ? "< " : "> ") + event.message.text);
    }
    return notes;
  }

  PrinterModel model;
  Time now;
};

}  // namespace virtual_printer

#endif  // VEXO_TESTS_VIRTUAL_PRINTER_TEST_HOSTS_H_
