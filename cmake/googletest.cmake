# Builds GoogleTest from source, with the compiler and sanitizers of this build.
set(VEXO_GOOGLETEST_SOURCES /usr/src/googletest CACHE PATH "GoogleTest sources (Debian's package googletest)")
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
if(MINGW)
  set(gtest_disable_pthreads OFF CACHE BOOL "" FORCE)
endif()
add_subdirectory(${VEXO_GOOGLETEST_SOURCES} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
