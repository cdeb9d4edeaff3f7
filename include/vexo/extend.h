/**
 * @file extend.h
 * The functions that vexoextend.dll exports.
 *
 * All are plain C functions with undecorated names and the platform's default calling convention. They run on the
 * calling thread and return 0, a negative code of error.h or, where said, a positive error code of the system.
 * Functions that take a printer handle check it before every access to the port, because another thread may close
 * the port meanwhile: a null handle or one whose magic is not 560 gives -6; no port object, or portOpen 0, gives -309.
 *
 * C99, and usable from C++.
 */
#ifndef VEXO_EXTEND_H_
#define VEXO_EXTEND_H_

#include <stdint.h>

#include "vexo/error.h"
#include "vexo/printer.h"

#if defined(_WIN32) && !defined(VEXO_EXTEND_STATIC)
#define VEXO_API __declspec(dllimport)
#else
#define VEXO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Gives the version of the library as text, "1.0.2.2".
 *
 * @param buffer receives exactly 8 bytes: the text and its terminating zero. Owned by the caller; not null.
 * @param size   size of the buffer in bytes.
 * @return 0; -1 when size is below 8 or buffer is null, nothing is written then.
 */
VEXO_API int32_t GetExtendVersion(char* buffer, uint32_t size);

/**
 * Gives the result of the latest call of a job monitor function, on whatever thread it ran; 0 before the first one.
 * Reading does not reset it. The other functions of the library do not touch it.
 */
VEXO_API int32_t GetLastErrorCode(void);

/**
 * Opens a port on the disk interface of a USB printer and puts it into a printer handle.
 *
 * A port object that the handle already holds is closed first (and freed, when the library made it), portOpen becomes
 * 0 and port NULL. After a failure to make the new port object, port stays NULL: opening "" (-301) is therefore the
 * way to give a port object back. When only the opening of the device failed, the handle keeps the new, closed port
 * object with portOpen 0, and its Open operation may be tried later.
 *
 * @param handle     printer handle record, owned by the caller.
 * @param descriptor port descriptor ("USB", "NET,192.168.1.100,9100", "LPT1") or device URI
 *                   ("vexo:/dev/bus/NET/DEVICE?ip=192.168.1.100+port=9100"); at most 255 characters count.
 * @return 0 and portOpen 1; -6 bad handle; -301 null or malformed text, or a descriptor of unknown kind; -4 a URI of
 *         unknown TYPE, or a kind of port without a driver; -2 (buffer ports: -9) out of memory; -372 no such USB
 *         device; positive: the system's error.
 */
VEXO_API int32_t DiskPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/** Opens a port on the imaging (scanner) interface of a USB device; otherwise as DiskPortOpen. */
VEXO_API int32_t ScannerPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/**
 * Puts a port into a printer handle: a scanner gun on USB (searched by device class) or on a serial line is opened; a
 * port of any other kind is only made, not opened, while portOpen becomes 1 all the same: its user calls
 * handle->port->Open(handle->port). Otherwise as DiskPortOpen; the codes of a serial port's Open are returned, too.
 */
VEXO_API int32_t ScannerGunPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/**
 * Sets the print width and makes the printer store it: a setkey command for key 0x00CC, whose acknowledgement is read
 * and not judged, then the command "save_param_zone". Blocks for at most the port's time limits of two writes and two
 * reads; on TCP also for connecting again whenever the printer has dropped the connection. Not locked: do not use the
 * port on another thread meanwhile.
 *
 * @param handle printer handle with an open port.
 * @param width  width in dots; only the low 16 bits travel.
 * @return 0 stored; -6, -309 bad or closed handle at any step; -331 the printer did not confirm the storing with
 *         exactly one zero byte; any other code: a write failed, unchanged from the port (-322, positive, ...).
 * @throws std::bad_alloc (a C++ exception) when there is no memory for a command; nothing has been sent then, or
 *         only the setkey command.
 */
VEXO_API int32_t SetPrintWidth(VexoPrinterHandle* handle, uint32_t width);

/**
 * Asks the printer for its print width.
 *
 * @param handle printer handle with an open port.
 * @param width  receives the width in dots (0..65535) when the printer answered with two bytes; untouched otherwise.
 *               Must not be null.
 * @return 0; -6, -309 bad or closed handle; any other code: the write or the read failed, unchanged from the port
 *         (-332 no answer, ...). A read that ended without error but brought fewer than 2 bytes (an aborted port,
 *         a printer that reconnected) gives 0 with *width untouched: set it to an impossible value before the call.
 * @throws std::bad_alloc (a C++ exception) when there is no memory for the command; nothing has been sent then.
 */
VEXO_API int32_t GetPrintWidth(VexoPrinterHandle* handle, uint32_t* width);

#ifdef __cplusplus
}
#endif

#endif /* VEXO_EXTEND_H_ */
