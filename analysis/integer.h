// Integers of any length, for signs and zeros that are exact.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tessarn::analysis {

// A sign and a magnitude in 32-bit digits, the lowest first; the highest digit is not 0, and zero has no digits.
// Products and quotients are those of the school: the numbers of this room have tens to hundreds of digits.
class integer {
 public:
  integer() noexcept = default;
  explicit integer(std::uint64_t v);
  integer(const integer& v);
  integer(integer&& v) noexcept { swap(v); }
  integer& operator=(const integer& v);
  integer& operator=(integer&& v) noexcept {
    swap(v);
    return *this;
  }
  ~integer() = default;

  int sign() const noexcept { return size_ == 0 ? 0 : negative_ ? -1 : 1; }
  std::size_t digits() const noexcept { return size_; }
  // The number of bits of the magnitude; 0 of zero.
  std::size_t bits() const noexcept;
  // The number of zero bits at the low end; 0 of zero.
  std::size_t low_zeros() const noexcept;

  void negate() noexcept { negative_ = !negative_; }
  void operator+=(const integer& v) { add(v, v.negative_); }
  void operator-=(const integer& v) { add(v, !v.negative_); }
  void operator*=(std::uint32_t v);
  void operator<<=(std::size_t count);
  // Drops so many bits of the magnitude.
  void operator>>=(std::size_t count) noexcept;

  // The 64 highest bits, the highest of them 1; `rest` tells whether a lower bit is 1. The integer is not 0.
  std::uint64_t leading(bool& rest) const noexcept;
  // The residue in [0, m).
  std::uint32_t modulo(std::uint32_t m) const noexcept;

  friend integer operator*(const integer& a, const integer& b);
  // a / b, where b is not 0 and divides a.
  friend integer exact_quotient(integer a, integer b);
  // The sign of |a| - |b|.
  friend int compare_magnitudes(const integer& a, const integer& b) noexcept;

 private:
  void swap(integer& v) noexcept;
  void add(const integer& v, bool negative);
  void add_magnitude(const integer& v);
  void subtract_magnitude(const integer& v, bool reversed);
  void reserve(std::size_t n);
  void trim() noexcept {
    while (size_ != 0 && digits_[size_ - 1] == 0) --size_;
  }

  std::unique_ptr<std::uint32_t[]> digits_;
  std::size_t size_ = 0, capacity_ = 0;
  bool negative_ = false;
};

// v 2^e rounded to the nearest double, ties to even, infinite where it is too large.
double rounded(const integer& v, long long e) noexcept;

}  // namespace tessarn::analysis
