// 16-bit text in pool memory, for the copies whose allocation can fail with a status of its own.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

#include "firmware/pool.h"

namespace varnok {

class PoolText {
 public:
  /// Replaces the text by a copy of `text`. False, with no text left, when the pool is exhausted.
  bool Assign(std::u16string_view text) {
    text_.reset();
    size_ = 0;
    void* memory = TheFirmware().AllocatePool((text.size() + 1) * sizeof(char16_t));
    if (memory == nullptr) return false;
    text_.reset(new (memory) char16_t[text.size() + 1]);
    std::copy(text.begin(), text.end(), text_.get());
    text_.get()[text.size()] = u'\0';
    size_ = text.size();
    return true;
  }

  bool IsAssigned() const { return text_ != nullptr; }
  std::u16string_view View() const { return {text_.get(), size_}; }

 private:
  std::unique_ptr<char16_t, PoolDeleter> text_;
  std::size_t size_ = 0;
};

}  // namespace varnok
