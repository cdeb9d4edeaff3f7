# find_package(vexo-extend) gives the target vexo::extend: the headers and the DLL.
#
# The import library in lib/ is for MinGW. For linkers of the Microsoft kind one is made here of vexoextend.def.
include(${CMAKE_CURRENT_LIST_DIR}/vexo-extend-targets.cmake)

if(NOT MINGW AND CMAKE_AR)
  set(vexo_import_library ${CMAKE_CURRENT_BINARY_DIR}/vexoextend.lib)
  get_filename_component(vexo_definitions ${CMAKE_CURRENT_LIST_DIR}/../../vexoextend.def ABSOLUTE)
  execute_process(
    COMMAND ${CMAKE_AR} /nologo /machine:x64 /def:${vexo_definitions} /out:${vexo_import_library}
    RESULT_VARIABLE vexo_result OUTPUT_VARIABLE vexo_output ERROR_VARIABLE vexo_output)
  if(NOT vexo_result EQUAL 0)
    set(vexo-extend_FOUND FALSE)
    set(vexo-extend_NOT_FOUND_MESSAGE "no import library can be made of ${vexo_definitions}: ${vexo_output}")
    return()
  endif()
  get_target_property(vexo_configurations vexo::extend IMPORTED_CONFIGURATIONS)
  foreach(configuration IN LISTS vexo_configurations)
    set_target_properties(vexo::extend PROPERTIES IMPORTED_IMPLIB_${configuration} ${vexo_import_library})
  endforeach()
endif()
