# Warnings, hardening, sanitizers and coverage as INTERFACE targets; akhostmgmt_settings
# bundles what this build asked for, and every target of the project links it.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

add_library(akhostmgmt_warnings INTERFACE)
target_compile_options(akhostmgmt_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wno-format-nonliteral
  -Wimplicit-fallthrough -Wundef -Wcast-qual
  $<$<BOOL:${AKHOSTMGMT_WERROR}>:-Werror>)

add_library(akhostmgmt_hardening INTERFACE)
target_compile_options(akhostmgmt_hardening INTERFACE
  $<$<CONFIG:RelWithDebInfo,Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>
  -fstack-protector-strong -fstack-clash-protection)
target_link_options(akhostmgmt_hardening INTERFACE
  -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--as-needed)

# Paths in the binaries are relative, so that the same sources give the same bytes in any
# directory, even with CCACHE_BASEDIR. The last matching map wins; the build directory is inside
# the source directory.
cmake_path(RELATIVE_PATH CMAKE_SOURCE_DIR BASE_DIRECTORY ${CMAKE_BINARY_DIR}
  OUTPUT_VARIABLE sources)
add_library(akhostmgmt_reproducible INTERFACE)
target_compile_options(akhostmgmt_reproducible INTERFACE
  $<$<CONFIG:RelWithDebInfo,Release>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.
  -ffile-prefix-map=${sources}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build>)

add_library(akhostmgmt_sanitizers INTERFACE)
target_compile_options(akhostmgmt_sanitizers INTERFACE
  -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
# With GCC, libasan.so calls dlopen for the program; a RUNPATH counts only for the program's own
# calls, an RPATH for these too.
target_link_options(akhostmgmt_sanitizers INTERFACE
  -fsanitize=address,undefined -Wl,--disable-new-dtags)
if(AKHOSTMGMT_FUZZ)
  target_compile_options(akhostmgmt_sanitizers INTERFACE -fsanitize=fuzzer-no-link)
endif()

add_library(akhostmgmt_coverage INTERFACE)
target_compile_options(akhostmgmt_coverage INTERFACE --coverage -fprofile-update=atomic)
target_link_options(akhostmgmt_coverage INTERFACE --coverage)

# For tests, whose own code need not be fast: half the time to compile, lines in a backtrace.
add_library(akhostmgmt_test_settings INTERFACE)
target_compile_options(akhostmgmt_test_settings INTERFACE
  $<$<CONFIG:RelWithDebInfo,Release>:-O1> -g1)

add_library(akhostmgmt_settings INTERFACE)
target_link_libraries(akhostmgmt_settings INTERFACE
  akhostmgmt_warnings
  akhostmgmt_reproducible
  $<$<NOT:$<BOOL:${AKHOSTMGMT_SANITIZE}>>:akhostmgmt_hardening>
  $<$<BOOL:${AKHOSTMGMT_SANITIZE}>:akhostmgmt_sanitizers>
  $<$<BOOL:${AKHOSTMGMT_COVERAGE}>:akhostmgmt_coverage>)
