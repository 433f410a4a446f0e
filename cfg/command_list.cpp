#include "cfg/command_list.h"

#include <utility>

#include "cfg/block.h"
#include "cfg/cfg_command.h"

namespace varnok {

CommandList::Iterator& CommandList::Iterator::operator++() {
  command_ = command_->next_.get();
  return *this;
}

CommandList::Iterator CommandList::Iterator::operator++(int) {
  Iterator before = *this;
  ++*this;
  return before;
}

void CommandList::push_back(PoolPtr<CCfgCommand> command) {
  CCfgCommand* added = command.get();
  (empty() ? first_ : last_->next_) = std::move(command);
  last_ = added;
}

void CommandList::Append(CommandList& other) {
  if (other.empty()) return;
  CCfgCommand* last = other.last_;
  (empty() ? first_ : last_->next_) = std::move(other.first_);
  last_ = last;
  other.last_ = nullptr;
}

void CommandList::clear() {
  while (!empty()) {
    // What a block owns is destroyed behind it, not within it.
    if (CCfgBlock* block = first_->AsBlock()) block->Release(*this);
    first_ = std::move(first_->next_);
  }
  last_ = nullptr;
}

}  // namespace varnok
