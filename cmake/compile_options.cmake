# Warnings are errors in the project's own code. Third-party libraries do not link this target.
add_library(vexo_options INTERFACE)

target_compile_options(vexo_options INTERFACE -Wall -Wextra -Wshadow -Werror -ffunction-sections -fdata-sections)

if(WIN32)
  target_compile_definitions(vexo_options INTERFACE _WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX
    _WINSOCK_DEPRECATED_NO_WARNINGS)
endif()

# For the whole build including GoogleTest, since a sanitizer must see the whole program.
if(VEXO_SANITIZE)
  add_compile_options(-fsanitize=${VEXO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VEXO_SANITIZE})
endif()

if(MINGW)
  # The programs need only the system's DLLs. Builds are reproducible: they contain no time stamps and no folder names.
  add_link_options(-static -Wl,--gc-sections -Wl,--no-insert-timestamp)
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
endif()
