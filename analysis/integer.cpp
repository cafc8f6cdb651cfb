// Integers of any length: sums, products, exact quotients, and their rounding to doubles.
#include "analysis/integer.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "analysis/doubled.h"

namespace tessarn::analysis {

namespace {

unsigned leading_zeros(std::uint32_t v) noexcept {
  unsigned n = 0;
  for (unsigned step = 16; step != 0; step /= 2)
    if (v >> (32 - step) == 0) {
      n += step;
      v <<= step;
    }
  return n;
}

}  // namespace

integer::integer(std::uint64_t v) {
  if (v == 0) return;
  reserve(2);
  digits_[0] = static_cast<std::uint32_t>(v);
  digits_[1] = static_cast<std::uint32_t>(v >> 32);
  size_ = 2;
  trim();
}

integer::integer(const integer& v) : negative_(v.negative_) {
  if (v.size_ == 0) return;
  reserve(v.size_);
  size_ = v.size_;
  std::copy(v.digits_.get(), v.digits_.get() + size_, digits_.get());
}

integer& integer::operator=(const integer& v) {
  if (this == &v) return *this;
  size_ = 0;
  reserve(v.size_);
  size_ = v.size_;
  negative_ = v.negative_;
  std::copy(v.digits_.get(), v.digits_.get() + size_, digits_.get());
  return *this;
}

void integer::swap(integer& v) noexcept {
  std::swap(digits_, v.digits_);
  std::swap(size_, v.size_);
  std::swap(capacity_, v.capacity_);
  std::swap(negative_, v.negative_);
}

// Makes room for n digits and keeps those there are.
void integer::reserve(std::size_t n) {
  if (n <= capacity_) return;
  const std::size_t grown = n + n / 2 + 2;
  std::unique_ptr<std::uint32_t[]> digits(new std::uint32_t[grown]);
  std::copy(digits_.get(), digits_.get() + size_, digits.get());
  digits_ = std::move(digits);
  capacity_ = grown;
}

std::size_t integer::bits() const noexcept { return size_ == 0 ? 0 : 32 * size_ - leading_zeros(digits_[size_ - 1]); }

std::size_t integer::low_zeros() const noexcept {
  if (size_ == 0) return 0;
  std::size_t i = 0;
  while (digits_[i] == 0) ++i;
  const std::uint32_t lowest = digits_[i] & (~digits_[i] + 1);
  return 32 * i + 31 - leading_zeros(lowest);
}

int compare_magnitudes(const integer& a, const integer& b) noexcept {
  if (a.size_ != b.size_) return a.size_ < b.size_ ? -1 : 1;
  for (std::size_t i = a.size_; i-- > 0;)
    if (a.digits_[i] != b.digits_[i]) return a.digits_[i] < b.digits_[i] ? -1 : 1;
  return 0;
}

// Adds v with the given sign.
void integer::add(const integer& v, bool negative) {
  if (v.size_ == 0) return;
  if (size_ == 0) {
    *this = v;
    negative_ = negative;
  } else if (negative == negative_) {
    add_magnitude(v);
  } else if (compare_magnitudes(*this, v) >= 0) {
    subtract_magnitude(v, false);
  } else {
    subtract_magnitude(v, true);
    negative_ = negative;
  }
}

void integer::add_magnitude(const integer& v) {
  const std::size_t shorter = v.size_, longer = std::max(size_, v.size_);
  reserve(longer + 1);
  std::fill(digits_.get() + size_, digits_.get() + longer + 1, 0u);
  std::uint64_t carry = 0;
  std::size_t i = 0;
  for (; i < shorter; ++i) {
    carry += std::uint64_t{digits_[i]} + v.digits_[i];
    digits_[i] = static_cast<std::uint32_t>(carry);
    carry >>= 32;
  }
  for (; carry != 0; ++i) {
    carry += digits_[i];
    digits_[i] = static_cast<std::uint32_t>(carry);
    carry >>= 32;
  }
  size_ = longer + 1;
  trim();
}

// |this| - |v|, or reversed |v| - |this|; the result is not negative.
void integer::subtract_magnitude(const integer& v, bool reversed) {
  const integer& larger = reversed ? v : *this;
  const integer& smaller = reversed ? *this : v;
  const std::size_t n = larger.size_, m = smaller.size_;
  reserve(n);
  std::uint64_t borrow = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint64_t d = std::uint64_t{larger.digits_[i]} - (i < m ? smaller.digits_[i] : 0u) - borrow;
    digits_[i] = static_cast<std::uint32_t>(d);
    borrow = d >> 63;
  }
  size_ = n;
  trim();
}

void integer::operator*=(std::uint32_t v) {
  reserve(size_ + 1);
  std::uint64_t carry = 0;
  for (std::size_t i = 0; i < size_; ++i) {
    carry += std::uint64_t{digits_[i]} * v;
    digits_[i] = static_cast<std::uint32_t>(carry);
    carry >>= 32;
  }
  digits_[size_++] = static_cast<std::uint32_t>(carry);
  trim();
}

void integer::operator<<=(std::size_t count) {
  if (size_ == 0 || count == 0) return;
  const std::size_t whole = count / 32;
  const unsigned part = count % 32;
  reserve(size_ + whole + 1);
  digits_[size_] = 0;
  for (std::size_t i = size_ + 1; i-- > 0;) {
    const std::uint64_t two = std::uint64_t{digits_[i]} << 32 | (i == 0 ? 0u : digits_[i - 1]);
    digits_[i + whole] = static_cast<std::uint32_t>(two >> (32 - part));
  }
  std::fill(digits_.get(), digits_.get() + whole, 0u);
  size_ += whole + 1;
  trim();
}

void integer::operator>>=(std::size_t count) noexcept {
  const std::size_t whole = count / 32;
  const unsigned part = count % 32;
  if (whole >= size_) {
    size_ = 0;
    return;
  }
  size_ -= whole;
  for (std::size_t i = 0; i < size_; ++i) {
    const std::uint32_t above = i + 1 < size_ ? digits_[i + whole + 1] : 0u;
    digits_[i] = static_cast<std::uint32_t>((std::uint64_t{above} << 32 | digits_[i + whole]) >> part);
  }
  trim();
}

std::uint64_t integer::leading(bool& rest) const noexcept {
  const unsigned shift = leading_zeros(digits_[size_ - 1]);
  const auto digit = [&](std::size_t below) -> std::uint64_t {
    return below < size_ ? digits_[size_ - 1 - below] : 0u;
  };
  std::uint64_t top = digit(0) << 32 | digit(1);
  std::uint64_t next = digit(2);
  if (shift != 0) top = top << shift | next >> (32 - shift);
  rest = static_cast<std::uint32_t>(next << shift) != 0;
  for (std::size_t i = 3; i < size_ && !rest; ++i) rest = digit(i) != 0;
  return top;
}

std::uint32_t integer::modulo(std::uint32_t m) const noexcept {
  std::uint64_t r = 0;
  for (std::size_t i = size_; i-- > 0;) r = (r << 32 | digits_[i]) % m;
  return static_cast<std::uint32_t>(negative_ && r != 0 ? m - r : r);
}

integer operator*(const integer& a, const integer& b) {
  integer p;
  if (a.size_ == 0 || b.size_ == 0) return p;
  p.reserve(a.size_ + b.size_);
  p.size_ = a.size_ + b.size_;
  p.negative_ = a.negative_ != b.negative_;
  std::fill(p.digits_.get(), p.digits_.get() + p.size_, 0u);
  for (std::size_t i = 0; i < b.size_; ++i) {
    std::uint64_t carry = 0;
    const std::uint64_t factor = b.digits_[i];
    for (std::size_t k = 0; k < a.size_; ++k) {
      carry += factor * a.digits_[k] + p.digits_[i + k];
      p.digits_[i + k] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    p.digits_[i + a.size_] = static_cast<std::uint32_t>(carry);
  }
  p.trim();
  return p;
}

// From the lowest digit on: each digit of the quotient is the one that makes the lowest remaining digit vanish (T.
// Jebelean, An algorithm for exact division, 1993).
integer exact_quotient(integer a, integer b) {
  integer q;
  if (a.size_ == 0) return q;
  const std::size_t zeros = b.low_zeros();
  a >>= zeros;
  b >>= zeros;
  std::uint32_t inverse = b.digits_[0];  // of b modulo 2^3; each step doubles the bits
  for (int i = 0; i < 4; ++i) inverse *= 2 - b.digits_[0] * inverse;
  if (a.size_ < b.size_) return q;  // not a multiple
  const std::size_t n = a.size_ - b.size_ + 1;
  q.reserve(n);
  q.size_ = n;
  q.negative_ = a.negative_ != b.negative_;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint64_t digit = static_cast<std::uint32_t>(a.digits_[i] * inverse);
    q.digits_[i] = static_cast<std::uint32_t>(digit);
    if (digit == 0) continue;
    std::uint64_t carry = 0;
    for (std::size_t k = 0; i + k < n; ++k) {  // what lies above the quotient's digits does not matter
      if (k >= b.size_ && carry == 0) break;
      carry += k < b.size_ ? digit * b.digits_[k] : 0u;
      const std::uint32_t low = static_cast<std::uint32_t>(carry);
      carry = (carry >> 32) + (a.digits_[i + k] < low ? 1u : 0u);
      a.digits_[i + k] -= low;
    }
  }
  q.trim();
  return q;
}

double rounded(const integer& v, long long e) noexcept {
  if (v.sign() == 0) return 0;
  const long long top = static_cast<long long>(v.bits()) - 1 + e;  // the exponent of the highest bit
  if (top > 1023) return v.sign() * std::numeric_limits<double>::infinity();
  if (top < -1075) return 0;
  const int kept_bits = top >= -1022 ? 53 : static_cast<int>(top) + 1075;
  bool rest;
  const std::uint64_t leading = v.leading(rest);
  std::uint64_t kept = kept_bits == 0 ? 0 : leading >> (64 - kept_bits);
  const std::uint64_t dropped = leading << kept_bits, half = std::uint64_t{1} << 63;
  if (dropped > half || (dropped == half && (rest || kept % 2 == 1))) ++kept;
  return v.sign() * scaled(static_cast<double>(kept), static_cast<int>(top) + 1 - kept_bits);
}

}  // namespace tessarn::analysis
