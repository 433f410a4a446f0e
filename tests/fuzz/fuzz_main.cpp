// libFuzzer over the target that VARNOK_FUZZ names.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "tests/fuzz/target.h"

namespace {

const varnok::fuzz::Target* target = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* name = std::getenv("VARNOK_FUZZ");
  target = varnok::fuzz::FindTarget(name == nullptr ? "" : name);
  if (target != nullptr) return 0;
  std::fprintf(stderr, "VARNOK_FUZZ names no target; there is:\n");
  for (const auto& each : varnok::fuzz::Targets())
    std::fprintf(stderr, "%.*s\n", static_cast<int>(each.name.size()), each.name.data());
  std::exit(1);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  target->run({reinterpret_cast<const char*>(data), size});
  return 0;
}
