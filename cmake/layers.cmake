# One static library per folder, with the warnings and the language subset of its build.

add_library(varnok_options INTERFACE)
target_include_directories(varnok_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
target_compile_options(varnok_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Wold-style-cast
  -Woverloaded-virtual -Wimplicit-fallthrough -Werror)
if(VARNOK_SANITIZE)
  target_compile_options(varnok_options INTERFACE -fsanitize=address,undefined,fuzzer-no-link -fno-sanitize=vptr
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(varnok_options INTERFACE -fsanitize=address,undefined)
endif()

# The core uses neither exceptions nor RTTI: the UEFI build has none.
add_library(varnok_core_options INTERFACE)
target_link_libraries(varnok_core_options INTERFACE varnok_options)
target_compile_options(varnok_core_options INTERFACE -fno-exceptions -fno-rtti)
if(VARNOK_UEFI)
  target_link_libraries(varnok_core_options INTERFACE varnok_uefi_options)
endif()

# varnok_layer(NAME SOURCES file... [USES layer...]): a folder of the core.
function(varnok_layer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_library(varnok_${name} STATIC ${ARG_SOURCES})
  list(TRANSFORM ARG_USES PREPEND varnok_)
  target_link_libraries(varnok_${name} PRIVATE varnok_core_options PUBLIC ${ARG_USES})
endfunction()
