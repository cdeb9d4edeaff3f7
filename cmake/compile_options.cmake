# Warnings are errors in our own code, whatever the compiler. Libraries from elsewhere do not link this target.
add_library(vexo_options INTERFACE)

target_compile_options(vexo_options INTERFACE -Wall -Wextra -Wshadow -Werror -ffunction-sections -fdata-sections)

if(WIN32)
  target_compile_definitions(vexo_options INTERFACE _WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX
    _WINSOCK_DEPRECATED_NO_WARNINGS)
endif()

# For everything of a build, the test framework included: a sanitizer must see all of a program.
if(VEXO_SANITIZE)
  add_compile_options(-fsanitize=${VEXO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VEXO_SANITIZE})
endif()

if(MINGW)
  # The products need no DLL beside the system's own. Two builds of the same sources give the same bytes, wherever and
  # whenever they are built: no time stamp, no name of a folder.
  add_link_options(-static -Wl,--gc-sections -Wl,--no-insert-timestamp)
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
endif()
