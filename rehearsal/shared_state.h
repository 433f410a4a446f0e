// What the processes of one exploration share: which states were seen, how many roads there are, and how many
// processes may run at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace varnok::rehearsal {

class SharedState {
 public:
  /// Null, with `error` set, when the system gives no memory to share. `limit` is the most roads, `cores` the
  /// most processes at once.
  static std::unique_ptr<SharedState> Make(std::size_t limit, unsigned cores, std::string& error);
  ~SharedState();
  SharedState(const SharedState&) = delete;
  SharedState& operator=(const SharedState&) = delete;

  /// True when nobody was there before.
  bool Enter(std::uint64_t state);

  /// One more road; false when there are enough, which is counted as one that was cut.
  bool BeginRoad();
  /// The road that was begun cannot be gone.
  void CutRoad();
  /// The road turns out to be none.
  void DropRoad();
  std::size_t Roads() const { return block_->roads; }
  std::size_t Cut() const { return block_->cut; }

  /// Leave for one more process to run.
  bool TakeCore();
  void GiveCore() { ++block_->cores; }

 private:
  static constexpr std::size_t kSlots = std::size_t{1} << 22;

  struct Block {
    std::atomic<std::size_t> roads;
    std::atomic<std::size_t> cut;
    std::atomic<std::size_t> states;
    std::atomic<int> cores;
    std::atomic<std::uint64_t> slots[kSlots];  ///< 0: free
  };

  SharedState(Block* block, std::size_t limit) : block_(block), limit_(limit) {}

  Block* block_;
  std::size_t limit_;
};

}  // namespace varnok::rehearsal
