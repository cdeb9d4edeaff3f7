/**
 * @file printer.h
 * The records that a host and the library share: the printer handle, the port object and its timeouts.
 *
 * The layouts are fixed (natural alignment of the platform's C compiler): hosts in other languages and the printer
 * SDK's main library declare the same records. C99, and usable from C++.
 *
 * A port is named by a descriptor or by a device URI. A descriptor has up to ten fields, separated by commas; blanks
 * around them are ignored. The first one is the kind of the port, in any letter case:
 *
 * - "COM3,9600,n,8,1,n": a serial line, its speed (also "BAUDRATE_9600"), parity, data bits, stop bits, flow control.
 *   All but the speed default to the values shown. "BSP4,9600": a serial line over Bluetooth.
 * - "NET,192.168.1.100,9100": TCP, an IPv4 address (names are not looked up) and a port, 9100 by default.
 * - "BT,001122334455,8642": Bluetooth, an address in hexadecimal digits and a PIN, 8642 by default.
 * - "LPT1": a parallel port. "BUF": memory.
 * - "USB": the first USB printer, or the one that further fields describe: "USB001" (the port of the system's printer
 *   driver), "PORT_#0001.HUB_#0002" (a location), "VID_0X1A2B" and "PID_0X0001" (the digits begin after the first six
 *   characters, whatever these are). If any field is none of these, the second one is DEVICE: "USB,ABC123" is a serial
 *   number. Otherwise the last field decides: after a port or a location, VID and PID do not count. All fields are
 *   upper-cased. A serial number that reads as one of these fields needs a URI.
 *
 * Descriptors are converted to device URIs, "vexo:/dev/bus/TYPE/DEVICE?key=value+key=value": at most 255 characters and
 * eight parameters, case-sensitive, the last value not empty. For the descriptors above:
 *
 * - "vexo:/dev/bus/COM/COM3?baudrate=9600+parity=n+bytesize=8+stopbits=1+flowcontrol=n"
 * - "vexo:/dev/bus/NET/DEVICE?ip=192.168.1.100+port=9100", "vexo:/dev/bus/BT/DEVICE?address=001122334455+pin=8642"
 * - "vexo:/dev/bus/LPT/LPT1", "vexo:/dev/bus/BUF/DEVICE"
 * - "vexo:/dev/bus/USB/ABC123", "vexo:/dev/bus/USB/DEVICE?vid=1A2B+pid=0001", and likewise location and portnum
 */
#ifndef VEXO_PRINTER_H_
#define VEXO_PRINTER_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** First field of every valid printer handle record. */
#define VEXO_PRINTER_MAGIC 560u
/** First field of every valid port object. */
#define VEXO_PORT_MAGIC 120u
/** Bytes of the longest device URI and its terminating zero. */
#define VEXO_URI_SIZE 256

/** Kind of a port, chosen by the TYPE of its device URI. */
enum VexoPortKind {
  VEXO_PORT_SERIAL = 0,    /**< "COM" and "BSP" (a serial line over Bluetooth). */
  VEXO_PORT_PARALLEL = 1,  /**< "LPT". */
  VEXO_PORT_USB = 2,       /**< "USB", the USB printer class. */
  VEXO_PORT_NET = 3,       /**< "NET", TCP. */
  VEXO_PORT_FILE = 4,      /**< "FILE"; the library has no driver for it. */
  VEXO_PORT_BLUETOOTH = 5, /**< "BT" and "Bluetooth", RFCOMM. */
  VEXO_PORT_BUFFER = 6     /**< "BUF", memory. */
};

/** Codes of VexoPort.Control. */
enum VexoPortControl {
  VEXO_CONTROL_PARALLEL_SET_STATUS = 1,  /**< Parallel: status flag := input[0]. */
  VEXO_CONTROL_PARALLEL_GET_STATUS = 2,  /**< Parallel: output[0] := status flag. */
  VEXO_CONTROL_USB_GET_READ_GATED = 5,   /**< USB: output[0] := 1 if reads obey the read switch. */
  VEXO_CONTROL_USB_SET_READ_ENABLED = 6, /**< USB: read switch := input[0]. */
  VEXO_CONTROL_USB_GET_READ_ENABLED = 7  /**< USB: output[0] := read switch. */
};

/**
 * Time limits of a port, in milliseconds. The first five have the meaning of the members of the Windows COMMTIMEOUTS
 * structure in the same positions.
 *
 * Budget of a Write of n bytes: writeMultiplier * n + writeConstant; of a Read: readMultiplier * n + readConstant.
 * On a TCP or Bluetooth port a budget of 0 means no limit.
 *
 * Defaults: file ports (serial, parallel, USB) 10, 5, 2000, 10, 2000, 1000; TCP 10, 0, 2000, 0, 2000, 3000; Bluetooth
 * 10, 0, 2000, 0, 2000, 2000. Until SetTimeouts is called, Open gives a slow serial line a longer writeConstant: 3600
 * at 4800 bit/s, 7800 at 2400, 16200 at 1200.
 */
typedef struct VexoPortTimeouts {
  uint32_t readInterval;    /**< Longest gap between pieces once data flows. */
  uint32_t readMultiplier;  /**< Read budget per byte requested. */
  uint32_t readConstant;    /**< Read budget per call. */
  uint32_t writeMultiplier; /**< Write budget per byte. */
  uint32_t writeConstant;   /**< Write budget per call. */
  uint32_t connect;         /**< TCP, Bluetooth: limit of each of two connect attempts. Others: stored, not used. */
} VexoPortTimeouts;

/** A port object; see its record below. */
typedef struct VexoPort VexoPort;

/**
 * A port object: one connection to a printer, driven through its twelve operations.
 *
 * The port-open exports (extend.h) make one; the SDK's main library, a host or a test may make its own with the same
 * layout, and every export works on it through these entries. The driver field belongs to the maker of the object.
 *
 * Every operation takes the port object first and returns VEXO_OK, a negative code of error.h or a positive code of the
 * operating system. Common codes: VEXO_ERROR_HANDLE for a null object or a wrong magic, VEXO_ERROR_IO_HANDLE for an
 * object whose driver is gone. Write, Read, ReadAvailable and Control set their count to 0 first and report it also on
 * failure (the count pointer may be null); a null buffer with a length above 0 gives VEXO_ERROR_PARAMETER.
 *
 * Threads: one at a time. Exceptions: Abort, from any thread, and a Write while another thread is in ReadAvailable, so
 * that a host can print while its job monitor listens.
 *
 * In the following, "TCP" includes Bluetooth ports.
 */
struct VexoPort {
  uint32_t magic; /**< VEXO_PORT_MAGIC. */
  void* driver;   /**< Private to the maker of the object. */

  /**
   * Configures the port from a device URI and stores the URI's canonical form. An open port keeps its device until it
   * is opened again.
   *
   * A serial port needs five parameters, with values in either letter case; a missing one counts as a bad value:
   * - baudrate: 1200, 2400, 4800, 9600, 14400, 19200, 38400, 57600 or 115200;
   * - parity: n none, o odd, e even, m mark, s space; bytesize: 4 to 8; stopbits: 1, 1.5 or 2 (bad values of these make
   *   Open give VEXO_ERROR_IO_SET_ATTRIBUTES);
   * - flowcontrol: n none, d DTR/DSR, c RTS/CTS, p both of these, x XON/XOFF.
   *
   * @retval VEXO_ERROR_IO_SETTING malformed URI, or without "ip" (TCP) or "address" (Bluetooth).
   * @retval VEXO_ERROR_PARAMETER malformed URI.
   * @retval VEXO_ERROR_SERIAL_BAUDRATE bad baudrate.
   * @retval VEXO_ERROR_SERIAL_FLOW_CONTROL bad flowcontrol.
   * @retval VEXO_ERROR_OUT_OF_MEMORY out of memory.
   */
  int32_t (*Configure)(VexoPort* port, const char* uri);

  /**
   * Writes the canonical device URI to buffer and its length to *length. Pass VEXO_URI_SIZE bytes; a buffer of less
   * than 255 is zeroed and left empty, with *length as usual. A port that is not configured, and a buffer port, give an
   * empty text and length 0.
   */
  int32_t (*GetUri)(VexoPort* port, char* buffer, uint32_t size, uint32_t* length);

  /**
   * Opens the device, or connects.
   *
   * A USB port looks for its printer each time it is opened, among those that GetUsbDescList lists and that have a
   * location. A URI that does not describe the printer means the first one. Otherwise one of these must match, in any
   * letter case unless said:
   * - vid and pid, both;
   * - location;
   * - DEVICE: the serial number, or the whole device id of the print queue, or a part of the queue's device id
   *   (case-sensitive);
   * - portnum: a part of the queue's device id (case-sensitive).
   *
   * Compatibility: the printer "VID_0FE6&PID_811E" is taken as soon as it is met, whatever the URI says; its reads obey
   * the read switch. (With a vidpid_cfg.txt it is a printer like any other.)
   *
   * Opening adds to a USB port's URI "location", "deviceid" (the device path) and "sn" (the upper-cased serial number,
   * if any), in place of earlier ones; beyond 255 characters the URI is cut. A later opening takes another printer at
   * the same location, too.
   *
   * A buffer port is emptied, also if it was open.
   *
   * @retval VEXO_ERROR_IO_SETTING not configured.
   * @retval VEXO_ERROR_IO_ALREADY_OPEN left as it was; so is, until Close, a TCP port that could not reconnect.
   * @retval VEXO_ERROR_IO_NOT_OPEN closed by another thread meanwhile.
   * @retval VEXO_ERROR_IO_OPEN_FAILED no connection within the connect timeout, twice; refused and unreachable
   *         connections take the same time.
   * @retval VEXO_ERROR_IO_GET_ATTRIBUTES not a serial line.
   * @retval VEXO_ERROR_IO_SET_ATTRIBUTES the serial line refuses its settings; it stays closed.
   * @retval VEXO_ERROR_USB_NOT_FOUND no such USB printer.
   * @retval VEXO_ERROR_OUT_OF_MEMORY out of memory.
   * @return otherwise VEXO_OK or the system's error.
   */
  int32_t (*Open)(VexoPort* port);

  /**
   * Closes the device; a buffer port loses its content. A transfer on another thread ends with the system's error,
   * VEXO_ERROR_IO_NOT_OPEN or what it has so far; Close waits for that, 5 s at most. A TCP port that is connecting
   * gives up: nothing is connected or sent after Close, and the other thread gets VEXO_ERROR_IO_NOT_OPEN.
   */
  int32_t (*Close)(VexoPort* port);

  /**
   * Stops the Write or Read on another thread between two pieces (it returns VEXO_OK with the count so far), and every
   * later one at once; a new port object is needed afterwards. A wait for the printer that has begun is not cut short,
   * and ReadAvailable still reads. No effect on a buffer port and on a closed TCP port.
   *
   * @retval VEXO_ERROR_IO_NOT_OPEN a closed file port.
   */
  int32_t (*Abort)(VexoPort* port);

  /**
   * Tells whether a file port is open. Compatibility: TCP always gives VEXO_OK, even if never opened (the next Write,
   * or the Read that notices it, restores a dropped connection); a buffer port is emptied by this call.
   *
   * @retval VEXO_ERROR_IO_SETTING a file port that is not configured.
   * @retval VEXO_ERROR_IO_NOT_OPEN a file port that is not open.
   */
  int32_t (*CheckOpen)(VexoPort* port);

  /** Sets all six time limits. A serial line's own limits are taken from them when it is opened. */
  int32_t (*SetTimeouts)(VexoPort* port, VexoPortTimeouts timeouts);

  /** Reads the time limits; all 0 for a buffer port. VEXO_ERROR_PARAMETER: null pointer. */
  int32_t (*GetTimeouts)(VexoPort* port, VexoPortTimeouts* timeouts);

  /**
   * Writes length bytes from buffer + offset. A TCP port whose printer dropped the connection reconnects first, outside
   * the budget; if that fails, the result is as Open's. A buffer port appends.
   *
   * @retval VEXO_OK all was written; or fewer bytes, if the port was aborted or a TCP budget ended between two pieces.
   * @retval VEXO_ERROR_IO_NOT_OPEN not open.
   * @retval VEXO_ERROR_IO_WRITE_TIMEOUT the write budget ran out.
   * @retval VEXO_ERROR_OUT_OF_MEMORY a buffer port, whose content stays.
   * @return otherwise the system's error (10060 for a TCP piece that was tried again in vain).
   */
  int32_t (*Write)(VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written);

  /**
   * Reads length bytes into buffer + offset.
   *
   * Compatibility: a USB port that is asked for at most 254 bytes takes whole packets. If more arrived than requested,
   * the buffer receives the last length bytes and *read counts all of them, so it may exceed length (64 for a 64-byte
   * packet read as 10 bytes).
   *
   * Compatibility: a TCP port whose printer closed the connection reconnects and returns the result of that, VEXO_OK or
   * as Open's, with the bytes read so far. After a failed one, each Read gives 10038 (no socket) until a Write has
   * reconnected.
   *
   * Compatibility: a buffer port copies all its content without consuming it; its room is length - offset, and longer
   * content gives VEXO_ERROR_BUFFER_TOO_SMALL.
   *
   * @retval VEXO_OK all was read; or fewer bytes, if the port was aborted or reconnected.
   * @retval VEXO_ERROR_IO_READ_TIMEOUT fewer bytes within the budget, a gap longer than the read interval, or five
   *         attempts on a serial or USB port.
   * @retval VEXO_ERROR_NOT_IMPLEMENTED a gated USB port whose read switch is off.
   * @retval VEXO_ERROR_IO_NOT_OPEN not open.
   * @return otherwise the system's error.
   */
  int32_t (*Read)(VexoPort* port, uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read);

  /**
   * One short read of at most to - from bytes into buffer + from: what is there now (TCP), what arrives within 100 ms
   * (serial, USB), or byte by byte what arrives while the system waits for each (parallel). Nothing there, and a TCP
   * connection that the printer has closed, give VEXO_OK with *read 0.
   *
   * USB ports asked for at most 63 bytes take whole packets and count as in Read. A buffer port copies all its content
   * as in Read; its room is to - from.
   *
   * @retval VEXO_ERROR_PARAMETER from > to (a buffer port: no room).
   * @retval VEXO_ERROR_NOT_IMPLEMENTED as in Read.
   * @retval VEXO_ERROR_IO_NOT_OPEN not open.
   * @return otherwise VEXO_OK or the system's error; 10038 as in Read.
   */
  int32_t (*ReadAvailable)(VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read);

  /**
   * Reads or changes a setting that only one kind of port has; reserved is not used. A "get" sets *returned to 1.
   *
   * @param code a VexoPortControl.
   * @retval VEXO_ERROR_PARAMETER a "set" without input.
   * @retval VEXO_ERROR_BUFFER_TOO_SMALL a "get" without output.
   * @retval VEXO_ERROR_NOT_IMPLEMENTED any other code (buffer ports: VEXO_OK, no effect).
   */
  int32_t (*Control)(VexoPort* port, int32_t code, void* reserved, const uint8_t* input, uint32_t inputLength,
                     uint8_t* output, uint32_t outputLength, uint32_t* returned);

  uint32_t kind; /**< VexoPortKind. */
};

/**
 * A printer handle, made and owned by the host (or the SDK's main library) for its whole life. Zero it, set magic, and
 * pass it to a port-open export, or put a port object of your own into it.
 */
typedef struct VexoPrinterHandle {
  uint32_t magic;   /**< VEXO_PRINTER_MAGIC. */
  void* host;       /**< Not used by this library. */
  VexoPort* port;   /**< The current port object, or null. */
  uint8_t portOpen; /**< 1 if the port is open; at 0 every printer function gives VEXO_ERROR_IO_NOT_OPEN. */
} VexoPrinterHandle;

#ifdef __cplusplus
}
#endif

#endif /* VEXO_PRINTER_H_ */
