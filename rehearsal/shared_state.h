// What the processes of one exploration share: which states were seen, how many roads there are, and how many
// processes may run at once.
#pragma once

#include <sys/types.h>

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

  /// One more road; false when there are enough.
  bool BeginRoad();
  /// So many roads are left out.
  void Cut(std::size_t roads) { block_->cut += roads; }
  /// The road turns out to be none.
  void DropRoad();
  std::size_t Roads() const { return block_->roads; }
  std::size_t Cut() const { return block_->cut; }

  /// Leave for one more process to run.
  bool TakeCore();
  void GiveCore() { ++block_->cores; }

  /// The process that wanted all this is gone.
  bool IsAbandoned() const;

 private:
  static constexpr std::size_t kSlots = std::size_t{1} << 22;

  struct Block {
    std::atomic<std::size_t> roads;
    std::atomic<std::size_t> cut;
    std::atomic<std::size_t> states;
    std::atomic<int> cores;
    std::atomic<std::uint64_t> slots[kSlots];  ///< 0: free
  };

  SharedState(Block* block, std::size_t limit);

  Block* block_;
  std::size_t limit_;
  pid_t owner_;
};

}  // namespace varnok::rehearsal
