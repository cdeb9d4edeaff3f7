// Text encodings, and the standard streams. Inside the tool every text is UTF-8, except port descriptors and file
// names: these stay in the user's ANSI code page, as the library takes them.
#ifndef VEXOCTL_CONSOLE_TEXT_H_
#define VEXOCTL_CONSOLE_TEXT_H_

#include <string>
#include <string_view>

namespace vexoctl {

// From code page 936, the encoding of the library's messages in every language.
std::string Utf8FromGbk(std::string_view text);

// From the user's ANSI code page, the encoding of the command line and of the library's device URIs.
std::string Utf8FromAnsi(std::string_view text);

std::string Utf8FromWide(std::wstring_view text);

// To and from the user's ANSI code page. A character that it lacks becomes a similar one or a question mark.
std::string AnsiFromWide(std::wstring_view text);
std::wstring WideFromAnsi(std::string_view text);

// From a printer, which may send UTF-8 or the user's ANSI code page. Control characters become blanks.
std::string Utf8FromPrinter(std::string_view text);

// Writes to the standard output. A console shows the text whatever its code page; a file or a pipe receives UTF-8 with
// "\n" line ends. Throws a Failure if the text cannot be written completely.
void WriteOutput(std::string_view utf8);

// Writes to the standard error output in the same way; failures are ignored.
void WriteError(std::string_view utf8);

// Whether the standard error output is a console, and not a file or a pipe.
bool ErrorsReachConsole();

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_TEXT_H_
