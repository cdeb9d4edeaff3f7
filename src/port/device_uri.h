// Device URIs, the normal form of every port name: "vexo:/dev/bus/TYPE/DEVICE?key=value+key=value".
#ifndef VEXO_PORT_DEVICE_URI_H_
#define VEXO_PORT_DEVICE_URI_H_

#include <cstddef>
#include <cstdint>

namespace vexo {

inline constexpr char kUriScheme[] = "vexo:/dev/bus/";
inline constexpr size_t kUriSchemeLength = sizeof(kUriScheme) - 1;
inline constexpr size_t kMaxUriLength = 255;
inline constexpr size_t kUriBufferSize = kMaxUriLength + 1;
inline constexpr int32_t kMaxUriParameters = 8;

// A parsed URI. The pointers point into `text`, so the record can be neither copied nor moved.
struct DeviceUri {
  struct Parameter {
    const char* key;
    const char* value;
  };

  DeviceUri() = default;
  DeviceUri(const DeviceUri&) = delete;
  DeviceUri& operator=(const DeviceUri&) = delete;

  char text[kUriBufferSize] = {};
  const char* device = nullptr;
  const char* type = nullptr;
  Parameter params[kMaxUriParameters] = {};
  int32_t count = 0;
};

// Splits `text` into `uri`. Returns VEXO_ERROR_IO_SETTING when it is null or longer than 255 characters,
// VEXO_ERROR_PARAMETER for a syntax error; the contents of the record are then undefined.
int32_t ParseDeviceUri(DeviceUri* uri, const char* text);

// Formats the URI, zero-terminated. Returns VEXO_ERROR_BUFFER_TOO_SMALL when it does not fit into `size` bytes; `out`
// then holds the pieces that fit (nothing is written when size is below 1).
int32_t FormatDeviceUri(const DeviceUri& uri, char* out, int32_t size);

// Returns the value of the first parameter whose key equals `key` exactly, or null.
const char* FindUriParameter(const DeviceUri& uri, const char* key);

// Appends "?key=value", or "+key=value" after an earlier parameter, to a text in a buffer of 256 bytes. Always returns
// VEXO_OK.
//
// Compatibility: the text is cut off at the end of the buffer.
int32_t AppendUriParameter(char* uri, const char* key, const char* value);

// Returns the VexoPortKind of a TYPE, or VEXO_ERROR_NOT_SUPPORTED_PRINTER.
int32_t SelectPortKind(const char* type);

}  // namespace vexo

#endif  // VEXO_PORT_DEVICE_URI_H_
