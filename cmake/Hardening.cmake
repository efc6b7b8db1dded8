# What the compiler and the linker can do against a fault being used: checked buffer functions, a
# guard on the stack, a stack that does not jump over its guard page, programs and libraries at
# random addresses, tables that are read-only once the program runs, and jumps that land only where
# jumps may. tests/tools/check_hardening looks at the built files. The sanitizers bring checks of
# their own, which these would hide.
option(QUOLL_HARDENING "Build with the compiler's defences" ON)

if(QUOLL_HARDENING AND NOT QUOLL_SANITIZE)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  # Checked functions need an optimising compiler; some compilers come with a level of their own.
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  add_compile_options("$<${optimised}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>"
                      -fstack-protector-strong -fstack-clash-protection)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|i.86|AMD64)$")
    add_compile_options(-fcf-protection=full)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    add_compile_options(-mbranch-protection=standard)
  endif()
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endif()
