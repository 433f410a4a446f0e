// The public UEFI headers, as this build includes them.
#pragma once

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
extern "C" {
#include <efi.h>
#include <efishell.h>
#include <efishellintf.h>
}
#pragma GCC diagnostic pop
