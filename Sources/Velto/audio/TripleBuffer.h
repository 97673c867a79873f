// Passes the latest value from one thread to another; newer values replace unread ones.
#pragma once

#include <array>
#include <atomic>

namespace velto {

// Single writer, single reader. Wait-free: neither side locks, allocates or fails. `T` is small and
// cheap to copy.
template <typename T>
class TripleBuffer {
public:
  // Writer only. Real-time safe.
  void publish(const T& value) {
    slots_[writing_] = value;
    writing_ = shared_.exchange(writing_ | fresh, std::memory_order_acq_rel) & index;
  }

  // The latest value; nullptr if nothing was published since the last fetch. Valid until the next
  // fetch that returns a value. Reader only. Real-time safe.
  const T* fetch() {
    if ((shared_.load(std::memory_order_relaxed) & fresh) == 0)
      return nullptr;
    reading_ = shared_.exchange(reading_, std::memory_order_acq_rel) & index;
    return &slots_[reading_];
  }

private:
  static constexpr unsigned index = 3; // the bits that name a slot
  static constexpr unsigned fresh = 4; // the shared slot holds a value not yet fetched
  static_assert(std::atomic<unsigned>::is_always_lock_free);

  std::array<T, 3> slots_{};        // each is accessed only by the holder of its index
  unsigned writing_ = 0;            // writer only
  unsigned reading_ = 1;            // reader only
  std::atomic<unsigned> shared_{2}; // both
};

} // namespace velto
