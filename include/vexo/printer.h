/**
 * @file printer.h
 * The records that a host and the library share: the printer handle, the port object and its timeouts.
 *
 * The layouts are fixed (natural alignment of the platform's C compiler): hosts in other languages and the printer
 * SDK's main library declare the same records. C99, and usable from C++.
 *
 * A port is named by a descriptor or by a device URI. A descriptor has up to ten fields between commas; blanks around
 * them do not count. It begins with the kind of the port, in any letter case:
 *
 * - "COM3,9600,n,8,1,n": a serial line, its speed (also "BAUDRATE_9600"), parity, data bits, stop bits, flow control.
 *   Only the speed is required, the others are as shown here. "BSP4,9600": a serial line over Bluetooth.
 * - "NET,192.168.1.100,9100": TCP, an IPv4 address (names are not looked up) and a port, 9100 unless given.
 * - "BT,001122334455,8642": Bluetooth, an address in hexadecimal digits and a PIN, 8642 unless given.
 * - "LPT1": a parallel port. "BUF": memory.
 * - "USB": a USB printer, the first one or the one that further fields describe: "USB001" (the port of the system's
 *   printer driver), "PORT_#0001.HUB_#0002" (a location), "VID_0X1A2B" and "PID_0X0001" (whatever their first six
 *   characters are, the digits begin after them). If any field is none of these, the second one is DEVICE: "USB,ABC123"
 *   is a serial number. The last field that is one of these decides: if it is a port or a location, VID and PID do not
 *   count. All these fields are upper-cased. A serial number that reads as one of them needs a URI.
 *
 * A device URI is the form that descriptors are turned into, "vexo:/dev/bus/TYPE/DEVICE?key=value+key=value": at most
 * 255 characters and eight parameters, letter case counts, and the last value is not empty. For the descriptors above:
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

/** Codes of VexoPort.Control. Every other code gives -7 (buffer ports: 0, no effect). */
enum VexoPortControl {
  VEXO_CONTROL_PARALLEL_SET_STATUS = 1,  /**< Parallel: status flag := input[0]. */
  VEXO_CONTROL_PARALLEL_GET_STATUS = 2,  /**< Parallel: output[0] := status flag. */
  VEXO_CONTROL_USB_GET_READ_GATED = 5,   /**< USB: output[0] := 1 when reads obey the read switch. */
  VEXO_CONTROL_USB_SET_READ_ENABLED = 6, /**< USB: read switch := input[0]. */
  VEXO_CONTROL_USB_GET_READ_ENABLED = 7  /**< USB: output[0] := read switch. */
};

/**
 * Time limits of a port, in milliseconds. The first five mean what the members of the Windows COMMTIMEOUTS structure
 * in the same positions mean.
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
  uint32_t readMultiplier;  /**< Read budget per byte asked for. */
  uint32_t readConstant;    /**< Read budget per call. */
  uint32_t writeMultiplier; /**< Write budget per byte. */
  uint32_t writeConstant;   /**< Write budget per call. */
  uint32_t connect;         /**< TCP, Bluetooth: limit of each of two connect attempts. File ports: kept, not used. */
} VexoPortTimeouts;

/** A port object; see its record below. */
typedef struct VexoPort VexoPort;

/**
 * A port object: one connection to a printer, driven through its twelve operations.
 *
 * The library makes one when a port-open export (extend.h) is called; the SDK's main library, a host or a test may
 * make one of its own with the same layout, and every export works on it through these entries. The driver field
 * belongs to the maker of the object.
 *
 * Every operation takes the port object itself first and returns 0, a negative code of error.h or a positive code of
 * the operating system. A null object or one whose magic is not 120 gives -6; an object whose driver is gone, -308.
 * A port object is used by one thread at a time, but Abort may come from any thread, and a Write while another thread
 * is in ReadAvailable: so a host prints while its job monitor listens. What is said of TCP ports below holds for
 * Bluetooth ports, too.
 *
 * Write, Read, ReadAvailable and Control set their count to 0 first and report it also on failure; the count pointer
 * may be null. A null buffer with a length above 0 gives -1.
 */
struct VexoPort {
  uint32_t magic; /**< 120. */
  void* driver;   /**< Private to the maker of the object. */

  /**
   * Configures the port from a device URI and stores the URI's canonical form. -301 or -1: malformed URI; -301 also
   * without "ip" on a TCP port, without "address" on a Bluetooth port. -9: out of memory. A port that is open stays
   * with its device; the URI counts when it is opened again.
   *
   * A serial port needs five parameters. Letters of their values may be in either case; a missing parameter counts as a
   * value that is not listed here:
   * - baudrate: 1200, 2400, 4800, 9600, 14400, 19200, 38400, 57600 or 115200; else -351;
   * - parity: n none, o odd, e even, m mark, s space; bytesize: 4 to 8; stopbits: 1, 1.5 or 2; else Open gives -313;
   * - flowcontrol: n none, d DTR/DSR, c RTS/CTS, p both of these, x XON/XOFF; else -356.
   */
  int32_t (*Configure)(VexoPort* port, const char* uri);

  /**
   * Gives the canonical device URI. The buffer must hold at least 255 bytes, better 256; a smaller one is zeroed and
   * left empty. *length receives the length of the URI in either case. A port that is not configured, and a buffer
   * port, give an empty text and length 0.
   */
  int32_t (*GetUri)(VexoPort* port, char* buffer, uint32_t size, uint32_t* length);

  /**
   * Opens the device or connects. -301: not configured. -310: open already, left as it was; so is a TCP port that could
   * not connect again, until Close. -309: closed by another thread meanwhile. -311: no connection
   * within the connect timeout, twice; a printer that refuses the connection or that no network leads to is reported so
   * too, after the same time. -312: not a serial line, -313: the line refuses its settings; it stays closed. -372: no
   * such USB printer. -9: no memory for its path. Positive: the system's error. A buffer port is empty afterwards,
   * also if it was open; -9: no memory.
   *
   * A USB port looks for its printer each time it is opened, among those that GetUsbDescList lists and that have a
   * location. A URI that says nothing of the printer means the first one. Otherwise one of these must agree, and letter
   * case does not count unless said:
   * - vid and pid, both;
   * - location;
   * - DEVICE: the serial number, or the whole device id of the print queue, or a part of the queue's device id (in the
   *   same letter case);
   * - portnum: a part of the queue's device id, in the same letter case.
   * The printer "VID_0FE6&PID_811E" is taken as soon as it is met, whatever the URI says; its reads obey the read
   * switch. (With a vidpid_cfg.txt it is a printer like any other.)
   *
   * Where the printer was found is added to the URI: "location", "deviceid" (its device path) and "sn" (its serial
   * number, upper-cased; left out when it has none). They take the place of those of an earlier opening. What goes
   * beyond 255 characters is cut. A later opening takes another printer at the same location, too.
   */
  int32_t (*Open)(VexoPort* port);

  /**
   * Closes the device; a buffer port loses its content. Always 0 for a valid object. A transfer that is under way on
   * another thread, of a job monitor perhaps, ends: it gives the system's error, or -309, or what it has by then. Close
   * waits for that, 5 s at most. A TCP port that is just connecting stops that: nothing is connected or sent once Close
   * has returned, and the call on the other thread gives -309.
   */
  int32_t (*Close)(VexoPort* port);

  /**
   * Makes the Write or Read that is under way on another thread stop between two pieces (it then returns 0 with the
   * count so far), and every later one at once: a new port object is needed afterwards. A wait for the printer that has
   * begun goes on to its end, and ReadAvailable still reads. File ports: -309 when not open. TCP: always 0, without
   * effect on a port that is closed. Buffer ports: 0, no effect.
   */
  int32_t (*Abort)(VexoPort* port);

  /**
   * 0 when open. File ports: -301 not configured, -309 not open. TCP: always 0, even if it was never opened; a dropped
   * connection is restored by the next Write, or by the Read that meets it. A buffer port is emptied by this call.
   */
  int32_t (*CheckOpen)(VexoPort* port);

  /** Sets the time limits (all six). The limits that a serial line has itself are taken from them when it is opened. */
  int32_t (*SetTimeouts)(VexoPort* port, VexoPortTimeouts timeouts);

  /** Gives the time limits. A buffer port has none: all 0. -1: null pointer. */
  int32_t (*GetTimeouts)(VexoPort* port, VexoPortTimeouts* timeouts);

  /**
   * Writes length bytes from buffer + offset. -309: not open. -322: the write budget ran out. Positive: the system's
   * error. *written receives the bytes written. 0 with fewer bytes than asked for: the port was aborted, or a TCP
   * budget ended between two pieces (after a piece that the system gave up on and that was tried again: its 10060).
   *
   * A TCP port whose printer has dropped the connection connects again first, for which the budget does not count; when
   * that fails, its result is as Open's. A buffer port appends; -9: no memory, its content stays.
   */
  int32_t (*Write)(VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written);

  /**
   * Reads length bytes into buffer + offset. -332: fewer arrived within the budget, or the gap between two pieces was
   * longer than the read interval, or a serial or USB port has been asked five times. -7: a gated USB port whose read
   * switch is off. -309: not open. Positive: the system's error. 0 with fewer bytes than asked for: the port was
   * aborted. *read receives the bytes that arrived.
   *
   * A USB port that is asked for at most 254 bytes takes whole packets: when more came than was asked for, the buffer
   * receives the last length bytes and *read counts all of them, so it may exceed length (64 for a 64-byte packet read
   * as 10 bytes). A TCP port whose printer closed the connection reconnects and returns the result of that, 0 or as
   * Open's, with the bytes read so far; after one that failed, each Read gives 10038 (no socket) until a
   * Write has connected again. A buffer port copies all its content without consuming it; the room it sees is
   * length - offset, and content that is longer gives -2.
   */
  int32_t (*Read)(VexoPort* port, uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read);

  /**
   * One short read of at most to - from bytes into buffer + from: what is there now (TCP), what comes within 100 ms
   * (serial, USB), or byte by byte what comes for as long as the system waits for each (parallel). Nothing there gives
   * 0 with *read 0, as does a TCP connection that the printer has closed. from > to gives -1 (a buffer port: no room).
   * USB ports asked for at most 63 bytes take whole packets and count as in Read. -7: as Read. -309: not open.
   * Positive: the system's error; on a TCP port that could not connect again 10038, as for Read: only a Write tries
   * anew. A buffer port copies all its content as Read does; the room is to - from.
   */
  int32_t (*ReadAvailable)(VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read);

  /**
   * Small settings of one kind of port (VexoPortControl). A "set" without input gives -1, a "get" without output -2;
   * a "get" sets *returned to 1. The reserved argument is not used: pass NULL.
   */
  int32_t (*Control)(VexoPort* port, int32_t code, void* reserved, const uint8_t* input, uint32_t inputLength,
                     uint8_t* output, uint32_t outputLength, uint32_t* returned);

  uint32_t kind; /**< VexoPortKind. */
};

/**
 * A printer handle: made and owned by the host (or the SDK's main library) for its whole life. Zero it, set magic,
 * and hand it to a port-open export, or put a port object of your own into it.
 */
typedef struct VexoPrinterHandle {
  uint32_t magic;   /**< 560. */
  void* host;       /**< Not used by this library. */
  VexoPort* port;   /**< The current port object, or NULL. */
  uint8_t portOpen; /**< 1 when the device of port is open; at 0 every printer function gives -309. */
} VexoPrinterHandle;

#ifdef __cplusplus
}
#endif

#endif /* VEXO_PRINTER_H_ */
