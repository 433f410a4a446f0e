// A singly linked list in pool memory, for the lists whose growth can fail with a status of its own.
#pragma once

#include <cstddef>
#include <iterator>
#include <utility>

#include "firmware/pool.h"

namespace varnok {

template <class T>
class PoolList {
  struct Node {
    T value{};
    PoolPtr<Node> next;
  };

  template <class Value>
  class BasicIterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = Value*;
    using reference = Value&;

    BasicIterator() = default;
    explicit BasicIterator(Node* node) : node_(node) {}
    Value& operator*() const { return node_->value; }
    Value* operator->() const { return &node_->value; }
    BasicIterator& operator++() {
      node_ = node_->next.get();
      return *this;
    }
    BasicIterator operator++(int) {
      BasicIterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const BasicIterator&) const = default;

   private:
    Node* node_ = nullptr;
  };

 public:
  using Iterator = BasicIterator<T>;
  using ConstIterator = BasicIterator<const T>;

  PoolList() = default;
  ~PoolList() {
    Free(first_);
    Free(spare_);
  }
  PoolList(PoolList&& other) noexcept { Swap(other); }
  PoolList& operator=(PoolList&& other) noexcept {
    Swap(other);
    return *this;
  }

  /// A new value at the end; null when the pool is exhausted.
  T* Append() {
    if (spare_ == nullptr && isReserved_) return &(last_->value = T{});
    PoolPtr<Node> node = spare_ == nullptr ? MakeInPool<Node>() : TakeSpare();
    if (node == nullptr) return nullptr;
    Node* appended = node.get();
    (last_ == nullptr ? first_ : last_->next) = std::move(node);
    last_ = appended;
    ++size_;
    return &appended->value;
  }

  /// Takes the memory for `count` values and one more. From then on the list takes none: every value appended
  /// behind those takes the place of the one before it. False when the pool is exhausted.
  bool Reserve(std::size_t count) {
    for (std::size_t made = 0; made <= count; ++made) {
      PoolPtr<Node> node = MakeInPool<Node>();
      if (node == nullptr) return false;
      PutSpare(std::move(node));
    }
    return isReserved_ = true;
  }

  /// A reserved list keeps its memory.
  void Clear() {
    if (!isReserved_) Free(first_);
    while (first_ != nullptr) {
      PoolPtr<Node> node = std::move(first_);
      first_ = std::move(node->next);
      node->value = T{};
      PutSpare(std::move(node));
    }
    last_ = nullptr;
    size_ = 0;
  }

  /// The value counted from 0; null past the end.
  const T* At(std::size_t index) const {
    const Node* node = first_.get();
    for (; node != nullptr && index > 0; --index) node = node->next.get();
    return node == nullptr ? nullptr : &node->value;
  }
  T* At(std::size_t index) { return const_cast<T*>(std::as_const(*this).At(index)); }

  bool IsEmpty() const { return first_ == nullptr; }
  std::size_t size() const { return size_; }
  Iterator begin() { return Iterator(first_.get()); }
  Iterator end() { return Iterator(); }
  ConstIterator begin() const { return ConstIterator(first_.get()); }
  ConstIterator end() const { return ConstIterator(); }

 private:
  /// Node by node: a long list must not cost stack depth.
  static void Free(PoolPtr<Node>& nodes) {
    while (nodes != nullptr) {
      PoolPtr<Node> rest = std::move(nodes->next);
      nodes = std::move(rest);
    }
  }
  void PutSpare(PoolPtr<Node> node) {
    node->next = std::move(spare_);
    spare_ = std::move(node);
  }
  PoolPtr<Node> TakeSpare() {
    PoolPtr<Node> node = std::move(spare_);
    spare_ = std::move(node->next);
    return node;
  }
  void Swap(PoolList& other) {
    std::swap(first_, other.first_);
    std::swap(spare_, other.spare_);
    std::swap(isReserved_, other.isReserved_);
    std::swap(last_, other.last_);
    std::swap(size_, other.size_);
  }

  PoolPtr<Node> first_;
  PoolPtr<Node> spare_;
  bool isReserved_ = false;
  Node* last_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace varnok
