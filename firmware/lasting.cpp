#include "firmware/lasting.h"

#include <utility>

namespace varnok {
namespace {

LastingSlot* newest = nullptr;

}  // namespace

void LastingSlot::Keep(void* made) {
  object = made;
  next = std::exchange(newest, this);
}

void ForgetProgramState() {
  while (newest != nullptr) {
    LastingSlot& slot = *std::exchange(newest, newest->next);
    slot.destroy(std::exchange(slot.object, nullptr));
  }
}

}  // namespace varnok
