# Header-only libraries of the tools. A cross compiler must not search /usr/include, so only these libraries are linked into
# a folder of the build tree.
set(VEXO_HEADER_LIBRARIES_FROM /usr/include CACHE PATH "Where asio, CLI11 and nlohmann-json are installed")
set(header_folder ${CMAKE_BINARY_DIR}/header_only)
file(MAKE_DIRECTORY ${header_folder})
foreach(entry asio asio.hpp CLI nlohmann)
  if(NOT EXISTS ${VEXO_HEADER_LIBRARIES_FROM}/${entry})
    message(FATAL_ERROR "${entry} is missing: install libasio-dev, libcli11-dev and nlohmann-json3-dev")
  endif()
  file(CREATE_LINK ${VEXO_HEADER_LIBRARIES_FROM}/${entry} ${header_folder}/${entry} SYMBOLIC)
endforeach()

add_library(vexo_header_only INTERFACE)
target_include_directories(vexo_header_only SYSTEM INTERFACE ${header_folder})
target_compile_definitions(vexo_header_only INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(vexo_header_only INTERFACE Threads::Threads)
if(WIN32)
  target_link_libraries(vexo_header_only INTERFACE ws2_32 mswsock)
endif()
