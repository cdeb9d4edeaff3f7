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
 * Gives the latest failure that a job monitor function stored, on whatever thread it ran; 0 before the first one.
 * Neither reading nor a success resets it. The other functions of the library do not touch it.
 *
 * @return a code of error.h, or a positive error code of the system.
 */
VEXO_API int32_t GetLastErrorCode(void);

/**
 * Opens a port on the disk interface of a USB printer and puts it into a printer handle.
 *
 * The device is found by the rules of printer.h for opening USB printers. Beside its own identifiers those of the
 * device above it count: a disk in a printer is the printer's, and vid, pid and DEVICE may be those of the printer; its
 * location is the printer's, too, unless it has one of its own. So
 * disks of anybody else are never opened, unless a vidpid_cfg.txt lets every device through (GetUsbDescList).
 * "location" and "deviceid" are added to the port's URI, but no "sn".
 *
 * A port object that the handle already holds is closed first (and freed, when the library made it), portOpen becomes
 * 0 and port NULL. After a failure to make the new port object, port stays NULL: opening "" (-301) is therefore the
 * way to give a port object back. When only the opening of the device failed, the handle keeps the new, closed port
 * object with portOpen 0: call the function again later.
 *
 * On USB the object's own Open looks for a printer, whatever the function looked for. So a host opens a USB printer
 * without the SDK's main library: any of these functions makes the port object, -372 or not; then the host calls the
 * object's Close and Open and sets portOpen to 1.
 *
 * Several threads may open ports into one handle: the one that is put into it last stays there, and each of the others
 * is closed; who opened it gets -6 or -309 for what it does with it then.
 *
 * Give ports back before the library is unloaded: devices that are open then stay so until the process ends. The driver
 * of a Bluetooth port stays in memory, some hundred bytes for each port.
 *
 * @param handle     printer handle record, owned by the caller.
 * @param descriptor port descriptor ("USB", "NET,192.168.1.100,9100", "LPT1") or device URI
 *                   ("vexo:/dev/bus/NET/DEVICE?ip=192.168.1.100+port=9100"), see printer.h; at most 255 characters
 *                   count.
 * @return 0 and portOpen 1; -6 bad handle; -301 null or malformed text, or a descriptor of unknown kind; -1 a URI that
 *         has no device or no last value once the parameter without a "=" that ends it is left out; -4 a URI of
 *         unknown TYPE, or a kind of port without a driver; -351, -356 bad speed or flow control of a serial port; -2
 *         or -9 out of memory; -372 no such USB device, or not a port on USB; -300 the system does not list its devices
 *         and gives no error; positive: the system's error.
 */
VEXO_API int32_t DiskPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/**
 * Opens a port on the imaging (scanner) interface of a USB device; otherwise as DiskPortOpen.
 *
 * @param handle     printer handle record, owned by the caller.
 * @param descriptor port descriptor or device URI.
 * @return as DiskPortOpen.
 */
VEXO_API int32_t ScannerPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/**
 * Puts a port into a printer handle: a scanner gun on USB or on a serial line is opened; a port of any other kind is
 * only made, not opened, while portOpen becomes 1 all the same: its user calls handle->port->Open(handle->port). A gun
 * on USB is looked for among input devices, then ports and modems; a failure is that of the last of these searches.
 * Otherwise as DiskPortOpen.
 *
 * @param handle     printer handle record, owned by the caller.
 * @param descriptor port descriptor or device URI.
 * @return as DiskPortOpen; also the codes of a serial port's Open.
 */
VEXO_API int32_t ScannerGunPortOpen(VexoPrinterHandle* handle, const char* descriptor);

/**
 * Sets the print width and makes the printer store it: a setkey command for key 0x00CC, whose acknowledgement is read
 * and not judged, then the command "save_param_zone". Blocks for at most the port's time limits of two writes and two
 * reads; on TCP also for connecting again whenever the printer has dropped the connection. Not locked: do not use the
 * port on another thread meanwhile. A printer whose job monitoring is on sends its events on the same connection, where
 * they would be taken for the answers: change and read settings while monitoring is off.
 *
 * @param handle printer handle with an open port.
 * @param width  width in dots; only the low 16 bits travel.
 * @return 0 stored; -6, -309 bad or closed handle when a command is to be sent; -331 the printer did not confirm the
 *         storing with exactly one zero byte; any other code: a write failed, unchanged from the port (-322, positive,
 *         ...).
 * @throws std::bad_alloc (a C++ exception) when there is no memory for a command; nothing has been sent then, or
 *         only the setkey command.
 */
VEXO_API int32_t SetPrintWidth(VexoPrinterHandle* handle, uint32_t width);

/**
 * Asks the printer for its print width. Not locked, and not for a connection with job monitoring on, as SetPrintWidth.
 *
 * @param handle printer handle with an open port.
 * @param width  receives the width in dots (0..65535) when the printer answered with two bytes; untouched otherwise.
 *               Must not be null.
 * @return 0; -6, -309 bad or closed handle; any other code: the write or the read failed, unchanged from the port
 *         (-332 no answer, ...). A read that ended without error but did not bring exactly 2 bytes (an aborted port,
 *         a printer that reconnected, a longer packet on USB) gives 0 with *width untouched: set it to an impossible
 *         value before the call.
 * @throws std::bad_alloc (a C++ exception) when there is no memory for the command; nothing has been sent then.
 */
VEXO_API int32_t GetPrintWidth(VexoPrinterHandle* handle, uint32_t* width);

/*
 * Job monitor.
 *
 * A monitor object listens to one printer on a thread of its own. The host tags each print job with a task number
 * (SetPrintTaskId), the printer reports when a tagged job starts and ends, and the events reach the host through
 * callbacks or, when there is none, through GetStatusReport. In short:
 *
 *   monitor = GetReprintMonitorObj(); RegisterPrinter(monitor, &printer); AddReprintMonitorFun(monitor, f, &id);
 *   OpenReprintMonitorWork(monitor); SetPrintTaskId(monitor, 7); ... print ... ; CloseReprintMonitorWork(monitor);
 *   DestroyReprintMonitorObj(monitor);
 *
 * The functions may be called from any thread, also from a callback (but for DestroyReprintMonitorObj), but none of
 * them from a DllMain. A null argument gives -7002. Failures are stored for GetLastErrorCode unless said otherwise;
 * success leaves the stored value alone. A pointer that is no monitor object, or one that is destroyed already, cannot
 * be detected. -9 is returned when memory runs out. When a port object of the host's own throws an exception, reading
 * gives -300, and writing the result of what the monitor did last, which may be 0.
 *
 * Destroy all monitors before the library is unloaded: the thread of one that is left would run on in code that is
 * gone. At the end of the process nothing needs to be done.
 *
 * Replies that nobody asked for are kept until an answer is awaited, the newest 1,024 of them; events are kept until
 * they are taken.
 *
 * A printer that goes away is not reported: events stop, and commands may fail. On a network the next command connects
 * again; a printer that was switched off has forgotten that monitoring was on: call OpenReprintMonitorWork again.
 *
 * The functions that ask the printer wait for the answer once (QueryReprintMonitorWork, GetDeviceStatus) or twice
 * (SetClearPrintTask, ResetPrinterInteriorId). Whatever arrives ends a wait, also job events: on a busy printer -7003
 * may only mean that it is to be asked again.
 *
 * Waiting times count looks at the printer, 20 ms apart: a look takes no time on TCP and up to 100 ms on a port to a
 * device file, so the default read timeout of 1000 ms lasts about 1 s on TCP and up to 6 s on USB.
 */

/** A monitor object; made by GetReprintMonitorObj, freed by DestroyReprintMonitorObj. */
typedef struct CVEXOPrinterReadHelper CVEXOPrinterReadHelper;

/**
 * Told of each job that starts (event 1) or ends (event 2), with its task number and the 32-bit value of an end (0 at a
 * start).
 *
 * Runs on whichever thread received the report: mostly the monitor's reader thread, sometimes a thread of the host that
 * waits for a reply inside a job monitor function. Other threads' calls on the same monitor wait meanwhile: a callback
 * must not wait for a thread that makes one, nor take a lock that such a thread holds. The callback may call the job
 * monitor functions, and add and remove callbacks, but must not destroy the monitor. A function that waits for a reply
 * may receive further reports, so callbacks run once more inside the one that called it, up to seven deep; from then on
 * events wait, in their order, until the outermost callback has returned. A C++ exception that a callback throws is
 * dropped.
 */
typedef void (*MonitorCallback)(int32_t event, int32_t taskId, uint32_t value);

/**
 * Makes a monitor object and starts its reader thread, which only sleeps until monitoring is switched on.
 *
 * @return the object, owned by the caller; NULL when there is no memory or no thread for it (stored: -7020).
 */
VEXO_API CVEXOPrinterReadHelper* GetReprintMonitorObj(void);

/**
 * Removes all callbacks, ends the reader thread, waits for it and frees the object. The wait lasts for callbacks that
 * are running, for the rest of the thread's pause, at most 100 ms, and for the look at the printer under way (in family
 * 0, when a job has just ended, that is up to the read timeout). The printer is not told: close the work first. No
 * other thread may use the object any more.
 *
 * @param monitor the monitor object, or NULL.
 * @return 0; -7002 null.
 * @throws std::system_error (a C++ exception, "resource deadlock would occur") on the reader thread itself, that is
 *         inside a callback; the callbacks are removed and the thread ends, but the object is to be destroyed by
 *         another thread all the same. (A callback that runs on another thread is not found out.)
 */
VEXO_API int32_t DestroyReprintMonitorObj(CVEXOPrinterReadHelper* monitor);

/**
 * Binds a printer to the monitor. The handle is borrowed: it must stay valid, with its port open, for the monitor's
 * lifetime; the monitor never opens or closes it.
 *
 * @param monitor the monitor object.
 * @param handle  printer handle with an open port, owned by the caller.
 * @return 0; -7002 null, which changes nothing; -6 no printer handle, -309 port not open: the monitor then has no
 *         printer.
 */
VEXO_API int32_t RegisterPrinter(CVEXOPrinterReadHelper* monitor, VexoPrinterHandle* handle);

/**
 * Chooses the protocol family, before OpenReprintMonitorWork: 1 (at the start) for V1 commands and "report" frames, 0
 * for GS ( H commands and replies that begin with 0x37. In family 0 the monitor itself asks the printer for its status
 * at the end of each job: a question that comes amid the data of the next one, if that is being sent already.
 *
 * @param monitor the monitor object.
 * @param type    0 or 1.
 * @return 0; -7002 null, or a type above 1, which changes nothing.
 */
VEXO_API int32_t SelectSDKRepintType(CVEXOPrinterReadHelper* monitor, uint32_t type);

/**
 * Stores a delay time; 100 ms at the start. Nothing depends on it.
 *
 * @param monitor      the monitor object.
 * @param milliseconds any value.
 * @return 0; -7002 null.
 */
VEXO_API int32_t SetDelayTime(CVEXOPrinterReadHelper* monitor, int64_t milliseconds);

/**
 * Sets how long a function waits for the printer's reply; 1000 ms at the start. It is used in whole steps of 20 ms, one
 * look each.
 *
 * @param monitor      the monitor object.
 * @param milliseconds the limit; less than 20, or a negative time, looks once.
 * @return 0; -7002 null.
 */
VEXO_API int32_t SetReadTimeOut(CVEXOPrinterReadHelper* monitor, int64_t milliseconds);

/**
 * Sets the pause of the reader thread between two looks at the printer; 100 ms at the start. A pause that has begun
 * lasts as it was set.
 *
 * @param monitor      the monitor object.
 * @param milliseconds the pause. Only the low 32 bits count, unsigned. 0 keeps the thread busy.
 * @return 0; -7002 null.
 */
VEXO_API int32_t SetPollingTime(CVEXOPrinterReadHelper* monitor, int64_t milliseconds);

/**
 * Switches job monitoring on in the printer and lets the reader thread listen. The printer does not confirm it.
 *
 * @param monitor the monitor object.
 * @return 0; -7002 null; -6 no printer bound, -309 its port closed; -322 write timed out, twice; any other code of the
 *         port's write. After a failure, monitoring is as it was.
 */
VEXO_API int32_t OpenReprintMonitorWork(CVEXOPrinterReadHelper* monitor);

/**
 * Switches job monitoring off and forgets all events, all received bytes and the task numbers. Family 0 waits for
 * 300 ms first.
 *
 * @param monitor the monitor object.
 * @return as OpenReprintMonitorWork; after a failure, monitoring is as it was and nothing is forgotten.
 */
VEXO_API int32_t CloseReprintMonitorWork(CVEXOPrinterReadHelper* monitor);

/**
 * Tells whether job monitoring is on: asks the printer (family 1) or the monitor itself (family 0).
 *
 * @param monitor      the monitor object.
 * @param buffer       receives "on" or "off", as far as it fits, without a terminating zero: pass a zeroed buffer of
 *                     at least 4 bytes.
 * @param bufferLength its size in bytes.
 * @return 0; -7002 null or bufferLength 0; -7003 no answer within 200 ms, known after up to 400 ms; -7007 the
 *         printer's answer (two bytes, as a rule) is longer than the buffer, nothing is written then; codes of sending
 *         as in OpenReprintMonitorWork.
 */
VEXO_API int32_t QueryReprintMonitorWork(CVEXOPrinterReadHelper* monitor, char* buffer, int32_t bufferLength);

/**
 * Takes the oldest job event that no callback received. Does not ask the printer: events arrive through the reader
 * thread. An answer that another thread still waits for is dropped by this.
 *
 * @param monitor the monitor object.
 * @param status  receives 1 for a job that started, 2 for one that ended; not null.
 * @param value   receives the complement of the event's value when a job ended, and is untouched otherwise; may be
 *                null.
 * @return the task number; 999 no event; 999 without storing it, and without writing *status, for an event of the other
 *         protocol family; -7002 null. (A task with number 999 is told from "no event" by *status.)
 */
VEXO_API int32_t GetStatusReport(CVEXOPrinterReadHelper* monitor, uint16_t* status, uint32_t* value);

/**
 * Gives the next job a task number. No reply is awaited.
 *
 * @param monitor the monitor object.
 * @param taskId  1 to 9999.
 * @return 0; -7002 null, or a number out of range; not stored: -7101 monitoring is off, and the codes of sending as in
 *         OpenReprintMonitorWork.
 */
VEXO_API int32_t SetPrintTaskId(CVEXOPrinterReadHelper* monitor, int32_t taskId);

/**
 * Makes the printer drop its pending tasks, and waits for the answer: up to twice the read timeout, and once more
 * before it gives up.
 *
 * @param monitor the monitor object.
 * @return 0; -7002 null; -7003 no answer; -7101 monitoring is off (not stored); codes of sending as in
 *         OpenReprintMonitorWork.
 */
VEXO_API int32_t SetClearPrintTask(CVEXOPrinterReadHelper* monitor);

/**
 * Reads the printer's reprint status; monitoring need not be on. Waits for the read timeout at most.
 *
 * @param monitor the monitor object.
 * @param status  receives the complement of the value that the printer reports; untouched on failure.
 * @return 0; -7002 null; -7003 no answer; codes of sending as in OpenReprintMonitorWork.
 */
VEXO_API int32_t GetDeviceStatus(CVEXOPrinterReadHelper* monitor, uint32_t* status);

/**
 * Feeds paper to the next form; monitoring need not be on. No answer is awaited.
 *
 * @param monitor the monitor object.
 * @return 0; -7002 null; codes of sending as in OpenReprintMonitorWork.
 */
VEXO_API int32_t SetPaperFeed(CVEXOPrinterReadHelper* monitor);

/**
 * Makes the printer number its tasks anew.
 *
 * @param monitor the monitor object.
 * @param mode    1: waits for the answer as SetClearPrintTask. 0: does not wait and always gives -7003.
 * @return 0 (mode 1 only); -7002 null or mode above 1; -7003 no answer; -7101 monitoring is off (not stored); in mode 1
 *         codes of sending as in OpenReprintMonitorWork.
 */
VEXO_API int32_t ResetPrinterInteriorId(CVEXOPrinterReadHelper* monitor, uint32_t mode);

/**
 * Listens to a printer for a while and gives the texts of the V2 replies that arrive (what it says about finished
 * tasks), percent escapes decoded, with "|" between them. Blocks for timeMs and at most one read more. Works without a
 * monitor object; do not let one listen to the same printer meanwhile. Stores nothing for GetLastErrorCode, and a null
 * handle gives -6.
 *
 * @param handle     printer handle with an open port.
 * @param timeMs     milliseconds to listen; 0 or less reads once.
 * @param text       receives the texts; all textLength bytes are zeroed first. No terminating zero is added beyond
 *                   that: pass one byte more than is expected.
 * @param textLength size of text in bytes.
 * @param length     receives the length of the texts in bytes.
 * @return 0 something arrived, possibly without any text; -6 null handle; -7002 null text or length; -2 text is too
 *         small, -1 a text ends within a percent escape: what arrived is lost then; nothing arrived: the result of
 *         the last read (-6 no printer handle, -309 port not open, -332 silence, ..., possibly 0). text and *length are
 *         written only when something arrived and the result is 0.
 */
VEXO_API int32_t GetPrinterTaskOverInfo(VexoPrinterHandle* handle, int32_t timeMs, char* text, uint32_t textLength,
                                        uint32_t* length);

/**
 * Adds a callback. Events go to all callbacks, in the order of their ids; as long as there is one, they are not kept
 * for GetStatusReport. Waits while events are being delivered on another thread.
 *
 * @param monitor  the monitor object.
 * @param callback the function to call, from whichever thread receives a report; not null.
 * @param id       receives the callback's id, which is its address: adding a function twice keeps it once, with the
 *                 same id.
 * @return 0; -7002 null.
 */
VEXO_API int32_t AddReprintMonitorFun(CVEXOPrinterReadHelper* monitor, MonitorCallback callback, int64_t* id);

/**
 * Removes a callback. When it returns on another thread than the one that delivers, the callback is not running and
 * will not be called again.
 *
 * @param monitor the monitor object.
 * @param id      the callback's id, from AddReprintMonitorFun.
 * @return 0, also when there is no such callback; -7002 null.
 */
VEXO_API int32_t RemoveReprintMonitorFun(CVEXOPrinterReadHelper* monitor, int64_t id);

/*
 * Downloads.
 *
 * Each function sends a file into the printer and returns when all is done: seconds to many minutes later. One download
 * runs at a time in a process. Files are opened with the C library: names are in the system's ANSI code page, and
 * files of 2 GiB and more count as empty.
 *
 * What happens is written to the standard output of the process as text, flushed at once, mostly in lines: "package 12"
 * for instance, or "failed:Enter Mode Failed...". It is the only account of a failure beyond the code. "error handle.",
 * "error parameters.", "Openfail" and the texts of an empty file stand without a line end, as the last of their
 * download.
 *
 * No other thread may use the handle meanwhile, nor a job monitor that is registered on it: it would take the printer's
 * answers. DownloadFMWImg, and downloadYModem with a descriptor, replace the handle's port object: the old one is
 * closed, and freed when the library made it.
 *
 * A download that fails leaves the port as it then stands, in most cases open. Codes of all downloads, in the order of
 * the checks:
 *
 *   -6     null handle or wrong magic ("error handle."). A handle that becomes unusable later gives -6 or -309 at the
 *          mode switch, at a firmware write and at a restart; elsewhere the codes of the answers that then fail
 *   -309   port not open ("error handle."); later as -6
 *   -1     no file name, or the file cannot be opened ("error parameters."); or it cannot be read to its end, or has
 *          become shorter ("failed:Read File Failed...")
 *   -6007  empty file ("failed:file is null.", of downloadFile with "file is null." behind it, of a font "failed: The
 *          file is empty.")
 *   -9     not enough memory (the file is held in memory, except a firmware image)
 *   -6004  cancelled ("Cancel...")
 *
 * An exception that a progress callback throws ends the download: everything is given back, and it reaches the caller
 * (std::bad_alloc becomes -9).
 */

/** Told how far a download is, 0 to 100 percent, on the thread that called the download. */
typedef void (*DownloadProgressCallback)(int32_t percentage);

/**
 * Ends the running download at its next look, with -6004 (-6009 while the package of a file or a font awaits its
 * answer). From any thread. Nobody looks while YModem connects to the loader (20 attempts), while a firmware body
 * awaits its answer (up to 600 reads and 100 s of pauses). After the last package or block nobody looks any more, and
 * the download succeeds all the same. Without a running download it does nothing: each download starts uncancelled.
 */
VEXO_API void setCancel(void);

/**
 * Downloads a file in packages of 2048 bytes, each with a checksum and confirmed by the printer, then restarts the
 * printer and closes the port: open it again when the printer is back.
 *
 * @param handle   printer handle with an open port.
 * @param fileName path of the file.
 * @param reserved not used.
 * @param progress called with 0, with the share of the packages before each one that has been confirmed, and with 100
 *                 when all are; may be null.
 * @return 0; -6006 the printer did not enter its download mode; -6009 a package was not confirmed in four attempts, or
 *         cancelled meanwhile; the codes of all downloads; -322, positive, ...: the mode switch was not written,
 *         unchanged from the port. All failures leave the port open.
 */
VEXO_API int32_t downloadFile(VexoPrinterHandle* handle, const char* fileName, const void* reserved,
                              DownloadProgressCallback progress);

/**
 * Downloads a font as downloadFile does a file, with packages of a size of the caller's choice.
 *
 * @param handle     printer handle with an open port.
 * @param packetSize data bytes in a package, 1 to 65535. The last package is filled up with bytes of the one before.
 * @param fileName   path of the file.
 * @param reserved   not used.
 * @param progress   as in downloadFile.
 * @return as downloadFile; -1 also for a bad packetSize, after the handle checks; a failure to write the restart
 *         command is returned, too ("Reboot device failed...").
 */
VEXO_API int32_t DownloadFontFile(VexoPrinterHandle* handle, int32_t packetSize, const char* fileName,
                                  const void* reserved, DownloadProgressCallback progress);

/**
 * Downloads a firmware image, segment by segment: each is a header of 76 bytes, whose bytes 4 to 7 give the length of
 * the body that follows (little-endian). The printer goes into its update mode, comes back as another device, and is
 * connected to anew before each header; finally it is restarted. The handle then holds the port that descriptor names,
 * open.
 *
 * 0 does not tell that the printer took the image: when it cannot be connected to, or does not accept a header or a
 * body, the result is 0, too, and only the text tells: "Openfail", "failed: ReadData failed..." (no answer) or "failed:
 * ReadData error..." (refused). "Successfully restarted the device..." is the last line of a success. After "Openfail"
 * the handle holds no open port.
 *
 * An image whose last segment announces a longer body than the file still has never ends: once its header is accepted,
 * the download repeats "Successfully distributed..." until setCancel. Fewer than 76 bytes behind the last segment do
 * end it: they are sent as a header, filled up with zeros, and whatever the printer says to that, no body follows.
 * Check images before sending them.
 *
 * @param handle     printer handle with an open port.
 * @param fileName   path of the image.
 * @param descriptor names the port of the printer in its update mode; null is none ("Openfail"). It is looked at only
 *                   when the printer is in that mode: try out descriptors before.
 * @param progress   called with the share of body bytes sent in the size of the file, and with 100 after each body; may
 *                   be null.
 * @return 0, see above; the codes of all downloads; a write's own code: the command that starts the update ("write
 *         command failed..."), image data ("failed: WriteData failed...") or the restart ("Reboot device failed...").
 */
VEXO_API int32_t DownloadFMWImg(VexoPrinterHandle* handle, const char* fileName, const char* descriptor,
                                DownloadProgressCallback progress);

/**
 * Downloads a file by the printer's variety of YModem-1K, restarts the printer and closes the port.
 *
 * The file name travels as given; of a name that does not fit the header block of 128 bytes beside the file's size the
 * first bytes do.
 *
 * @param handle     printer handle with an open port.
 * @param fileName   path of the file.
 * @param descriptor names the port of the printer in its loader, tried 20 times, each half a second after the last
 *                   failed; "USB" stands for the USB printer with the serial number of the current port; without one,
 *                   for the first USB printer. The handle then holds this port, closed at the end. Null: the printer is
 *                   in its loader already.
 * @param progress   called with 0, with the share of blocks before each one that has been confirmed, and with 100; may
 *                   be null.
 * @return 0; -6006 the printer did not come back in its loader (the handle then holds no open port); -6008 no answer;
 *         -6009 wrong answer, or a block was not confirmed; -321 a write failed; the codes of all downloads; the
 *         write's own code: the mode switch was not written.
 */
VEXO_API int32_t downloadYModem(VexoPrinterHandle* handle, const char* fileName, const char* descriptor,
                                DownloadProgressCallback progress);

/*
 * USB hot-plug monitor.
 *
 * One thread for the whole process tells the registered callbacks when a USB printer is plugged in or removed (a device
 * with the interface class {28D78FAD-5A12-11D1-AE5B-0000F803A8C2}). Printers that are there already are not announced.
 *
 *   AddUSBMonitor(f, context); StartUSBMonitorThread(); ... StopUSBMonitorThread();
 *
 * The functions may be called from any thread, also from a callback (but for StopUSBMonitorThread); none of them from a
 * DllMain. They store nothing for GetLastErrorCode.
 *
 * Stop the monitor before the library is unloaded. Until then it holds a reference to the library, so a FreeLibrary too
 * early leaves it loaded, with the thread calling back; loading it again gives the same monitor, which can be stopped.
 * At the end of the process nothing needs to be done.
 */

/**
 * Told of each USB printer that is plugged in (event 0) or removed (event 1).
 *
 * Runs on the monitor's thread, one call at a time, in the order of the callbacks' addresses. AddUSBMonitor,
 * RemoveUSBMonitor and StopUSBMonitorThread on other threads wait until all callbacks have returned: a callback must
 * not wait for a thread that calls one of them. The callback may call them itself, but for StopUSBMonitorThread. A C++
 * exception that it throws is dropped.
 *
 * @param context as given to AddUSBMonitor.
 * @param device  instance part of the device's path, in upper case: the serial number, or a text made by the system for
 *                a device without one. Zero-terminated, in the system's ANSI code page, never empty, valid during the
 *                call.
 * @param event   0 plugged in, 1 removed.
 */
typedef void (*USBMonitorCallback)(void* context, const char* device, int32_t event);

/**
 * Starts the monitor's thread, unless it has been started and not stopped since. Does not wait until the thread
 * listens: a printer that is plugged in at this very moment may be missed.
 *
 * @return 0, also when the thread finds later that the system does not let it listen (it then never calls back; stop it
 *         before starting it anew); -9 the system has no thread or no memory for it.
 */
VEXO_API int32_t StartUSBMonitorThread(void);

/**
 * Ends the monitor's thread, waits for that (also for the callbacks that are running) and removes all callbacks: none
 * is called any more. Without a thread it only removes the callbacks.
 *
 * @return 0.
 * @throws std::system_error (a C++ exception, "resource deadlock would occur") on the monitor's thread, that is inside
 * a callback. The thread then ends after the callbacks, which stay registered; the monitor is to be stopped from
 *         another thread all the same.
 */
VEXO_API int32_t StopUSBMonitorThread(void);

/**
 * Adds a callback, whether the monitor is running or not. It stays until it is removed or the monitor is stopped.
 *
 * @param callback adding a function twice keeps it once, with the second context.
 * @param context  given to the callback; may be null. Must stay valid until the callback is removed.
 * @return the callback's address as a number; not added: 0 for a null callback, -9 out of memory.
 */
VEXO_API int64_t AddUSBMonitor(USBMonitorCallback callback, void* context);

/**
 * Removes a callback. When it returns on another thread than the monitor's, the callback is not running and will not be
 * called again.
 *
 * @param callback the function, as it was given to AddUSBMonitor.
 * @return 1, also when there is no such callback.
 */
VEXO_API int32_t RemoveUSBMonitor(USBMonitorCallback callback);

/**
 * Lists the USB printers that are connected now: one record each, separated by "|", in the system's order:
 *
 *     USB,<serial>;<serial>;<name>;<ids>;<port>;<location>
 *
 * - serial: the end of the device's instance id, twice. It opens the printer: "vexo:/dev/bus/USB/<serial>". A printer
 *   that has no serial number of its own has one of the system's, with "&" in it.
 * - name: the printer's model as its driver knows it.
 * - ids: "VID_1A2B&PID_0001".
 * - port: the port of the system's printer driver, "USB001"; empty when the driver is not installed.
 * - location: the socket, "PORT_#0001.HUB_#0002", upper-cased; may be empty.
 *
 * A single blank stands for a serial or a name that the system does not tell, and for each half of the ids. Texts are
 * in the code page of the calling thread. A record is at most 254 characters long; the rest of its location is cut off.
 *
 * Listed are the maker's printers, "VID_0FE6&PID_811E", and every device of the system's USB printer class while the
 * process's current directory has a file "vidpid_cfg.txt", whatever it says. They are what ports on USB look through,
 * too.
 *
 * @param buffer receives the list, terminated; empty when there is no printer. All of it is zeroed first. Owned by the
 *               caller; not null.
 * @param size   size of the buffer in bytes. A record that does not fit with the "|" behind it and a terminating zero
 *               is left out without a sign, later ones that do fit are not: 256 bytes a printer are always enough.
 * @return 0, also without any printer; -1 null buffer, or size below 1; positive: the system's error, -300 when it
 *         gives none: it does not list its devices, and the list is empty.
 */
VEXO_API int32_t GetUsbDescList(char* buffer, int32_t size);

/*
 * Network printer scan.
 *
 * A scan sends one UDP datagram that asks printers who they are, and collects their answers: texts of up to 16 lines,
 * separated by CR LF. The first line is the printer's IP address, the second one its state. Printers whose second line
 * is exactly "ready" become records, in the order of their answers; every other answer is dropped. A printer that
 * answers twice gives two records.
 *
 * Each address that the records name is then asked once, over TCP port 9100, for the addresses that replace fields 10
 * and 11 (dotted, "192.168.1.1") of all records that name it. At most 16 are asked at a time, and all of it ends after
 * 7 s: a record whose printer has not answered by then keeps the fields as they are. So does one whose first line is
 * not a dotted IPv4 address ("192.168.1.50", without further zeros): nothing else is connected to.
 *
 * The result is one text: for each record its 16 fields, separated by ";", and a "|" behind them:
 *
 *   192.168.1.50;ready;...;...;...;...;...;...;...;...;192.168.1.1;255.255.255.0;...;...;...;...|
 *
 * Fields are counted from 0. Lines that are missing give empty fields, so does an empty line; lines after the 16th are
 * dropped. A record has at most 255 characters before its "|", the rest is cut off, separators, too. Texts are as
 * they came, in no particular code page. Anybody on the network can send an answer: take the fields for what they are,
 * text from a stranger. They may hold ";" or "|" and look like further records, name another machine, or be meant for
 * whatever shows them.
 *
 * An answer that is shorter than the one received before it ends in the remainder of that one, unless it ends in a zero
 * byte of its own: printers that send different lengths should end theirs so. An answer counts up to its first zero. An
 * empty datagram, one of more than 2048 bytes and an error of the network end the waiting early; the answers until then
 * count.
 */

/**
 * Scans for receipt printers, on UDP port 3289.
 *
 * Blocks for the whole time limit, and then for the questions over TCP: some 20 ms for up to 16 printers that answer at
 * once, 6 s when one cannot be connected to, and 7 s at most. The scan listens on the local port 3289, too; when
 * somebody else has that one, it takes another and misses printers that answer to 3289 whatever port the question came
 * from. Several threads may scan at the same time.
 *
 * @param timeLimitMs how long to wait for answers, in milliseconds, kept to 20 ms however many arrive. Below 1: the
 *                    question is sent, but no answer is waited for, and the result is -103.
 * @param buffer      receives the result, terminated, and only when the result is 0. Owned by the caller; not null.
 * @param size        size that the text without its terminating zero may have, in bytes: the buffer must have ONE BYTE
 *                    MORE than that, because a text of exactly `size` bytes has its zero at buffer[size]. 256 bytes a
 *                    printer are always enough. 0 or less is too small for any record.
 * @param target      IPv4 address that the question goes to, as a rule a broadcast one: "192.168.1.255". A text that is
 *                    no address stands for "255.255.255.255", everybody on the local network.
 * @return 0 printers were found, and all are in the buffer; -1 null target or buffer, nothing is sent; -2 the result is
 *         longer than size: scan again with a larger buffer; -103 no printer said in time that it is ready, or the
 *         network could not be used; -9 out of memory.
 */
VEXO_API int32_t ScanPos(int64_t timeLimitMs, char* buffer, int32_t size, const char* target);

/**
 * Scans for label printers, on UDP port 6000: as ScanPos, with that port in place of 3289.
 *
 * The question tells the first IPv4 address of this computer, which the system looks up first; the time limit begins
 * when the question is sent. Answers that contain "printer_message" are dropped: a broadcast comes back to its sender.
 *
 * @param timeLimitMs how long to wait for answers, in milliseconds.
 * @param buffer      receives the result, as in ScanPos.
 * @param size        size that the text without its terminating zero may have, as in ScanPos.
 * @param target      IPv4 address that the question goes to.
 * @return as ScanPos.
 */
VEXO_API int32_t ScanLabel(int64_t timeLimitMs, char* buffer, int32_t size, const char* target);

/**
 * Would scan for printers by SNMP, which this library does not do.
 *
 * @return -4.
 */
VEXO_API int32_t ScanSnmp(void);

#ifdef __cplusplus
}
#endif

#endif /* VEXO_EXTEND_H_ */
