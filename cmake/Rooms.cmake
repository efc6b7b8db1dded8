# A room is a folder of the library: one target, and a list of the rooms it may include.
#   quoll_room(message SOURCES a.cpp ... USES foundation records)
function(quoll_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;USES" ${ARGN})
  add_library(quoll_${name} STATIC ${ROOM_SOURCES})
  target_include_directories(quoll_${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(quoll_${name} PRIVATE $<BUILD_INTERFACE:quoll_warnings>)
  foreach(used IN LISTS ROOM_USES)
    target_link_libraries(quoll_${name} PUBLIC quoll_${used})
  endforeach()
endfunction()

# An adapter behind the ports, named after what it stands on.
#   quoll_adapter(gio SOURCES ... LIBRARIES PkgConfig::GIO)
function(quoll_adapter name)
  cmake_parse_arguments(ADAPTER "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(linux_${name} STATIC ${ADAPTER_SOURCES})
  target_link_libraries(linux_${name} PUBLIC quoll_platform ${ADAPTER_LIBRARIES}
                                      PRIVATE $<BUILD_INTERFACE:quoll_warnings>)
endfunction()

# A test program: one executable, one entry of the test runner.
#   quoll_test(foundation SOURCES ... LIBRARIES quoll_foundation)
function(quoll_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(test_${name} ${TEST_SOURCES})
  target_link_libraries(test_${name} PRIVATE ${TEST_LIBRARIES} GTest::gtest GTest::gtest_main
                                             Threads::Threads quoll_warnings)
  # What is tested is built as released; the tests themselves are built quickly.
  target_compile_options(test_${name} PRIVATE $<$<CONFIG:Release>:-O0>)
  add_test(NAME ${name} COMMAND test_${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()
