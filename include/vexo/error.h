/**
 * @file error.h
 * Result codes of the library.
 *
 * Every exported function and every port operation returns a signed 32-bit result: 0 for success, a negative code
 * from this list for a failure the library found itself, or a positive code of the operating system (GetLastError,
 * WSAGetLastError) passed on unchanged where the function's comment says so.
 *
 * C99, and usable from C++.
 */
#ifndef VEXO_ERROR_H_
#define VEXO_ERROR_H_

/** Result codes; see the file's description. */
enum VexoResult {
  VEXO_OK = 0, /**< Success. */

  /* General. */
  VEXO_ERROR_PARAMETER = -1,             /**< An argument is wrong: null, out of range, or not of the expected form. */
  VEXO_ERROR_BUFFER_TOO_SMALL = -2,      /**< The destination is too small, or a port object could not be allocated. */
  VEXO_ERROR_PRINTER_TYPE = -3,          /**< The printer is not of the type that was preset. */
  VEXO_ERROR_NOT_SUPPORTED_PRINTER = -4, /**< Unknown kind of port or printer. */
  VEXO_ERROR_HANDLE = -6,                /**< Null record, or a record without its magic number. */
  VEXO_ERROR_NOT_IMPLEMENTED = -7,       /**< The operation does not exist for this kind of port, or is off. */
  VEXO_ERROR_UNKNOWN_MODEL = -8,         /**< The printer model is not known. */
  VEXO_ERROR_OUT_OF_MEMORY = -9,         /**< Not enough memory. */
  VEXO_ERROR_WRONG_PRINTER = -10,        /**< Another printer than the one asked for. */
  VEXO_ERROR_ENVIRONMENT = -11,          /**< The environment is not set up. */
  VEXO_ERROR_CONFIG_FILE = -12,          /**< The configuration file is missing or malformed. */
  VEXO_ERROR_SDK_MISMATCH = -13,         /**< The printer type does not belong to this SDK. */
  VEXO_ERROR_IMAGE_LOAD = -21,           /**< An image could not be loaded. */
  VEXO_ERROR_IMAGE_SIZE = -25,           /**< An image is too large. */

  VEXO_ERROR_INCOMPLETE_REPLY = -30, /**< A framed reply of the printer ends too early. */

  /* Printer and driver. */
  VEXO_ERROR_PRINT = -100,        /**< General printing error. */
  VEXO_ERROR_DRIVER_DATA = -101,  /**< The printer driver's data is damaged. */
  VEXO_ERROR_DRIVER_STATE = -102, /**< The printer driver reports a bad printer state. */

  VEXO_ERROR_NO_PRINTER = -103, /**< A scan found no printer that is ready. */

  /* Port input and output. */
  VEXO_ERROR_IO = -300,                  /**< General input/output error. */
  VEXO_ERROR_IO_SETTING = -301,          /**< Malformed port descriptor or device URI; the port is not configured. */
  VEXO_ERROR_IO_NAME_TOO_LONG = -302,    /**< The port name is too long. */
  VEXO_ERROR_IO_OS_VERSION = -304,       /**< The operating system is too old. */
  VEXO_ERROR_IO_HANDLE = -308,           /**< The port object has no driver (any more). */
  VEXO_ERROR_IO_NOT_OPEN = -309,         /**< The port is not open, or the printer handle holds no port. */
  VEXO_ERROR_IO_ALREADY_OPEN = -310,     /**< The port is open already; it was left as it was. */
  VEXO_ERROR_IO_OPEN_FAILED = -311,      /**< The connection was not made within the connect timeout. */
  VEXO_ERROR_IO_GET_ATTRIBUTES = -312,   /**< The line settings could not be read. */
  VEXO_ERROR_IO_SET_ATTRIBUTES = -313,   /**< The line settings were refused. */
  VEXO_ERROR_IO_WRITE = -321,            /**< Write failed. */
  VEXO_ERROR_IO_WRITE_TIMEOUT = -322,    /**< Not everything was written within the write budget. */
  VEXO_ERROR_IO_READ = -331,             /**< Read failed, or the printer's answer was not the expected one. */
  VEXO_ERROR_IO_READ_TIMEOUT = -332,     /**< Not everything arrived within the read budget or the read interval. */
  VEXO_ERROR_IO_FLUSH = -341,            /**< The port's buffers could not be flushed. */
  VEXO_ERROR_SERIAL_BAUDRATE = -351,     /**< The baud rate is not one of the supported ones. */
  VEXO_ERROR_NETWORK_CONNECT = -352,     /**< The network printer could not be reached. */
  VEXO_ERROR_SERIAL_PARITY = -353,       /**< Bad parity. */
  VEXO_ERROR_SERIAL_BYTE_SIZE = -354,    /**< Bad number of data bits. */
  VEXO_ERROR_SERIAL_STOP_BITS = -355,    /**< Bad number of stop bits. */
  VEXO_ERROR_SERIAL_FLOW_CONTROL = -356, /**< The flow-control letter is not one of the supported ones. */
  VEXO_ERROR_SERIAL_HANDSHAKE = -361,    /**< Bad handshake. */
  VEXO_ERROR_USB_PATH = -371,            /**< Bad USB path. */
  VEXO_ERROR_USB_NOT_FOUND = -372,       /**< No USB device matched. */
  VEXO_ERROR_USB_BUSY = -373,            /**< The USB device is busy. */

  /* Card readers and magnetic heads. */
  VEXO_ERROR_MSR_NOT_READY = -401,        /**< The magnetic stripe reader is not in its read mode. */
  VEXO_ERROR_SMART_CARD_NOT_READY = -411, /**< The smart card reader is not in its read mode. */
  VEXO_ERROR_ENCRYPT_HEAD = -501,         /**< The magnetic head's encryption could not be set. */
  VEXO_ERROR_DECRYPT_HEAD = -511,         /**< The magnetic head's data could not be decrypted. */

  /* The USB library layer of the printer SDK. */
  VEXO_ERROR_USB_LAYER_SUCCESS = -1100,       /**< That layer's success. */
  VEXO_ERROR_USB_LAYER_IO = -1101,            /**< Input/output error. */
  VEXO_ERROR_USB_LAYER_PARAMETER = -1102,     /**< Bad argument. */
  VEXO_ERROR_USB_LAYER_ACCESS = -1103,        /**< No access right. */
  VEXO_ERROR_USB_LAYER_NO_DEVICE = -1104,     /**< The device is gone. */
  VEXO_ERROR_USB_LAYER_NOT_FOUND = -1105,     /**< The device was not found. */
  VEXO_ERROR_USB_LAYER_BUSY = -1106,          /**< The device is busy. */
  VEXO_ERROR_USB_LAYER_TIMEOUT = -1107,       /**< The transfer took too long. */
  VEXO_ERROR_USB_LAYER_OVERFLOW = -1108,      /**< The device sent too much. */
  VEXO_ERROR_USB_LAYER_PIPE = -1109,          /**< The pipe is broken. */
  VEXO_ERROR_USB_LAYER_INTERRUPTED = -1110,   /**< The operation was interrupted. */
  VEXO_ERROR_USB_LAYER_NO_MEMORY = -1111,     /**< Not enough memory. */
  VEXO_ERROR_USB_LAYER_NOT_SUPPORTED = -1112, /**< Not supported on this system. */
  VEXO_ERROR_USB_LAYER_UNKNOWN = -1199,       /**< Any other failure. */

  /* Downloads. */
  VEXO_ERROR_DOWNLOAD_CANCELLED = -6004,  /**< Cancelled through setCancel. */
  VEXO_ERROR_DOWNLOAD_MODE = -6006,       /**< The printer did not enter its download mode. */
  VEXO_ERROR_DOWNLOAD_EMPTY = -6007,      /**< The file is empty, or has 2 GiB or more. */
  VEXO_ERROR_DOWNLOAD_NO_ANSWER = -6008,  /**< An expected answer did not arrive at all. */
  VEXO_ERROR_DOWNLOAD_BAD_ANSWER = -6009, /**< The printer's answer was wrong, or a package was not confirmed. */

  /* Job monitor. */
  VEXO_ERROR_MONITOR_PARAMETER = -7002,       /**< An argument is null or out of range. */
  VEXO_ERROR_MONITOR_NO_ANSWER = -7003,       /**< The printer gave no answer. */
  VEXO_ERROR_MONITOR_ANSWER_TOO_LONG = -7007, /**< The answer is longer than the buffer. */
  VEXO_ERROR_MONITOR_OUT_OF_MEMORY = -7020,   /**< No memory, or no thread, for a monitor object. */
  VEXO_ERROR_MONITOR_NOT_OPEN = -7101,        /**< Job monitoring is off. */
  VEXO_MONITOR_NO_EVENT = 999                 /**< GetStatusReport: no job event. */
};

#endif /* VEXO_ERROR_H_ */
