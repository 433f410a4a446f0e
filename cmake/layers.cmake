# One static library per folder, with the warnings and the language subset of its build.

add_library(varnok_options INTERFACE)
target_include_directories(varnok_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
target_compile_options(varnok_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Wold-style-cast
  -Woverloaded-virtual -Wimplicit-fallthrough -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # g++ 12 takes std::vector::resize for an overflow, and text + text for a copy onto itself.
  target_compile_options(varnok_options INTERFACE -Wno-stringop-overflow -Wno-array-bounds -Wno-restrict)
  # Compiler caches see through precompiled headers with this.
  target_compile_options(varnok_options INTERFACE -fpch-preprocess)
endif()
if(VARNOK_SANITIZE)
  target_compile_options(varnok_options INTERFACE -fsanitize=address,undefined
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(varnok_options INTERFACE -fsanitize=address,undefined)
endif()

# The core uses neither exceptions nor RTTI: the UEFI build has none. Sanitizers tell an object's type by it.
add_library(varnok_core_options INTERFACE)
target_link_libraries(varnok_core_options INTERFACE varnok_options)
target_compile_options(varnok_core_options INTERFACE -fno-exceptions $<IF:$<BOOL:${VARNOK_SANITIZE}>,,-fno-rtti>)
if(VARNOK_UEFI)
  target_link_libraries(varnok_core_options INTERFACE varnok_uefi_options)
endif()

# varnok_precompiled(NAME OPTIONS headers...): the standard headers that nearly every file includes, parsed
# once for the targets that reuse them by varnok_reuse(TARGET NAME). Those need the same OPTIONS library.
set(VARNOK_STANDARD_HEADERS <algorithm> <array> <charconv> <cstdint> <memory> <optional> <span> <string> <string_view>
  <utility> <vector>)
file(WRITE ${CMAKE_BINARY_DIR}/precompiled.cpp "")
function(varnok_precompiled name options)
  add_library(varnok_${name} OBJECT ${CMAKE_BINARY_DIR}/precompiled.cpp)
  target_link_libraries(varnok_${name} PRIVATE ${options})
  target_precompile_headers(varnok_${name} PRIVATE ${ARGN})
endfunction()
varnok_precompiled(core_headers varnok_core_options ${VARNOK_STANDARD_HEADERS})
varnok_precompiled(host_headers varnok_options ${VARNOK_STANDARD_HEADERS})

# Folders are compiled in batches of files: local names are unique within a folder. Under sanitizers most of
# the work is what headers bring, so a folder is one batch; elsewhere a change would wait for the whole of it.
set(CMAKE_UNITY_BUILD ON)
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12)
if(VARNOK_SANITIZE)
  set(CMAKE_UNITY_BUILD_BATCH_SIZE 0)
endif()

# varnok_layer(NAME SOURCES file... [USES layer...]): a folder of the core.
function(varnok_layer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_library(varnok_${name} STATIC ${ARG_SOURCES})
  list(TRANSFORM ARG_USES PREPEND varnok_)
  target_link_libraries(varnok_${name} PRIVATE varnok_core_options PUBLIC ${ARG_USES})
  target_precompile_headers(varnok_${name} REUSE_FROM varnok_core_headers)
endfunction()
