// The texts of the tool on their way out. Inside the tool every text is UTF-8, except port descriptors and file names,
// which stay in the user's ANSI code page for the library.
#ifndef VEXOCTL_CONSOLE_TEXT_H_
#define VEXOCTL_CONSOLE_TEXT_H_

#include <string>
#include <string_view>

namespace vexoctl {

// From code page 936, in which the library gives its messages, whatever the language.
std::string Utf8FromGbk(std::string_view text);

// From the user's ANSI code page, in which the command line and the library's device URIs are.
std::string Utf8FromAnsi(std::string_view text);

std::string Utf8FromWide(std::wstring_view text);

// To and from the user's ANSI code page. A character that it lacks becomes a similar one or a question mark.
std::string AnsiFromWide(std::wstring_view text);
std::wstring WideFromAnsi(std::string_view text);

// A text of a printer, which may be in UTF-8 or in the user's ANSI code page; on one line, whatever it contains.
std::string Utf8FromPrinter(std::string_view text);

// Writes to the standard output stream. A console shows the text whatever its code page; a file or a pipe receives
// UTF-8 with plain "\n" line ends, so that scripts need no conversion. Throws a Failure when the text cannot be
// written: a script must not take a cut result for a whole one.
void WriteOutput(std::string_view utf8);

// Writes to the standard error stream in the same way; there is nobody to tell when that fails.
void WriteError(std::string_view utf8);

// Whether somebody watches the standard error stream: it is a console, not a file or a pipe.
bool ErrorsReachConsole();

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_TEXT_H_
