# SPDX-License-Identifier: LGPL-2.1-or-later
include(GenerateExportHeader)

# What every target of this project is compiled with; never part of what a client inherits.
add_library(gu_build_options INTERFACE)
target_compile_options(gu_build_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<BOOL:${GENERICUTILITIES_WARNINGS_AS_ERRORS}>:-Werror>)
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86")
  # x87 keeps more digits than a double holds: microseconds would differ from those of amd64.
  target_compile_options(gu_build_options INTERFACE -msse2 -mfpmath=sse)
endif()

# gu_add_library(<name> FILES <header and source>...)
#
# A shared library <name> with the alias GenericUtilities::<name>. Headers stand beside their sources and are installed
# under the same path; <name>/Export.h is generated.
function(gu_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FILES")
  add_library(${name} SHARED ${arg_FILES})
  add_library(GenericUtilities::${name} ALIAS ${name})

  set(generated ${CMAKE_CURRENT_BINARY_DIR}/include)
  string(TOUPPER ${name} prefix)
  generate_export_header(${name}
    BASE_NAME ${prefix} EXPORT_FILE_NAME ${generated}/${name}/Export.h)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<BUILD_INTERFACE:${generated}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_compile_definitions(${name} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH)
  target_link_libraries(${name} PUBLIC Qt5::Core PRIVATE $<BUILD_INTERFACE:gu_build_options>)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})

  install(TARGETS ${name} EXPORT GenericUtilitiesTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES ${generated}/${name}/Export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name})
  foreach(file IN LISTS arg_FILES)
    if(file MATCHES "\\.h$" AND NOT file MATCHES "_p\\.h$")
      get_filename_component(folder ${file} DIRECTORY)
      install(FILES ${file} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name}/${folder})
    endif()
  endforeach()
endfunction()
