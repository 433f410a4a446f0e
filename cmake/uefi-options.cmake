# How a freestanding UEFI image is compiled and linked: no operating system, no runtime library, no red zone;
# of the standard library its headers alone. Optimised as a whole, in one piece (in several, g++ 12 fails):
# that takes a sixth off the image. The calling convention of System V passes text views and spans in
# registers and takes a twentieth off; calls of the firmware are declared with the platform's. The compiler
# then forgets that it compiles for 64-bit Windows headers, so it is told.
add_library(varnok_uefi_options INTERFACE)
target_include_directories(varnok_uefi_options SYSTEM INTERFACE /usr/include/efi /usr/include/efi/x86_64)
target_compile_options(varnok_uefi_options INTERFACE
  -Oz -flto -ffreestanding -fno-threadsafe-statics -fno-asynchronous-unwind-tables -fno-stack-protector -mno-red-zone
  -mno-stack-arg-probe -fno-strict-aliasing -malign-data=abi -fmerge-all-constants -mabi=sysv -ffunction-sections -fdata-sections)
target_compile_definitions(varnok_uefi_options INTERFACE _GLIBCXX_EXTERN_TEMPLATE=0 GNU_EFI_USE_MS_ABI _WIN64=1)

# No library of the compiler's: those have the other calling convention.
set(CMAKE_CXX_STANDARD_LIBRARIES "")

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
