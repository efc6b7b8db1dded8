# Builds the programs with one defence broken, to see that a test notices: cmake -DQUOLL_BREAK=NAME.
# The source that holds the defence is then built from a copy in which one text stands for another,
# so that what is installed holds no switches that turn defences off.
set(QUOLL_BREAK "" CACHE STRING "The defence of tests/defences that is built broken")

# A promise of docs/security.md, docs/limits.md or docs/reliability.md, or a rule of the library.
# TAKES, which FILE has once, becomes GIVES; SHOWN_BY is the test that fails then, as the test runner
# and as the program names it.
#   quoll_defence(url_length FILE quoll/message/command_url.cpp TAKES "limit = 3" GIVES "limit = 4"
#                 SHOWN_BY message CommandUrl.RefusesWhatIsTooLong)
function(quoll_defence name)
  cmake_parse_arguments(PARSE_ARGV 1 DEFENCE "" "FILE;TAKES;GIVES" "SHOWN_BY")
  file(READ ${PROJECT_SOURCE_DIR}/${DEFENCE_FILE} source)
  string(FIND "${source}" "${DEFENCE_TAKES}" first)
  string(FIND "${source}" "${DEFENCE_TAKES}" last REVERSE)
  if(first EQUAL -1 OR NOT first EQUAL last)
    message(FATAL_ERROR "defence ${name}: ${DEFENCE_FILE} has its text not once")
  endif()
  list(JOIN DEFENCE_SHOWN_BY " " shown_by)
  file(APPEND ${CMAKE_BINARY_DIR}/defences.txt "${name} ${shown_by}\n")
  if(name STREQUAL QUOLL_BREAK)
    string(REPLACE "${DEFENCE_TAKES}" "${DEFENCE_GIVES}" source "${source}")
    file(WRITE ${CMAKE_BINARY_DIR}/broken/${DEFENCE_FILE} "${source}")
    quoll_replace_source(${PROJECT_SOURCE_DIR} ${DEFENCE_FILE})
  endif()
endfunction()

# Lets every target below `folder` that is made of FILE be made of its broken copy. The copy of a
# header is found before the header, see below.
function(quoll_replace_source folder file)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(home ${target} SOURCE_DIR)
    get_target_property(sources ${target} SOURCES)
    file(RELATIVE_PATH own ${home} ${PROJECT_SOURCE_DIR}/${file})
    if(NOT own IN_LIST sources)
      continue()
    endif()
    set(copy ${CMAKE_BINARY_DIR}/broken/${file})
    list(TRANSFORM sources REPLACE "^${own}$" ${copy})
    set_target_properties(${target} PROPERTIES SOURCES "${sources}")
    get_property(definitions SOURCE ${PROJECT_SOURCE_DIR}/${file} DIRECTORY ${home}
                 PROPERTY COMPILE_DEFINITIONS)
    set_property(SOURCE ${copy} DIRECTORY ${home} PROPERTY COMPILE_DEFINITIONS ${definitions})
    set_property(SOURCE ${copy} DIRECTORY ${home} PROPERTY INCLUDE_DIRECTORIES ${home})
  endforeach()
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below IN LISTS folders)
    quoll_replace_source(${below} ${file})
  endforeach()
endfunction()

# Called behind the last target.
function(quoll_read_defences)
  file(REMOVE_RECURSE ${CMAKE_BINARY_DIR}/broken)
  file(WRITE ${CMAKE_BINARY_DIR}/defences.txt "")
  file(GLOB tables CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/defences/*.cmake)
  foreach(table IN LISTS tables)
    include(${table})
  endforeach()
  file(STRINGS ${CMAKE_BINARY_DIR}/defences.txt broken REGEX "^${QUOLL_BREAK} ")
  if(QUOLL_BREAK AND NOT broken)
    message(FATAL_ERROR "there is no defence ${QUOLL_BREAK}")
  endif()
endfunction()

if(QUOLL_BREAK)
  include_directories(BEFORE ${CMAKE_BINARY_DIR}/broken)
endif()
