// Numbers in [0, 4) with one 32-bit word before the point and as many behind it as wanted, the most significant first.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace tessarn::angles {

using word = std::uint32_t;

// Up to 24 words behind the point are kept in the object itself: no argument that anybody has found needs more.
class fixed_point {
 public:
  explicit fixed_point(std::size_t words_behind) : size_(words_behind + 1) {
    if (size_ > few) many_ = std::make_unique<word[]>(size_);
    std::fill_n(begin(), size_, word{0});
  }
  fixed_point(const fixed_point& b) : size_(b.size_) {
    if (size_ > few) many_ = std::make_unique<word[]>(size_);
    std::copy_n(b.begin(), size_, begin());
  }
  fixed_point& operator=(const fixed_point& b) noexcept {  // of one size
    std::copy_n(b.begin(), size_, begin());
    return *this;
  }

  std::size_t size() const noexcept { return size_; }
  word* begin() noexcept { return many_ ? many_.get() : few_; }
  const word* begin() const noexcept { return many_ ? many_.get() : few_; }
  word* end() noexcept { return begin() + size_; }
  const word* end() const noexcept { return begin() + size_; }
  word& operator[](std::size_t i) noexcept { return begin()[i]; }
  word operator[](std::size_t i) const noexcept { return begin()[i]; }

  // The first word that is not 0; size() for the number 0.
  std::size_t leading_zeros() const noexcept {
    return static_cast<std::size_t>(std::find_if(begin(), end(), [](word w) { return w != 0; }) - begin());
  }

  // Sums and differences of numbers of one size. A difference is not negative.
  fixed_point& operator+=(const fixed_point& b) noexcept {
    word* w = begin();
    const word* v = b.begin();
    std::uint64_t carry = 0;
    for (std::size_t i = size_; i-- > 0; carry >>= 32) w[i] = static_cast<word>(carry += std::uint64_t{w[i]} + v[i]);
    return *this;
  }
  fixed_point& operator-=(const fixed_point& b) noexcept {
    word* w = begin();
    const word* v = b.begin();
    std::uint64_t borrow = 0;
    for (std::size_t i = size_; i-- > 0;) {
      const std::uint64_t d = std::uint64_t{w[i]} - v[i] - borrow;
      w[i] = static_cast<word>(d);
      borrow = d >> 63;
    }
    return *this;
  }
  // Less than one unit of the last word too small.
  fixed_point& operator/=(word d) noexcept {
    std::uint64_t rest = 0;
    for (std::size_t i = leading_zeros(); i < size_; ++i) {
      rest = rest << 32 | begin()[i];
      begin()[i] = static_cast<word>(rest / d);
      rest %= d;
    }
    return *this;
  }

 private:
  static constexpr std::size_t few = 25;
  std::size_t size_;
  word few_[few];
  std::unique_ptr<word[]> many_;
};

// a b below 4, of one size n + 1. Partial products of a weight below the last word but one are left out and the rest is
// cut: at most n + 1 units too small, never too large.
inline fixed_point product(const fixed_point& a, const fixed_point& b) {
  const std::size_t n = a.size() - 1;
  const std::size_t first = b.leading_zeros();
  // Column k of the sum has the weight of word k - 1 of the result; the last column is the guard.
  fixed_point p(n + 2);
  for (std::size_t i = a.leading_zeros(); i <= n; ++i) {
    const std::uint64_t digit = a[i];
    std::uint64_t carry = 0;
    for (std::size_t j = std::min(n, n + 1 - i) + 1; j-- > first; carry >>= 32)
      p[i + j + 1] = static_cast<word>(carry += digit * b[j] + p[i + j + 1]);
    for (std::size_t k = i + first + 1; carry != 0 && k-- > 0; carry >>= 32) p[k] = static_cast<word>(carry += p[k]);
  }
  fixed_point result(n);
  std::copy_n(p.begin() + 1, n + 1, result.begin());
  return result;
}

}  // namespace tessarn::angles
