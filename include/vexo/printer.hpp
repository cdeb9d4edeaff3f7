/**
 * @file printer.hpp
 * The library for C++ hosts: owning objects, std::function listeners, exceptions or codes by choice. Header-only;
 * C++17.
 *
 * Functions that can fail take a pointer to a std::error_code last. Without one they throw a std::system_error; with
 * one they store their result there, also a success, and throw nothing but std::bad_alloc. Codes of the library are in
 * ErrorCategory(), those of the operating system in std::system_category(); both have the number that the C function
 * returned. extend.h describes the C functions: what they do, how long they take and what they return.
 *
 * Texts are in the code pages that the C functions use.
 */
#ifndef VEXO_PRINTER_HPP_
#define VEXO_PRINTER_HPP_

#include "vexo/download.hpp"
#include "vexo/error.hpp"
#include "vexo/monitor.hpp"
#include "vexo/port.hpp"
#include "vexo/scan.hpp"
#include "vexo/settings.hpp"
#include "vexo/usb.hpp"

namespace vexo {

/** A printer: its port, its settings and the downloads into it. Use it on one thread at a time, except Abort. */
class Printer : public Port, public PrinterSettings<Printer>, public PrinterDownloads<Printer> {
 public:
  using Port::Port;
};

}  // namespace vexo

#endif  // VEXO_PRINTER_HPP_
