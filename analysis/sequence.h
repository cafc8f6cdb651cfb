// A list that grows at its end, for values that can be moved.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "core/storage.h"

namespace tessarn::analysis {

template <class T>
class sequence {
 public:
  sequence() noexcept = default;
  explicit sequence(std::size_t n) : items_(new T[n]()), size_(n), capacity_(n) {}
  sequence(sequence&& s) noexcept
      : items_(std::move(s.items_)), size_(std::exchange(s.size_, 0)), capacity_(std::exchange(s.capacity_, 0)) {}
  sequence& operator=(sequence&& s) noexcept {
    items_ = std::move(s.items_);
    size_ = std::exchange(s.size_, 0);
    capacity_ = std::exchange(s.capacity_, 0);
    return *this;
  }

  sequence clone() const {
    sequence copy(size_);
    for (std::size_t i = 0; i < size_; ++i) copy[i] = items_[i];
    return copy;
  }

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  T& operator[](std::size_t i) noexcept { return items_[i]; }
  const T& operator[](std::size_t i) const noexcept { return items_[i]; }
  T& back() noexcept { return items_[size_ - 1]; }
  const T& back() const noexcept { return items_[size_ - 1]; }
  T* begin() noexcept { return items_.get(); }
  T* end() noexcept { return items_.get() + size_; }
  const T* begin() const noexcept { return items_.get(); }
  const T* end() const noexcept { return items_.get() + size_; }

  void push(T&& item) {
    if (size_ == capacity_) {
      const std::size_t grown = detail::checked_sum(detail::checked_product(2, capacity_), 4);
      std::unique_ptr<T[]> items(new T[grown]());
      for (std::size_t i = 0; i < size_; ++i) items[i] = std::move(items_[i]);
      items_ = std::move(items);
      capacity_ = grown;
    }
    items_[size_++] = std::move(item);
  }
  // Removes the last item and gives it back.
  T pop() noexcept { return std::move(items_[--size_]); }
  // Keeps the first n items.
  void shorten(std::size_t n) noexcept { size_ = n; }

 private:
  std::unique_ptr<T[]> items_;
  std::size_t size_ = 0, capacity_ = 0;
};

}  // namespace tessarn::analysis
