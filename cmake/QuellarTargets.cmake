# SPDX-License-Identifier: MIT

# Flags that every target of ours has; libraries of others are included as system headers.
add_library(quellar_flags INTERFACE)
target_compile_options(quellar_flags INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # In optimised code g++ 12 sees overlapping copies in "text" + std::string, and alternatives of a std::variant that it
  # does not hold as uninitialised; clang-tidy looks for the real ones.
  target_compile_options(quellar_flags INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
endif()
if(QUELLAR_SANITIZE)
  # A sanitizer's report needs functions and lines; all that a debugger could want costs a fifth of the build's time.
  target_compile_options(quellar_flags INTERFACE -g1)
  target_compile_options(quellar_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # Checks of each single access that the address sanitizer makes too, or that see nothing in code that is not
  # optimised; they cost a third of the build's time.
  target_compile_options(quellar_flags INTERFACE -fno-sanitize=null,alignment,object-size)
  target_link_options(quellar_flags INTERFACE -fsanitize=address,undefined)
endif()

if(QUELLAR_FUZZ)
  # What libFuzzer sees of the code that runs; and a standard library that checks its bounds.
  target_compile_options(quellar_flags INTERFACE -fsanitize=fuzzer-no-link -D_GLIBCXX_ASSERTIONS)
  # g++'s own headers, which clang takes for ours where they call one another.
  target_compile_options(quellar_flags INTERFACE -Wno-deprecated-declarations)
endif()

# The hardening that a distribution builds with. The sanitizers have checks of their own in its place.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_library(quellar_hardening INTERFACE)
target_compile_options(quellar_hardening INTERFACE
  -fstack-protector-strong -fstack-clash-protection -Wformat -Werror=format-security -D_GLIBCXX_ASSERTIONS)
# Where a call may lead to and a function return to, on processors that can hold code to it; and local variables that
# are never what was on the stack before. Not every compiler and processor knows each.
foreach(flag -fcf-protection=full -mbranch-protection=standard -ftrivial-auto-var-init=zero)
  string(MAKE_C_IDENTIFIER "QUELLAR_HAS${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    target_compile_options(quellar_hardening INTERFACE ${flag})
  endif()
endforeach()
# Checked functions need an optimizing compiler. A distribution's own may have set a lower level.
set(quellar_fortify -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
target_compile_options(quellar_hardening INTERFACE "$<$<CONFIG:Release>:${quellar_fortify}>")
target_link_options(quellar_hardening INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
if(NOT QUELLAR_SANITIZE)
  target_link_libraries(quellar_flags INTERFACE quellar_hardening)
endif()

# quellar_precompile(NAME HEADERS ... USES targets ... [PROGRAMS]): headers of others, parsed once for all targets that
# share them by quellar_share_precompiled(TARGET NAME): libraries and what uses the toolkit or, with PROGRAMS, other
# programs, whose code is compiled another way. Without QUELLAR_PRECOMPILE both do nothing; every file includes what it
# needs all the same, and the release build, which precompiles nothing, shows where one does not.
function(quellar_precompile name)
  if(NOT QUELLAR_PRECOMPILE)
    return()
  endif()
  cmake_parse_arguments(ARG "PROGRAMS" "" "HEADERS;USES" ${ARGN})
  file(CONFIGURE OUTPUT ${name}.cpp CONTENT "")
  add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE ${ARG_USES} quellar_flags)
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
  if(ARG_PROGRAMS)
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${name} PRIVATE -fPIE)
  endif()
endfunction()

function(quellar_share_precompiled target name)
  if(QUELLAR_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${name})
  endif()
endfunction()

quellar_precompile(quellar_standard_headers
  HEADERS <algorithm> <chrono> <filesystem> <fstream> <functional> <map> <memory> <optional> <sstream> <string>
          <unordered_map> <variant> <vector>)

# Most of the time that one file takes is that of the templates of the headers that it includes. Compiled as one, eight
# files pay it once; what is in a file only must then have a name of its own in its folder.
function(quellar_unite target)
  if(QUELLAR_UNITY)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
  endif()
endfunction()

# quellar_folder(FOLDER SOURCES ... USES targets ... LIBRARIES targets ... PRECOMPILED headers)
#
# Makes the target of one folder: quellar_<folder>, "/" written "_". Its headers are included as
# "<folder>/name.h" through a folder of links that holds this one folder only, so that a target sees
# exactly the folders it USES (and theirs), and an include against the arrows does not compile.
function(quellar_folder folder)
  cmake_parse_arguments(ARG "" "PRECOMPILED" "SOURCES;USES;LIBRARIES;PRIVATE_LIBRARIES" ${ARGN})
  string(REPLACE "/" "_" name ${folder})
  set(target quellar_${name})
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  get_filename_component(parent ${root}/${folder} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${root}/${folder} SYMBOLIC)
  if(NOT ARG_SOURCES)
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${root})
    target_link_libraries(${target} INTERFACE ${ARG_USES} ${ARG_LIBRARIES})
    return()
  endif()
  add_library(${target} STATIC ${ARG_SOURCES})
  target_include_directories(${target} PUBLIC ${root})
  target_link_libraries(${target} PUBLIC ${ARG_USES} ${ARG_LIBRARIES} PRIVATE ${ARG_PRIVATE_LIBRARIES} quellar_flags)
  if(NOT ARG_PRECOMPILED)
    set(ARG_PRECOMPILED quellar_standard_headers)
  endif()
  quellar_share_precompiled(${target} ${ARG_PRECOMPILED})
  quellar_unite(${target})
endfunction()

# quellar_program(NAME SOURCES ... USES targets ...): an executable in build/<preset>/bin.
function(quellar_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_USES} quellar_flags)
  # Most symbols that a start looks up are these two libraries', and each library named before them is asked in vain. A
  # sanitizer's own library has to be the first.
  if(NOT QUELLAR_SANITIZE)
    target_link_options(${name} PRIVATE
      "SHELL:-Wl,--push-state,--no-as-needed -lstdc++ -l:libc.so.6 -Wl,--pop-state")
  endif()
endfunction()
