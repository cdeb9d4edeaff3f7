#include "port/descriptor.h"

#include <cstddef>
#include <cstring>

#include "port/bounded_text.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr size_t kMaxFields = 10;
constexpr char kDefaultDevice[] = "DEVICE";

struct Fields {
  char* items[kMaxFields];
  size_t count = 0;

  // Fields are numbered from 1. Returns null when the descriptor has no such field.
  char* Get(size_t number) const { return number <= count ? items[number - 1] : nullptr; }

  const char* GetOr(size_t number, const char* fallback) const {
    return number <= count ? items[number - 1] : fallback;
  }

  const char* GetFilledOr(size_t number, const char* fallback) const {
    return number <= count && *items[number - 1] != '\0' ? items[number - 1] : fallback;
  }
};

// The URI to write. Parameters without a value are left out.
struct UriDraft {
  struct Parameter {
    const char* key;
    const char* value;
  };

  void Add(const char* key, const char* value) { params[count++] = {key, value}; }

  const char* device = kDefaultDevice;
  Parameter params[5] = {};
  size_t count = 0;
};

char* SkipBlanks(char* text) {
  while (*text == ' ') {
    ++text;
  }
  return text;
}

void CutTrailingBlanks(char* text) {
  size_t length = std::strlen(text);
  while (length > 0 && text[length - 1] == ' ') {
    text[--length] = '\0';
  }
}

// Compatibility: a comma at the start is skipped, one at the end adds no field, and fields after the tenth are ignored.
Fields SplitFields(char* text) {
  Fields fields;
  if (*text == ',') {
    ++text;
  }
  for (char* field = SkipBlanks(text); *field != '\0' && fields.count < kMaxFields; field = SkipBlanks(text)) {
    char* const comma = std::strchr(field, ',');
    if (comma != nullptr) {
      *comma = '\0';
      text = comma + 1;
    } else {
      text = field + std::strlen(field);
    }
    CutTrailingBlanks(field);
    fields.items[fields.count++] = field;
  }
  return fields;
}

// The first three letters of the first field.
//
// Compatibility: "F.." becomes a word of four letters ending in E, so that both "fil" and "file" mean FILE.
struct KindWord {
  explicit KindWord(const char* field) {
    CopyText(text, 4, field);
    UpperCaseAscii(text);
    if (text[0] == 'F') {
      text[std::strlen(text)] = 'E';
    }
  }

  bool operator==(const char* word) const { return std::strcmp(text, word) == 0; }

  char text[5] = {};
};

bool StartsWith(const char* text, const char* prefix) { return std::strncmp(text, prefix, std::strlen(prefix)) == 0; }

int32_t ReadSerial(const Fields& fields, UriDraft* uri) {
  static constexpr char kBaudrateMarker[] = "BAUDRATE_";
  char* const speed = fields.Get(2);
  if (speed == nullptr) {
    return VEXO_ERROR_IO_SETTING;
  }
  UpperCaseAscii(speed);
  const char* const marker = std::strstr(speed, kBaudrateMarker);
  uri->device = fields.Get(1);
  uri->Add("baudrate", marker != nullptr ? marker + sizeof(kBaudrateMarker) - 1 : speed);
  uri->Add("parity", fields.GetFilledOr(3, "n"));
  uri->Add("bytesize", fields.GetFilledOr(4, "8"));
  uri->Add("stopbits", fields.GetFilledOr(5, "1"));
  uri->Add("flowcontrol", fields.GetFilledOr(6, "n"));
  return VEXO_OK;
}

// Reads NET and BT descriptors: an address and one more value.
//
// Compatibility: the second value takes its default only when its field is missing; an empty field gives an empty
// value, which the URI parser rejects.
int32_t ReadAddress(const Fields& fields, const char* address_key, const char* key, const char* fallback,
                    UriDraft* uri) {
  if (fields.Get(2) == nullptr) {
    return VEXO_ERROR_IO_SETTING;
  }
  uri->Add(address_key, fields.Get(2));
  uri->Add(key, fields.GetOr(3, fallback));
  return VEXO_OK;
}

int32_t ReadFile(const Fields& fields, UriDraft* uri) {
  if (fields.Get(2) == nullptr) {
    return VEXO_ERROR_IO_SETTING;
  }
  uri->Add("filename", fields.Get(2));
  return VEXO_OK;
}

// Skips the six characters in front of the digits in "VID_0X1A2B" and "PID_0X0001".
const char* AfterIdPrefix(const char* field) {
  constexpr size_t kIdPrefixLength = 6;
  return field + BoundedLength(field, kIdPrefixLength);
}

// Compatibility: the last recognised field decides how many of location, portnum, vid and pid are written, and an
// unrecognised field always makes field 2 the device. Hosts depend on both.
int32_t ReadUsb(const Fields& fields, UriDraft* uri) {
  constexpr size_t kPlaceOnly = 2;
  constexpr size_t kPlaceAndIds = 4;
  const char* location = nullptr;
  const char* portnum = nullptr;
  const char* vid = nullptr;
  const char* pid = nullptr;
  size_t written = 0;
  for (size_t number = 2; number <= fields.count; ++number) {
    char* const field = fields.Get(number);
    UpperCaseAscii(field);
    if (StartsWith(field, "USB")) {
      portnum = field;
      written = kPlaceOnly;
    } else if (StartsWith(field, "PORT")) {
      location = field;
      written = kPlaceOnly;
    } else if (StartsWith(field, "VID")) {
      vid = AfterIdPrefix(field);
      written = kPlaceAndIds;
    } else if (StartsWith(field, "PID")) {
      pid = AfterIdPrefix(field);
      written = kPlaceAndIds;
    } else {
      uri->device = fields.Get(2);
    }
  }
  uri->Add("location", location);
  uri->Add("portnum", portnum);
  uri->Add("vid", vid);
  uri->Add("pid", pid);
  uri->count = written;
  return VEXO_OK;
}

int32_t ReadFields(const KindWord& kind, const Fields& fields, UriDraft* uri) {
  if (kind == "COM" || kind == "BSP") {
    return ReadSerial(fields, uri);
  }
  if (kind == "NET") {
    return ReadAddress(fields, "ip", "port", "9100", uri);
  }
  if (kind == "BT") {
    return ReadAddress(fields, "address", "pin", "8642", uri);
  }
  if (kind == "USB") {
    return ReadUsb(fields, uri);
  }
  if (kind == "LPT") {
    uri->device = fields.Get(1);
    return VEXO_OK;
  }
  if (kind == "FILE") {
    return ReadFile(fields, uri);
  }
  return kind == "BUF" ? VEXO_OK : VEXO_ERROR_NOT_SUPPORTED_PRINTER;
}

// The part before the parameters must be shorter than 255 characters, the whole URI at most 255.
bool WriteUri(const KindWord& kind, const UriDraft& uri, char (&out)[kUriBufferSize]) {
  BoundedText text(out, kUriBufferSize);
  bool fits = text.Append(kUriScheme) && text.Append(kind.text) && text.Append("/") && text.Append(uri.device) &&
              std::strlen(out) < kMaxUriLength;
  const char* separator = "?";
  for (size_t i = 0; fits && i < uri.count; ++i) {
    if (uri.params[i].value == nullptr) {
      continue;
    }
    fits = text.Append(separator) && text.Append(uri.params[i].key) && text.Append("=") &&
           text.Append(uri.params[i].value);
    separator = "+";
  }
  return fits;
}

}  // namespace

int32_t ConvertDescriptorToUri(char* descriptor, char (&out)[kUriBufferSize]) {
  if (descriptor == nullptr) {
    return VEXO_ERROR_IO_SETTING;
  }
  const Fields fields = SplitFields(descriptor);
  if (fields.count == 0) {
    return VEXO_ERROR_IO_SETTING;
  }
  const KindWord kind(fields.Get(1));
  UriDraft uri;
  const int32_t result = ReadFields(kind, fields, &uri);
  if (result != VEXO_OK) {
    return result;
  }
  char text[kUriBufferSize];
  if (!WriteUri(kind, uri, text)) {
    return VEXO_ERROR_BUFFER_TOO_SMALL;
  }
  CopyText(out, kUriBufferSize, text);
  return VEXO_OK;
}

}  // namespace vexo
