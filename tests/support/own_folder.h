// The library's own folder as tests want it: it holds at most one file, whatever name is asked for.
#ifndef VEXO_TESTS_SUPPORT_OWN_FOLDER_H_
#define VEXO_TESTS_SUPPORT_OWN_FOLDER_H_

#include <cstdint>
#include <string>

namespace vexo::test {

void SetOwnFile(const std::string& content);

// A file that can be opened, but not read.
void SetUnreadableOwnFile();

void RemoveOwnFile();

// How often a file was asked for since one of these calls, and by which name last.
int32_t OwnFileRequests();
std::string LastOwnFileName();

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_OWN_FOLDER_H_
