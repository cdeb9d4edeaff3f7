#include "port/device_uri.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "port/bounded_text.h"
#include "vexo/error.h"
#include "vexo/printer.h"

namespace vexo {
namespace {

constexpr struct {
  const char* type;
  int32_t kind;
} kPortKinds[] = {
    {"COM", VEXO_PORT_SERIAL},   {"BSP", VEXO_PORT_SERIAL},
    {"LPT", VEXO_PORT_PARALLEL}, {"USB", VEXO_PORT_USB},
    {"NET", VEXO_PORT_NET},      {"FILE", VEXO_PORT_FILE},
    {"BT", VEXO_PORT_BLUETOOTH}, {"Bluetooth", VEXO_PORT_BLUETOOTH},
    {"BUF", VEXO_PORT_BUFFER},
};

// Terminates the text at `separator` and returns the rest.
char* CutAt(char* separator) {
  *separator = '\0';
  return separator + 1;
}

// Parses the text after the "?".
//
// Compatibility: an empty list or one that ends in an empty value is rejected as a whole, while a parameter without "="
// ends the list without an error and the rest is ignored.
int32_t ParseParameters(DeviceUri* uri, char* list) {
  const size_t length = std::strlen(list);
  if (length == 0 || list[length - 1] == '=' || list[length - 1] == '?') {
    return VEXO_ERROR_PARAMETER;
  }
  for (char* next = list; next != nullptr;) {
    char* const key = next;
    char* const plus = std::strchr(key, '+');
    if (plus != nullptr) {
      *plus = '\0';
    }
    next = plus != nullptr ? plus + 1 : nullptr;

    char* const equals = std::strchr(key, '=');
    if (equals == nullptr) {
      return VEXO_OK;
    }
    if (uri->count == kMaxUriParameters) {
      return VEXO_ERROR_PARAMETER;
    }
    const char* const value = CutAt(equals);
    uri->params[uri->count++] = {key, value};
  }
  return VEXO_OK;
}

}  // namespace

int32_t ParseDeviceUri(DeviceUri* uri, const char* text) {
  uri->count = 0;
  if (text == nullptr || BoundedLength(text, kUriBufferSize) > kMaxUriLength) {
    return VEXO_ERROR_IO_SETTING;
  }
  CopyText(uri->text, sizeof(uri->text), text);
  if (std::strncmp(uri->text, kUriScheme, kUriSchemeLength) != 0) {
    return VEXO_ERROR_PARAMETER;
  }

  char* const type = uri->text + kUriSchemeLength;
  char* const slash = std::strchr(type, '/');
  if (slash == nullptr) {
    return VEXO_ERROR_PARAMETER;
  }
  char* const device = CutAt(slash);
  uri->type = type;
  uri->device = device;

  char* const question_mark = std::strchr(device, '?');
  if (question_mark == nullptr) {
    return *device != '\0' ? VEXO_OK : VEXO_ERROR_PARAMETER;
  }
  return ParseParameters(uri, CutAt(question_mark));
}

int32_t FormatDeviceUri(const DeviceUri& uri, char* out, int32_t size) {
  BoundedText text(out, static_cast<size_t>(std::max(size, 0)));
  bool fits = text.Append(kUriScheme) && text.Append(uri.type) && text.Append("/") && text.Append(uri.device);
  for (int32_t i = 0; fits && i < uri.count; ++i) {
    fits = text.Append(i == 0 ? "?" : "+") && text.Append(uri.params[i].key) && text.Append("=") &&
           text.Append(uri.params[i].value);
  }
  return fits ? VEXO_OK : VEXO_ERROR_BUFFER_TOO_SMALL;
}

const char* FindUriParameter(const DeviceUri& uri, const char* key) {
  for (int32_t i = 0; i < uri.count; ++i) {
    if (std::strcmp(uri.params[i].key, key) == 0) {
      return uri.params[i].value;
    }
  }
  return nullptr;
}

int32_t AppendUriParameter(char* uri, const char* key, const char* value) {
  const char* const separator = std::strchr(uri, '?') == nullptr ? "?" : "+";
  size_t length = std::strlen(uri);
  for (const char* piece : {separator, key, "=", value}) {
    CopyText(uri + length, kUriBufferSize - length, piece);
    length += std::strlen(uri + length);
  }
  return VEXO_OK;
}

int32_t SelectPortKind(const char* type) {
  for (const auto& entry : kPortKinds) {
    if (std::strcmp(entry.type, type) == 0) {
      return entry.kind;
    }
  }
  return VEXO_ERROR_NOT_SUPPORTED_PRINTER;
}

}  // namespace vexo
