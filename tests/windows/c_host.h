/* A host in C: what the public headers promise to more than one language. */
#ifndef VEXO_TESTS_WINDOWS_C_HOST_H_
#define VEXO_TESTS_WINDOWS_C_HOST_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Connects to a printer, asks for its print width and lets go of it: the first code that is not 0, or 0. */
int32_t AskPrintWidth(const char* descriptor, uint32_t* width);

#ifdef __cplusplus
}
#endif

#endif /* VEXO_TESTS_WINDOWS_C_HOST_H_ */
