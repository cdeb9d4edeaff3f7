/**
 * @file extend.h
 * The functions that vexoextend.dll exports.
 *
 * All are plain C functions with undecorated names and the platform's default calling convention. They run on the
 * calling thread and return VEXO_OK, a negative code of error.h or, where said, a positive error code of the system.
 *
 * Functions that take a printer handle check it before every access to the port, because another thread may close the
 * port meanwhile. The *handle codes* are VEXO_ERROR_HANDLE (a null handle, or one without VEXO_PRINTER_MAGIC) and
 * VEXO_ERROR_IO_NOT_OPEN (no port object, or portOpen 0).
 *
 * C99, and usable from C++.
 */
#ifndef VEXO_EXTEND_H_
#define VEXO_EXTEND_H_

#include <stdint.h>

#include "vexo/error.h"
#include "vexo/printer.h"

/** Marks the functions of the library. */
#if defined(_WIN32) && !defined(VEXO_EXTEND_STATIC)
#define VEXO_API __declspec(dllimport)
#else
#define VEXO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Bytes of the version text and its terminating zero. */
#define VEXO_VERSION_SIZE 8

/**
 * Writes the version of the library, "1.0.2.2".
 *
 * @param buffer receives exactly VEXO_VERSION_SIZE bytes, the terminating zero included. Owned by the caller.
 * @param size   size of the buffer in bytes.
 * @retval VEXO_ERROR_PARAMETER buffer is null or size too small; nothing is written.
 */
VEXO_API int32_t GetExtendVersion(char* buffer, uint32_t size);

/**
 * Returns the last failure that a job monitor function stored, on any thread; 0 before the first one. Neither this call
 * nor a success resets it. No other function of the library changes it.
 *
 * @return a code of error.h, or a positive error code of the system.
 */
VEXO_API int32_t GetLastErrorCode(void);

/**
 * Opens a port on the disk interface of a USB printer and puts it into a printer handle.
 *
 * Closes the handle's port object first, and frees it if the library made it; open "" (VEXO_ERROR_IO_SETTING) only to
 * release a port. If only opening the device fails, the handle keeps the new, closed port object with portOpen 0; after
 * any other failure port is null.
 *
 * The device is selected as VexoPort.Open describes; vid, pid, DEVICE and location may be those of the printer that the
 * disk is in. Other disks are never opened, unless a vidpid_cfg.txt admits every device (GetUsbDescList). "location"
 * and "deviceid" are added to the port's URI, but no "sn".
 *
 * Compatibility: on USB the port object's own Open looks for a printer, whatever interface this function looked for. To
 * open a USB printer without the SDK's main library, call any of these functions (it makes the port object even if it
 * returns VEXO_ERROR_USB_NOT_FOUND), then the object's Close and Open, and set portOpen to 1.
 *
 * If several threads open ports into one handle, the last port stays and the others are closed. Release all ports
 * before unloading the library: open devices stay open until the process ends.
 *
 * @param handle     printer handle, owned by the caller.
 * @param descriptor port descriptor or device URI, see printer.h; at most 255 characters count.
 * @retval VEXO_OK the port is open; portOpen is 1.
 * @retval VEXO_ERROR_HANDLE null handle, or wrong magic.
 * @retval VEXO_ERROR_IO_SETTING null or malformed text, or a descriptor of unknown kind.
 * @retval VEXO_ERROR_PARAMETER a URI without a device or without a last value (a final parameter without "=" does not
 *         count).
 * @retval VEXO_ERROR_NOT_SUPPORTED_PRINTER a URI of unknown TYPE, or a kind of port without a driver.
 * @retval VEXO_ERROR_SERIAL_BAUDRATE bad speed; VEXO_ERROR_SERIAL_FLOW_CONTROL: bad flow control.
 * @retval VEXO_ERROR_BUFFER_TOO_SMALL out of memory, as is VEXO_ERROR_OUT_OF_MEMORY.
 * @retval VEXO_ERROR_USB_NOT_FOUND no such USB device, or not a USB port.
 * @retval VEXO_ERROR_IO the system does not list its devices and reports no error code; positive if it does.
 */
VEXO_API int32_t DiskPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/**
 * Opens a port on the imaging (scanner) interface of a USB device; otherwise as DiskPortOpen.
 *
 * @param handle     printer handle, owned by the caller.
 * @param descriptor port descriptor or device URI.
 * @return as DiskPortOpen.
 */
VEXO_API int32_t ScannerPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/**
 * Puts a port into a printer handle, and opens it if it is a scanner gun on USB or on a serial line; otherwise as
 * DiskPortOpen. A gun on USB is looked for among input devices, then among ports and modems; a failure is that of the
 * last search.
 *
 * Compatibility: a port of any other kind is only made, not opened, but portOpen becomes 1 all the same. Its user calls
 * handle->port->Open(handle->port).
 *
 * @param handle     printer handle, owned by the caller.
 * @param descriptor port descriptor or device URI.
 * @return as DiskPortOpen, or a code of a serial port's Open.
 */
VEXO_API int32_t ScannerGunPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/**
 * Sets the print width and makes the printer store it. Blocks for at most two writes and two reads of the port, and on
 * TCP for reconnecting to a printer that dropped the connection.
 *
 * Do not use the port on another thread meanwhile, and call it while job monitoring is off: events arrive on the same
 * connection and would be taken for the answers.
 *
 * @param handle printer handle with an open port.
 * @param width  width in dots; only the low 16 bits are sent.
 * @retval VEXO_OK the printer stored the width.
 * @retval VEXO_ERROR_IO_READ the printer did not confirm with exactly one zero byte.
 * @return otherwise a handle code, or the port's own code of a failed write.
 * @throws std::bad_alloc (a C++ exception) out of memory; the width may have been sent.
 */
VEXO_API int32_t SetPrintWidth(VexoPrinterHandle* handle, uint32_t width);

/**
 * Asks the printer for its print width. Restrictions as for SetPrintWidth.
 *
 * Compatibility: a read that ends without an error but not with two bytes (an aborted port, a reconnection, a longer
 * USB packet) gives VEXO_OK with *width untouched. Set *width to an impossible value before the call.
 *
 * @param handle printer handle with an open port.
 * @param width  receives the width in dots, 0..65535; not null.
 * @return VEXO_OK, a handle code, or the port's own code of a failed write or read (VEXO_ERROR_IO_READ_TIMEOUT: no
 *         answer).
 * @throws std::bad_alloc (a C++ exception) out of memory; nothing was sent.
 */
VEXO_API int32_t GetPrintWidth(VexoPrinterHandle* handle, uint32_t* width);

/*
 * Job monitor.
 *
 * A monitor object listens to one printer on a thread of its own. The host tags each print job with a task number
 * (SetPrintTaskId), the printer reports when a tagged job starts and ends, and the events reach the host through
 * callbacks or, without any, through GetStatusReport:
 *
 *   monitor = GetReprintMonitorObj(); RegisterPrinter(monitor, &printer); AddReprintMonitorFun(monitor, f, &id);
 *   OpenReprintMonitorWork(monitor); SetPrintTaskId(monitor, 7); ... print ... ; CloseReprintMonitorWork(monitor);
 *   DestroyReprintMonitorObj(monitor);
 *
 * Threads: the functions may be called from any thread, also from a callback (except DestroyReprintMonitorObj), but not
 * from a DllMain. Destroy all monitors before unloading the library; at the end of the process nothing is needed.
 *
 * Codes of all functions: VEXO_ERROR_MONITOR_PARAMETER for a null argument, VEXO_ERROR_OUT_OF_MEMORY. A pointer that is
 * not a monitor object, or no longer one, is not detected. Failures are stored for GetLastErrorCode unless said
 * otherwise.
 *
 * The *sending codes* of functions that send a command: the handle codes (no printer registered: VEXO_ERROR_HANDLE),
 * VEXO_ERROR_IO_WRITE_TIMEOUT after two attempts, or any other code of the port's write. If a port object of the host's
 * own throws an exception, reading gives VEXO_ERROR_IO, and writing the result of the monitor's last operation, which
 * may be VEXO_OK.
 *
 * Answers: anything that arrives ends a wait for one, also a job event; on a busy printer, ask again after
 * VEXO_ERROR_MONITOR_NO_ANSWER. Waits are counted in polls of the printer, 20 ms apart. A poll takes no time on TCP and
 * up to 100 ms on a device file, so a read timeout of 1000 ms lasts about 1 s on TCP and up to 6 s on USB.
 *
 * Events are kept until they are taken; of unrequested replies, the newest 1,024.
 *
 * A printer that disappears is not reported: events stop, and commands may fail. On a network the next command connects
 * again. A printer that was switched off has forgotten that monitoring was on: call OpenReprintMonitorWork again.
 */

/** Job events of MonitorCallback and GetStatusReport. */
enum VexoJobEvent {
  VEXO_JOB_STARTED = 1, /**< A tagged job started. */
  VEXO_JOB_ENDED = 2    /**< It ended; the event has a value. */
};

/** Protocol families of printers, for SelectSDKRepintType. */
enum VexoPrinterFamily {
  VEXO_FAMILY_GS = 0, /**< GS ( H commands, and replies that begin with 0x37. */
  VEXO_FAMILY_V1 = 1  /**< V1 commands and "report" frames. */
};

/** Modes of ResetPrinterInteriorId. */
enum VexoTaskReset {
  VEXO_RESET_WITHOUT_ANSWER = 0, /**< Do not wait for the printer's answer. */
  VEXO_RESET_AWAIT_ANSWER = 1    /**< Wait for it. */
};

/** Lowest task number of a job. */
#define VEXO_TASK_LOWEST 1
/** Highest task number of a job. */
#define VEXO_TASK_HIGHEST 9999

/** A monitor object; made by GetReprintMonitorObj, freed by DestroyReprintMonitorObj. */
typedef struct CVEXOPrinterReadHelper CVEXOPrinterReadHelper;

/**
 * Called for each job event.
 *
 * Runs on the reader thread, or on a thread of the host that waits for a reply in a job monitor function. Other
 * threads' calls on the monitor wait meanwhile: do not wait for them in a callback. It may call the job monitor
 * functions except DestroyReprintMonitorObj; if one of them waits for a reply, callbacks may run nested, up to seven
 * deep. Exceptions are dropped.
 *
 * @param event  a VexoJobEvent.
 * @param taskId task number of the job.
 * @param value  32-bit value that the printer sends with VEXO_JOB_ENDED; 0 at a start.
 */
typedef void (*MonitorCallback)(int32_t event, int32_t taskId, uint32_t value);

/**
 * Makes a monitor object and starts its reader thread, which sleeps until monitoring is switched on.
 *
 * @return the object, owned by the caller; null if there is no memory or no thread for it (stored:
 *         VEXO_ERROR_MONITOR_OUT_OF_MEMORY).
 */
VEXO_API CVEXOPrinterReadHelper* GetReprintMonitorObj(void);

/**
 * Removes all callbacks, ends the reader thread and frees the object. Waits for running callbacks and for the thread:
 * up to 100 ms and a poll of the printer (VEXO_FAMILY_GS: up to the read timeout). No other thread may use the object
 * any more. The printer is not told: call CloseReprintMonitorWork first.
 *
 * @param monitor the monitor object, or null.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null.
 * @throws std::system_error (a C++ exception, "resource deadlock would occur") in a callback on the reader thread: the
 *         callbacks are removed and the thread ends, but another thread must still destroy the object.
 */
VEXO_API int32_t DestroyReprintMonitorObj(CVEXOPrinterReadHelper* monitor);

/**
 * Binds a printer to the monitor. The handle is borrowed and must stay valid, with its port open, as long as the
 * monitor exists; the monitor never opens or closes the port.
 *
 * @param monitor the monitor object.
 * @param handle  printer handle with an open port, owned by the caller.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null; nothing changes.
 * @retval VEXO_ERROR_HANDLE not a printer handle; the monitor then has no printer.
 * @retval VEXO_ERROR_IO_NOT_OPEN the port is not open; the monitor then has no printer.
 */
VEXO_API int32_t RegisterPrinter(CVEXOPrinterReadHelper* monitor, VexoPrinterHandle* handle);

/**
 * Chooses the protocol family; call it before OpenReprintMonitorWork. With VEXO_FAMILY_GS the monitor itself asks for
 * the printer's status at the end of each job; that question goes into the data of the next job, if that is being sent.
 *
 * @param monitor the monitor object.
 * @param type    a VexoPrinterFamily; VEXO_FAMILY_V1 until set.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null, or another type; nothing changes.
 */
VEXO_API int32_t SelectSDKRepintType(CVEXOPrinterReadHelper* monitor, uint32_t type);

/**
 * Compatibility: stores a delay time, on which nothing depends.
 *
 * @param monitor      the monitor object.
 * @param milliseconds any value; 100 until set.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null.
 */
VEXO_API int32_t SetDelayTime(CVEXOPrinterReadHelper* monitor, int64_t milliseconds);

/**
 * Sets how long a function waits for the printer's reply.
 *
 * @param monitor      the monitor object.
 * @param milliseconds the limit, in steps of 20 ms; 1000 until set. Below 20: one poll.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null.
 */
VEXO_API int32_t SetReadTimeOut(CVEXOPrinterReadHelper* monitor, int64_t milliseconds);

/**
 * Sets the reader thread's pause between two polls of the printer, from the next pause on.
 *
 * @param monitor      the monitor object.
 * @param milliseconds the pause; 100 until set. 0 keeps the thread busy. Compatibility: only the low 32 bits count,
 *                     unsigned.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null.
 */
VEXO_API int32_t SetPollingTime(CVEXOPrinterReadHelper* monitor, int64_t milliseconds);

/**
 * Switches job monitoring on in the printer, which does not confirm it, and lets the reader thread listen.
 *
 * @param monitor the monitor object.
 * @return VEXO_OK or a sending code; monitoring then stays as it was.
 */
VEXO_API int32_t OpenReprintMonitorWork(CVEXOPrinterReadHelper* monitor);

/**
 * Switches job monitoring off and drops all events, received bytes and task numbers. With VEXO_FAMILY_GS it first waits
 * for 300 ms.
 *
 * @param monitor the monitor object.
 * @return VEXO_OK or a sending code; monitoring then stays as it was, and nothing is dropped.
 */
VEXO_API int32_t CloseReprintMonitorWork(CVEXOPrinterReadHelper* monitor);

/**
 * Tells whether job monitoring is on: asks the printer (VEXO_FAMILY_V1) or the monitor itself (VEXO_FAMILY_GS).
 *
 * @param monitor      the monitor object.
 * @param buffer       receives "on" or "off", as much as fits. Compatibility: without a terminating zero; pass a zeroed
 *                     buffer of at least 4 bytes.
 * @param bufferLength size of the buffer in bytes.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null, or bufferLength 0.
 * @retval VEXO_ERROR_MONITOR_NO_ANSWER none within 200 ms; returns after up to 400 ms.
 * @retval VEXO_ERROR_MONITOR_ANSWER_TOO_LONG the printer's answer, mostly two bytes, is longer than the buffer; nothing
 *         is written.
 * @return otherwise VEXO_OK or a sending code.
 */
VEXO_API int32_t QueryReprintMonitorWork(CVEXOPrinterReadHelper* monitor, char* buffer, int32_t bufferLength);

/**
 * Takes the oldest job event that no callback received; does not ask the printer. An answer that another thread waits
 * for is dropped.
 *
 * Compatibility: only *status tells task 999 from "no event": set *status to 0 before the call.
 *
 * @param monitor the monitor object.
 * @param status  receives a VexoJobEvent, and nothing without an event; not null.
 * @param value   receives the complement of the event's value for VEXO_JOB_ENDED, otherwise nothing; may be null.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null.
 * @retval VEXO_MONITOR_NO_EVENT no event (stored), or one of the other protocol family (not stored).
 * @return otherwise the task number.
 */
VEXO_API int32_t GetStatusReport(CVEXOPrinterReadHelper* monitor, uint16_t* status, uint32_t* value);

/**
 * Gives the next job a task number. No reply is awaited. Only VEXO_ERROR_MONITOR_PARAMETER is stored.
 *
 * @param monitor the monitor object.
 * @param taskId  VEXO_TASK_LOWEST to VEXO_TASK_HIGHEST.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null, or a number out of range.
 * @retval VEXO_ERROR_MONITOR_NOT_OPEN monitoring is off.
 * @return otherwise VEXO_OK or a sending code.
 */
VEXO_API int32_t SetPrintTaskId(CVEXOPrinterReadHelper* monitor, int32_t taskId);

/**
 * Makes the printer drop its pending tasks. Waits for the answer for up to three times the read timeout.
 *
 * @param monitor the monitor object.
 * @retval VEXO_ERROR_MONITOR_NO_ANSWER no answer.
 * @retval VEXO_ERROR_MONITOR_NOT_OPEN monitoring is off (not stored).
 * @return otherwise VEXO_OK or a sending code.
 */
VEXO_API int32_t SetClearPrintTask(CVEXOPrinterReadHelper* monitor);

/**
 * Reads the printer's reprint status, whether monitoring is on or off. Waits for at most the read timeout.
 *
 * @param monitor the monitor object.
 * @param status  receives the complement of the value that the printer reports; untouched on failure.
 * @retval VEXO_ERROR_MONITOR_NO_ANSWER no answer.
 * @return otherwise VEXO_OK or a sending code.
 */
VEXO_API int32_t GetDeviceStatus(CVEXOPrinterReadHelper* monitor, uint32_t* status);

/**
 * Feeds paper to the next form, whether monitoring is on or off. No answer is awaited.
 *
 * @param monitor the monitor object.
 * @return VEXO_OK or a sending code.
 */
VEXO_API int32_t SetPaperFeed(CVEXOPrinterReadHelper* monitor);

/**
 * Makes the printer number its tasks anew.
 *
 * @param monitor the monitor object.
 * @param mode    VEXO_RESET_AWAIT_ANSWER waits as SetClearPrintTask. Compatibility: VEXO_RESET_WITHOUT_ANSWER always
 *                gives VEXO_ERROR_MONITOR_NO_ANSWER.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null, or another mode.
 * @retval VEXO_ERROR_MONITOR_NO_ANSWER no answer.
 * @retval VEXO_ERROR_MONITOR_NOT_OPEN monitoring is off (not stored).
 * @return otherwise VEXO_OK or a sending code.
 */
VEXO_API int32_t ResetPrinterInteriorId(CVEXOPrinterReadHelper* monitor, uint32_t mode);

/**
 * Listens to a printer, without a monitor object, and returns what it says about finished tasks: the texts of its V2
 * replies, percent escapes decoded, separated by "|". Blocks for timeMs and at most one read more. No monitor may
 * listen to the printer meanwhile. Stores nothing for GetLastErrorCode.
 *
 * @param handle     printer handle with an open port.
 * @param timeMs     milliseconds to listen; 0 or less: one read.
 * @param text       receives the texts, only if the result is VEXO_OK and something arrived; all of it is zeroed first.
 *                   Compatibility: no terminating zero is added; pass one byte more than you expect.
 * @param textLength size of text in bytes.
 * @param length     receives the length of the texts in bytes, under the same condition.
 * @retval VEXO_OK something arrived, possibly without any text; but see below.
 * @retval VEXO_ERROR_HANDLE null handle, or not a printer handle.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null text or length.
 * @retval VEXO_ERROR_BUFFER_TOO_SMALL text is too small; what arrived is lost.
 * @retval VEXO_ERROR_PARAMETER a text ends within a percent escape; what arrived is lost.
 * @return if nothing arrived, the result of the last read: VEXO_ERROR_IO_NOT_OPEN, VEXO_ERROR_IO_READ_TIMEOUT, ...,
 *         possibly VEXO_OK.
 */
VEXO_API int32_t GetPrinterTaskOverInfo(VexoPrinterHandle* handle, int32_t timeMs, char* text, uint32_t textLength,
                                        uint32_t* length);

/**
 * Adds a callback. Events go to all callbacks, in the order of their ids; as long as there is one, they are not kept
 * for GetStatusReport. Waits while another thread delivers events.
 *
 * @param monitor  the monitor object.
 * @param callback the function to call, on the thread that receives a report; not null.
 * @param id       receives the callback's id, which is its address: adding a function twice keeps it once.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null.
 */
VEXO_API int32_t AddReprintMonitorFun(CVEXOPrinterReadHelper* monitor, MonitorCallback callback, int64_t* id);

/**
 * Removes a callback. On return the callback is not running and will not be called again, unless the caller is the
 * thread that delivers.
 *
 * @param monitor the monitor object.
 * @param id      the callback's id; an unknown one is no failure.
 * @retval VEXO_ERROR_MONITOR_PARAMETER null.
 */
VEXO_API int32_t RemoveReprintMonitorFun(CVEXOPrinterReadHelper* monitor, int64_t id);

/*
 * Downloads.
 *
 * Each function sends a file into the printer and returns when all is done: seconds to many minutes later. One download
 * runs at a time in a process. File names are in the system's ANSI code page (files are opened with the C library);
 * files of 2 GiB and more count as empty.
 *
 * No other thread may use the handle meanwhile, nor a job monitor that is registered on it: it would take the printer's
 * answers. DownloadFMWImg, and downloadYModem with a descriptor, replace the handle's port object: the old one is
 * closed, and freed if the library made it. A download that fails leaves the port as it then is, in most cases open.
 *
 * A trace is written to the standard output of the process and flushed at once, mostly in lines: "package 12", or
 * "failed:Enter Mode Failed...". It is the only detail of a failure beyond the code. The quoted texts below are from
 * it. Compatibility: "error handle.", "error parameters.", "Openfail" and the texts of an empty file have no line end
 * and are the last of their download.
 *
 * The *download codes*, common to all, in the order of the checks:
 *
 *   VEXO_ERROR_HANDLE              null handle or wrong magic ("error handle.")
 *   VEXO_ERROR_IO_NOT_OPEN         port not open ("error handle.")
 *   VEXO_ERROR_PARAMETER           no file name, or the file cannot be opened ("error parameters."); or it cannot be
 *                                  read to its end, or became shorter ("failed:Read File Failed...")
 *   VEXO_ERROR_DOWNLOAD_EMPTY      empty file ("failed:file is null.", of downloadFile with "file is null." behind it;
 *                                  of a font "failed: The file is empty.")
 *   VEXO_ERROR_OUT_OF_MEMORY       the file, unless it is a firmware image, is held in memory
 *   VEXO_ERROR_DOWNLOAD_CANCELLED  by setCancel ("Cancel...")
 *
 * A handle that becomes unusable later gives the handle codes at the mode switch, at a firmware write and at a restart;
 * elsewhere the code of the answer that then fails.
 *
 * An exception of a progress callback ends the download: everything is released, and it reaches the caller
 * (std::bad_alloc becomes VEXO_ERROR_OUT_OF_MEMORY).
 */

/** Called with the progress of a download, 0 to 100 percent, on the thread that called the download. */
typedef void (*DownloadProgressCallback)(int32_t percentage);

/**
 * Cancels the running download, from any thread. It ends at its next check with VEXO_ERROR_DOWNLOAD_CANCELLED, or
 * VEXO_ERROR_DOWNLOAD_BAD_ANSWER while a package of a file or a font awaits its answer.
 *
 * There is no check while YModem connects to the loader (20 attempts), while a firmware body awaits its answer (some
 * minutes), and after the last package or block: the download then succeeds. Each download starts uncancelled.
 */
VEXO_API void setCancel(void);

/**
 * Downloads a file in packages of 2048 bytes, each with a checksum and confirmed by the printer, then restarts the
 * printer and closes the port; open it again when the printer is back. All failures leave the port open.
 *
 * @param handle   printer handle with an open port.
 * @param fileName path of the file.
 * @param reserved not used.
 * @param progress called with 0, before each further package with the share confirmed, and with 100 at the end; may be
 *                 null.
 * @retval VEXO_ERROR_DOWNLOAD_MODE the printer did not enter its download mode.
 * @retval VEXO_ERROR_DOWNLOAD_BAD_ANSWER a package was not confirmed in four attempts, or cancelled meanwhile.
 * @return otherwise VEXO_OK, a download code, or the port's own code of a failed write of the mode switch.
 */
VEXO_API int32_t downloadFile(VexoPrinterHandle* handle, const char* fileName, const void* reserved,
                              DownloadProgressCallback progress);

/** Largest package of a font. */
#define VEXO_FONT_PACKET_MAX 65535

/**
 * Downloads a font as downloadFile does a file, with packages of a size of the caller's choice.
 *
 * @param handle     printer handle with an open port.
 * @param packetSize data bytes in a package, 1 to VEXO_FONT_PACKET_MAX. The last package is filled up with bytes of the
 *                   one before.
 * @param fileName   path of the file.
 * @param reserved   not used.
 * @param progress   as in downloadFile.
 * @retval VEXO_ERROR_PARAMETER bad packetSize, after the handle checks; also as a download code.
 * @return otherwise as downloadFile, or the code of a failed write of the restart command ("Reboot device failed...").
 */
VEXO_API int32_t DownloadFontFile(VexoPrinterHandle* handle, int32_t packetSize, const char* fileName,
                                  const void* reserved, DownloadProgressCallback progress);

/**
 * Downloads a firmware image, segment by segment: each is a header of 76 bytes, whose bytes 4 to 7 give the length of
 * the body that follows (little-endian). The printer enters its update mode and comes back as another device; it is
 * connected to anew before each header, and finally restarted. The handle then holds the port that descriptor names,
 * open.
 *
 * Compatibility: VEXO_OK does not mean that the printer took the image; only the trace tells. The last line of a
 * success is "Successfully restarted the device...". Otherwise it is "Openfail" (no connection; the handle then holds
 * no open port), "failed: ReadData failed..." (no answer) or "failed: ReadData error..." (refused).
 *
 * Compatibility: check images before sending them. If the last header announces a longer body than the file holds, the
 * download repeats "Successfully distributed..." until setCancel. Fewer than 76 bytes behind the last segment are sent
 * as a header, filled up with zeros, and no body follows.
 *
 * @param handle     printer handle with an open port.
 * @param fileName   path of the image.
 * @param descriptor names the port of the printer in its update mode; null is none ("Openfail"). It is first used when
 *                   the printer is in that mode already: validate it before.
 * @param progress   called with the share of the file sent as bodies, and with 100 after each body; may be null.
 * @return VEXO_OK, see above; a download code; or the code of a failed write: of the command that starts the update
 *         ("write command failed..."), of image data ("failed: WriteData failed...") or of the restart ("Reboot device
 *         failed...").
 */
VEXO_API int32_t DownloadFMWImg(VexoPrinterHandle* handle, const char* fileName, const char* descriptor,
                                DownloadProgressCallback progress);

/**
 * Downloads a file by the printer's variety of YModem-1K, restarts the printer and closes the port. The printer is told
 * the file name as given, cut to what fits the header block of 128 bytes beside the file's size.
 *
 * @param handle     printer handle with an open port.
 * @param fileName   path of the file.
 * @param descriptor names the port of the printer in its loader, tried 20 times, half a second apart; null: the printer
 *                   is in its loader already. "USB" means the USB printer with the serial number of the current port
 *                   or, if that has none, the first USB printer. The handle then holds this port, closed at the end.
 * @param progress   called with 0, before each further block with the share confirmed, and with 100; may be null.
 * @retval VEXO_ERROR_DOWNLOAD_MODE the printer did not come back in its loader; the handle holds no open port.
 * @retval VEXO_ERROR_DOWNLOAD_NO_ANSWER no answer.
 * @retval VEXO_ERROR_DOWNLOAD_BAD_ANSWER wrong answer, or a block was not confirmed.
 * @retval VEXO_ERROR_IO_WRITE a write failed.
 * @return otherwise VEXO_OK, a download code, or the port's own code of a failed write of the mode switch.
 */
VEXO_API int32_t downloadYModem(VexoPrinterHandle* handle, const char* fileName, const char* descriptor,
                                DownloadProgressCallback progress);

/*
 * USB hot-plug monitor.
 *
 * One thread for the whole process calls the registered callbacks when a USB printer is plugged in or removed (a device
 * with the interface class {28D78FAD-5A12-11D1-AE5B-0000F803A8C2}). Printers that are connected already are not
 * reported.
 *
 *   AddUSBMonitor(f, context); StartUSBMonitorThread(); ... StopUSBMonitorThread();
 *
 * Threads: any, also from a callback (except StopUSBMonitorThread), but not from a DllMain. Nothing is stored for
 * GetLastErrorCode.
 *
 * Stop the monitor before unloading the library; a running one keeps the library loaded. At the end of the process
 * nothing is needed.
 */

/** Hot-plug events of USBMonitorCallback. */
enum VexoUsbEvent {
  VEXO_USB_PLUGGED_IN = 0, /**< A USB printer was plugged in. */
  VEXO_USB_REMOVED = 1     /**< It was removed. */
};

/**
 * Called for each USB printer that is plugged in or removed.
 *
 * Runs on the monitor's thread, one call at a time, in the order of the callbacks' addresses. AddUSBMonitor,
 * RemoveUSBMonitor and StopUSBMonitorThread on other threads wait meanwhile: do not wait for them in a callback. It may
 * call the first two itself. Exceptions are dropped.
 *
 * @param context as given to AddUSBMonitor.
 * @param device  instance part of the device's path, in upper case: the serial number, or a text made by the system for
 *                a device without one. Zero-terminated, in the system's ANSI code page, never empty, valid during the
 *                call.
 * @param event   a VexoUsbEvent.
 */
typedef void (*USBMonitorCallback)(void* context, const char* device, int32_t event);

/**
 * Starts the monitor's thread, unless it is running. Does not wait until the thread listens: a printer that is plugged
 * in at this moment may be missed.
 *
 * @retval VEXO_OK started; if the system does not let the thread listen, it never calls back until stopped and started
 *         again.
 * @retval VEXO_ERROR_OUT_OF_MEMORY the system has no thread or no memory for it.
 */
VEXO_API int32_t StartUSBMonitorThread(void);

/**
 * Ends the monitor's thread, waits for it and its running callbacks, and removes all callbacks: none is called any
 * more. Without a thread it only removes the callbacks.
 *
 * @return VEXO_OK.
 * @throws std::system_error (a C++ exception, "resource deadlock would occur") in a callback: the thread ends after the
 *         callbacks, which stay registered; another thread must still stop the monitor.
 */
VEXO_API int32_t StopUSBMonitorThread(void);

/**
 * Adds a callback, whether the monitor is running or not. It stays until it is removed or the monitor is stopped.
 *
 * @param callback the function to call; adding one twice keeps it once, with the second context.
 * @param context  passed to the callback, may be null; must stay valid until the callback is removed.
 * @return the callback's address as a number; if not added, 0 for a null callback or VEXO_ERROR_OUT_OF_MEMORY.
 */
VEXO_API int64_t AddUSBMonitor(USBMonitorCallback callback, void* context);

/**
 * Removes a callback. On return the callback is not running and will not be called again, unless the caller is the
 * monitor's thread.
 *
 * @param callback the function, as given to AddUSBMonitor.
 * @return 1, also if there is no such callback.
 */
VEXO_API int32_t RemoveUSBMonitor(USBMonitorCallback callback);

/** Bytes of GetUsbDescList's buffer that are always enough for one printer. */
#define VEXO_USB_RECORD_SIZE 256

/**
 * Lists the USB printers that are connected: one record each, separated by "|", in the system's order:
 *
 *     USB,<serial>;<serial>;<name>;<ids>;<port>;<location>
 *
 * - serial: the end of the device's instance id, twice; "vexo:/dev/bus/USB/<serial>" opens the printer. For a printer
 *   without a serial number of its own, one of the system's, with "&" in it.
 * - name: the printer's model as its driver knows it.
 * - ids: "VID_1A2B&PID_0001".
 * - port: the port of the system's printer driver, "USB001"; empty if the driver is not installed.
 * - location: the socket, "PORT_#0001.HUB_#0002", upper-cased; may be empty.
 *
 * A single blank stands for a serial or a name that the system does not tell, and for each half of the ids. Texts are
 * in the code page of the calling thread. A record has at most 254 characters; the rest of its location is cut off.
 *
 * Listed, and opened by USB ports, are the maker's printers, "VID_0FE6&PID_811E"; but every device of the system's USB
 * printer class while the process's current directory holds a file "vidpid_cfg.txt", whatever its content.
 *
 * @param buffer receives the list, terminated; empty without a printer. All of it is zeroed first. Owned by the caller.
 * @param size   size of the buffer in bytes, VEXO_USB_RECORD_SIZE for each printer. Compatibility: a record that does
 *               not fit with a "|" and a terminating zero is left out silently; later ones that fit are not.
 * @retval VEXO_OK also without any printer.
 * @retval VEXO_ERROR_PARAMETER null buffer, or size below 1.
 * @retval VEXO_ERROR_IO the system does not list its devices and reports no error code; positive if it does. The list
 *         is empty.
 */
VEXO_API int32_t GetUsbDescList(char* buffer, int32_t size);

/*
 * Network printer scan.
 *
 * A scan sends one UDP datagram that asks printers who they are, and collects their answers: texts of up to 16 lines,
 * separated by CR LF. The first line is the printer's IP address, the second one its state. Printers whose state is
 * exactly "ready" become records, in the order of their answers; all other answers are dropped. A printer that answers
 * twice gives two records.
 *
 * Each address in the records is then asked once, over TCP port 9100, for VEXO_SCAN_NETWORK_MASK and VEXO_SCAN_GATEWAY,
 * dotted. Up to 16 printers are asked at a time, for 7 s in all. A record without an answer keeps the fields of its
 * answer; so does one whose first line is not a plain dotted IPv4 address: nothing else is connected to.
 *
 * The result is one text: for each record its fields, separated by ";", and a "|" behind them:
 *
 *   192.168.1.50;ready;...;...;...;...;...;...;...;...;255.255.255.0;192.168.1.1;...;...;...;...|
 *
 * Missing and empty lines give empty fields; lines after the 16th are dropped. A record has at most 255 characters
 * before its "|"; the rest is cut off, separators included. Texts are as they came, in no particular code page. Do not
 * trust them: anybody on the network can answer, also with ";", "|", control characters or another machine's address.
 *
 * Compatibility: an answer shorter than the one received before it ends in the remainder of that one, unless it ends in
 * a zero byte of its own; an answer counts up to its first zero. An empty datagram, one of more than 2048 bytes and a
 * network error end the waiting early; the answers until then count.
 */

/** Fields of a scan record that have a fixed meaning; printers choose the others. */
enum VexoScanField {
  VEXO_SCAN_ADDRESS = 0,       /**< IP address of the printer. */
  VEXO_SCAN_STATE = 1,         /**< "ready". */
  VEXO_SCAN_NETWORK_MASK = 10, /**< Network mask, asked for over TCP. */
  VEXO_SCAN_GATEWAY = 11,      /**< Gateway, asked for over TCP. */
  VEXO_SCAN_FIELD_COUNT = 16   /**< Number of fields of a record. */
};

/** Bytes of a scan's buffer that are always enough for one printer. */
#define VEXO_SCAN_RECORD_SIZE 256

/**
 * Scans for receipt printers, on UDP port 3289. Blocks for the whole time limit, and then for the questions over TCP,
 * at most 7 s. Several threads may scan at the same time.
 *
 * The local port is 3289, too; if that is taken, another one, and printers that always answer to 3289 are missed.
 *
 * @param timeLimitMs how long to wait for answers, in milliseconds. Below 1: the question is sent, but no answer
 *                    is awaited.
 * @param buffer      receives the terminated result, only if that is VEXO_OK. Owned by the caller.
 * @param size        size that the text may have without its terminating zero, VEXO_SCAN_RECORD_SIZE for each printer.
 *                    Compatibility: the buffer must have ONE BYTE MORE than that, because a text of exactly `size`
 *                    bytes has its zero at buffer[size]. 0 or less is too small for any record.
 * @param target      IPv4 address that the question goes to, mostly a broadcast one: "192.168.1.255". A text that is no
 *                    address stands for "255.255.255.255", everybody on the local network.
 * @retval VEXO_OK printers were found, and all are in the buffer.
 * @retval VEXO_ERROR_PARAMETER null target or buffer; nothing is sent.
 * @retval VEXO_ERROR_BUFFER_TOO_SMALL the result is longer than size; scan again with a larger buffer.
 * @retval VEXO_ERROR_NO_PRINTER no printer was ready in time, or the network could not be used.
 * @retval VEXO_ERROR_OUT_OF_MEMORY out of memory.
 */
VEXO_API int32_t ScanPos(int64_t timeLimitMs, char* buffer, int32_t size, const char* target);

/**
 * Scans for label printers: as ScanPos, on UDP port 6000.
 *
 * The question contains the first IPv4 address of this computer; looking that up does not count as waiting. Answers
 * that contain "printer_message" are dropped: a broadcast comes back to its sender.
 *
 * @param timeLimitMs how long to wait for answers, in milliseconds.
 * @param buffer      receives the result, as in ScanPos.
 * @param size        size that the text without its terminating zero may have, as in ScanPos.
 * @param target      IPv4 address that the question goes to.
 * @return as ScanPos.
 */
VEXO_API int32_t ScanLabel(int64_t timeLimitMs, char* buffer, int32_t size, const char* target);

/**
 * Compatibility: would scan for printers by SNMP, which this library does not do.
 *
 * @return VEXO_ERROR_NOT_SUPPORTED_PRINTER.
 */
VEXO_API int32_t ScanSnmp(void);

#ifdef __cplusplus
}
#endif

#endif /* VEXO_EXTEND_H_ */
