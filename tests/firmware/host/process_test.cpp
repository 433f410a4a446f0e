#include <gtest/gtest.h>

#include <new>

#include "firmware/host/host_firmware.h"

namespace varnok::host {
namespace {

// The sanitizer's own allocator has no handler and reports the request instead.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__clang__)
TEST(ProcessDeathTest, WithoutMemoryEndsWithAMessageAndItsOwnStatus) {
  auto exhaust = [] {
    PrepareProcess();
    volatile std::size_t tooMuch = static_cast<std::size_t>(-1) / 4;
    ::operator delete(::operator new(tooMuch));
  };
  EXPECT_EXIT(exhaust(), ::testing::ExitedWithCode(kOutOfMemoryStatus), "varnok: out of memory; stopped.\n");
}
#endif

}  // namespace
}  // namespace varnok::host
