// Text of a fixed length, put together without the run-time library's formatting.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tessarn::detail {

// Writes into an array and keeps it ended by 0; what does not fit is left out.
class text {
 public:
  text(char* first, std::size_t room) noexcept : next_(first), last_(first + room - 1) { *next_ = 0; }

  std::size_t left() const noexcept { return static_cast<std::size_t>(last_ - next_); }
  text& operator<<(const char* words) noexcept {
    for (; *words && next_ != last_; ++words) *next_++ = *words;
    *next_ = 0;
    return *this;
  }
  text& operator<<(std::uint32_t number) noexcept {
    char digits[11];
    char* p = digits + 10;
    *p = 0;
    do *--p = static_cast<char>('0' + number % 10);
    while ((number /= 10) != 0);
    return *this << p;
  }
  text& hexadecimal(std::uint64_t number) noexcept {
    char digits[17];
    for (int i = 15; i >= 0; --i, number >>= 4) digits[i] = "0123456789abcdef"[number & 15];
    digits[16] = 0;
    return *this << digits;
  }

 private:
  char* next_;
  char* last_;
};

}  // namespace tessarn::detail
