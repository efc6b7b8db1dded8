# The warnings that every target of this project is built with.
add_library(quoll_warnings INTERFACE)
target_compile_options(quoll_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(QUOLL_WERROR)
  target_compile_options(quoll_warnings INTERFACE -Werror)
endif()

if(QUOLL_SANITIZE)
  add_compile_options(-fsanitize=${QUOLL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUOLL_SANITIZE})
endif()
if(QUOLL_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
# g++ 12 warns of variants that are never read uninitialised, at -O3 and under the sanitizers.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND QUOLL_SANITIZE)
  target_compile_options(quoll_warnings INTERFACE -Wno-maybe-uninitialized)
endif()
