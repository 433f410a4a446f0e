// Commands in the order of the script, each of which owns the one behind it. Blocks hold lists of their own
// and nest as deep as a script likes: a list is destroyed by a loop.
#pragma once

#include <cstddef>
#include <iterator>

#include "firmware/pool.h"

namespace varnok {

class CCfgCommand;

class CommandList {
 public:
  /// Walks a list; the commands must outlive it.
  class Iterator {
   public:
    using difference_type = std::ptrdiff_t;
    using value_type = CCfgCommand;

    explicit Iterator(CCfgCommand* command = nullptr) : command_(command) {}
    CCfgCommand& operator*() const { return *command_; }
    CCfgCommand* operator->() const { return command_; }
    Iterator& operator++();
    Iterator operator++(int);
    bool operator==(const Iterator& other) const = default;

   private:
    CCfgCommand* command_;
  };

  CommandList() = default;
  ~CommandList() { clear(); }
  CommandList(const CommandList&) = delete;
  CommandList& operator=(const CommandList&) = delete;

  bool empty() const { return first_ == nullptr; }
  Iterator begin() const { return Iterator(first_.get()); }
  Iterator end() const { return Iterator(); }
  CCfgCommand& front() const { return *first_; }
  CCfgCommand& back() const { return *last_; }
  void push_back(PoolPtr<CCfgCommand> command);
  /// Moves all of another list behind this one.
  void Append(CommandList& other);
  void clear();

 private:
  PoolPtr<CCfgCommand> first_;
  CCfgCommand* last_ = nullptr;
};

}  // namespace varnok
