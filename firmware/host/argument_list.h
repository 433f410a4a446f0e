// A program's arguments as its main takes them.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace varnok::host {

class ArgumentList {
 public:
  /// The program's name is the first text.
  explicit ArgumentList(std::vector<std::string> texts) : texts_(std::move(texts)) {
    pointers_.reserve(texts_.size() + 1);
    for (std::string& text : texts_) pointers_.push_back(text.data());
    pointers_.push_back(nullptr);
  }
  ArgumentList(const ArgumentList&) = delete;
  ArgumentList& operator=(const ArgumentList&) = delete;

  int Count() const { return static_cast<int>(texts_.size()); }
  /// Behind the last one stands nullptr.
  char** Pointers() { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

}  // namespace varnok::host
