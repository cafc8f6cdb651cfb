// Working memory of a function or an object whose size is known when it starts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/storage.h"

namespace tessarn::detail {

// n values of T, not initialised: inside the object up to Few of them, so that small sizes allocate nothing; on the
// heap above that. They begin at a multiple of Alignment bytes. A size that cannot be allocated throws as new[] does,
// from the constructor; the destructor releases the memory.
template <class T, std::size_t Few, std::size_t Alignment = alignof(T)>
class workspace {
 public:
  explicit workspace(std::size_t n) {
    if (n <= Few) return;
    many_.reset(new T[checked_sum(n, spare)]);
    data_ = first_aligned(many_.get());
  }
  workspace(const workspace&) = delete;

  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }

 private:
  // new[] gives the alignment of T alone: so many values more are asked for, to skip some of them.
  static constexpr std::size_t spare = Alignment > alignof(T) ? Alignment / sizeof(T) : 0;

  static T* first_aligned(T* p) noexcept {
    const std::size_t past = reinterpret_cast<std::uintptr_t>(p) % Alignment;
    return past == 0 ? p : p + (Alignment - past) / sizeof(T);
  }

  std::unique_ptr<T[]> many_;
  T* data_ = few_;
  alignas(Alignment) T few_[Few];
};

}  // namespace tessarn::detail
