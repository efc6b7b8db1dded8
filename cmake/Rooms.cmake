# What is installed for other programs lies below one folder, so that its headers keep their names.
set(QUOLL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/quoll-extensions)
set(QUOLL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/QuollExtensions)

# The headers of this folder, as FOLDER/NAME.h, but those that only the folder itself includes. The
# global property QUOLL_HEADERS lists the library's.
function(quoll_install_headers folder)
  cmake_parse_arguments(HEADERS "" "" "INTERNAL" ${ARGN})
  file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.h)
  if(HEADERS_INTERNAL)
    list(REMOVE_ITEM headers ${HEADERS_INTERNAL})
  endif()
  install(FILES ${headers} DESTINATION ${QUOLL_INCLUDEDIR}/${folder} COMPONENT development)
  list(TRANSFORM headers PREPEND ${folder}/)
  set_property(GLOBAL APPEND PROPERTY QUOLL_HEADERS ${headers})
endfunction()

# A room is a folder of the library: one target, and a list of the rooms it may include. INTERNAL are
# headers that are not installed.
#   quoll_room(message SOURCES a.cpp ... USES foundation records)
function(quoll_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;USES;INTERNAL" ${ARGN})
  add_library(quoll_${name} STATIC ${ROOM_SOURCES})
  target_include_directories(quoll_${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(quoll_${name} PRIVATE $<BUILD_INTERFACE:quoll_warnings>)
  # Each program makes for itself what stands whole in a header.
  set_target_properties(quoll_${name} PROPERTIES VISIBILITY_INLINES_HIDDEN ON)
  foreach(used IN LISTS ROOM_USES)
    target_link_libraries(quoll_${name} PUBLIC quoll_${used})
  endforeach()
  quoll_install_headers(quoll/${name} INTERNAL ${ROOM_INTERNAL})
endfunction()

# An adapter behind the ports, named after what it stands on. Other programs link it beside the
# library, found by CMake or by pkg-config; only HEADERS are for them. It uses ROOMS beside platform and
# foundation, other ADAPTERS, MODULES of pkg-config (PkgConfig::QUOLL_NAME here) and FLAGS of the linker.
#   quoll_adapter(gio SOURCES ... MODULES gio-2.0 HEADERS launcher.h)
function(quoll_adapter name)
  cmake_parse_arguments(ADAPTER "" "" "SOURCES;ROOMS;ADAPTERS;MODULES;FLAGS;HEADERS" ${ARGN})
  add_library(linux_${name} STATIC ${ADAPTER_SOURCES})
  set_target_properties(linux_${name} PROPERTIES EXPORT_NAME ${name}
                                                 OUTPUT_NAME quoll-linux-${name})
  target_link_libraries(linux_${name}
    PUBLIC $<BUILD_INTERFACE:quoll_platform>
           $<INSTALL_INTERFACE:QuollExtensions::quoll-extensions> ${ADAPTER_FLAGS}
    PRIVATE $<BUILD_INTERFACE:quoll_warnings>)
  foreach(room IN LISTS ADAPTER_ROOMS)
    target_link_libraries(linux_${name} PUBLIC $<BUILD_INTERFACE:quoll_${room}>)
  endforeach()
  set(requires "quoll-extensions = ${PROJECT_VERSION}")
  foreach(adapter IN LISTS ADAPTER_ADAPTERS)
    target_link_libraries(linux_${name} PUBLIC linux_${adapter})
    string(APPEND requires ", quoll-linux-${adapter} = ${PROJECT_VERSION}")
  endforeach()
  string(TOUPPER QUOLL_${name} modules)
  if(ADAPTER_MODULES)
    pkg_check_modules(${modules} REQUIRED IMPORTED_TARGET GLOBAL ${ADAPTER_MODULES})
    target_link_libraries(linux_${name} PUBLIC PkgConfig::${modules})
    string(APPEND requires ", ${ADAPTER_MODULES}")
  endif()
  string(REPLACE ";" ", " requires "${requires}")
  string(REPLACE ";" " " flags "${ADAPTER_FLAGS}")

  set(component QuollExtensions-${name})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/QuollExtensionsAdapter.cmake.in ${component}.cmake @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${component}.cmake
    DESTINATION ${QUOLL_CMAKEDIR} COMPONENT development)
  install(TARGETS linux_${name} EXPORT ${component}-targets COMPONENT development)
  install(EXPORT ${component}-targets NAMESPACE QuollExtensions::
    DESTINATION ${QUOLL_CMAKEDIR} COMPONENT development)
  install(FILES ${ADAPTER_HEADERS} DESTINATION ${QUOLL_INCLUDEDIR}/quoll/linux/${name}
    COMPONENT development)
  quoll_install_pkg_config(quoll-linux-adapter quoll-linux-${name})
endfunction()

# Installs cmake/TEMPLATE.pc.in as MODULE.pc. It tells the library's place from its own, so that the
# installed tree may be moved.
function(quoll_install_pkg_config template module)
  foreach(folder IN ITEMS LIB INCLUDE)
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_${folder}DIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
               OUTPUT_VARIABLE ${folder}DIR)
  endforeach()
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
             BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE PREFIX)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${template}.pc.in ${module}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

# What is tested is built as released; what tests, in the folder of this call and below, is compiled
# quickly.
macro(quoll_compile_quickly)
  add_compile_options("SHELL:$<$<CONFIG:Release>:-O0 -U_FORTIFY_SOURCE>")
endmacro()

# What most tests include is read once for all of them, by the first; a test whose libraries define
# other macros reads it again. A compiler cache would keep nothing that was built so.
function(quoll_read_headers_once target)
  if(NOT CMAKE_UNITY_BUILD OR CMAKE_CXX_COMPILER_LAUNCHER)
    return()
  endif()
  target_compile_options(${target} PRIVATE -pthread)  # defines a macro, which some libraries bring
  set_target_properties(${target} PROPERTIES PCH_WARN_INVALID OFF)
  get_property(first GLOBAL PROPERTY QUOLL_FIRST_TEST)
  if(first)
    target_precompile_headers(${target} REUSE_FROM ${first})
    return()
  endif()
  set_property(GLOBAL PROPERTY QUOLL_FIRST_TEST ${target})
  target_precompile_headers(${target} PRIVATE <gtest/gtest.h> <algorithm> <chrono> <filesystem>
    <fstream> <map> <memory> <optional> <string> <thread> <vector>)
endfunction()

# A test program: one executable, one entry of the test runner.
#   quoll_test(foundation SOURCES ... LIBRARIES quoll_foundation)
# APART are sources with names that others of the same test have too. They are compiled by
# themselves, also where sources of a folder are compiled together.
set(long_tests compose_writer console crash draft_states package share_preparing)  # they begin first
function(quoll_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;APART;LIBRARIES" ${ARGN})
  add_executable(test_${name} ${TEST_SOURCES} ${TEST_APART})
  set_source_files_properties(${TEST_APART} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  target_link_libraries(test_${name} PRIVATE ${TEST_LIBRARIES} GTest::gtest GTest::gtest_main
                                             Threads::Threads quoll_warnings)
  quoll_read_headers_once(test_${name})
  add_test(NAME ${name} COMMAND test_${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
  if(name IN_LIST long_tests)
    set_tests_properties(${name} PROPERTIES COST 1)
  endif()
endfunction()
