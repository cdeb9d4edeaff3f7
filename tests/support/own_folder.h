// Simulates the library's folder. It holds at most one file, which is found under any name.
#ifndef VEXO_TESTS_SUPPORT_OWN_FOLDER_H_
#define VEXO_TESTS_SUPPORT_OWN_FOLDER_H_

#include <cstdint>
#include <string>

namespace vexo::test {

void SetOwnFile(const std::string& content);

// The file can be opened, but reading it fails.
void SetUnreadableOwnFile();

void RemoveOwnFile();

// Number of requests for a file since the last of these calls, and the name in the latest request.
int32_t OwnFileRequests();
std::string LastOwnFileName();

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_OWN_FOLDER_H_
