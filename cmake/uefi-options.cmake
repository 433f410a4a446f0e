# How a freestanding UEFI image is compiled and linked: no operating system, no runtime library, no red zone;
# the standard library's headers and its code that needs no system. Optimised as a whole, in one piece (in
# several, g++ 12 fails): that takes a sixth off the image.
add_library(varnok_uefi_options INTERFACE)
target_include_directories(varnok_uefi_options SYSTEM INTERFACE /usr/include/efi /usr/include/efi/x86_64)
target_compile_options(varnok_uefi_options INTERFACE
  -Oz -flto -ffreestanding -fno-threadsafe-statics -fno-asynchronous-unwind-tables -fno-stack-protector -mno-red-zone
  -mno-stack-arg-probe -fno-strict-aliasing -ffunction-sections -fdata-sections)
target_compile_definitions(varnok_uefi_options INTERFACE _GLIBCXX_EXTERN_TEMPLATE=0)

# Behind every library of ours, at the end of the link line.
set(CMAKE_CXX_STANDARD_LIBRARIES "-lstdc++ -lgcc")

# varnok_uefi_image(TARGET OUTPUT SUBSYSTEM libraries...): subsystem 10 is an application, 11 a boot-service
# driver.
function(varnok_uefi_image target output subsystem)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${output} SUFFIX ""
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
  target_link_options(${target} PRIVATE -nostdlib -static -s -Oz -flto -flto-partition=one -Wl,--subsystem,${subsystem} -Wl,-e,efi_main
    -Wl,-T,${PROJECT_SOURCE_DIR}/cmake/uefi-image.ld -Wl,--gc-sections -Wl,--dynamicbase -Wl,--no-insert-timestamp)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/uefi-image.ld)
  target_link_libraries(${target} PRIVATE varnok_core_options ${ARGN})
endfunction()
