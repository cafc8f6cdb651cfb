// A table from the address of an array to a small value, such as the number of its holders, for which the objects that
// hold the array have no room. Most arrays have no entry; finding that out takes one atomic load.
//
// Tables are constant-initialised and never destroyed: they serve objects of every age. A table without entries holds
// no memory.
//
// The table is cut into parts by the address, each with its number of entries and its lock. An entry is made, changed
// and erased under the lock. The number changes by read-modify-write operations with release order alone, so whoever
// reads 0 with acquire order sees everything that was done before the last entry of the part was erased.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>
#include <utility>

#if defined(_WIN32)
extern "C" __declspec(dllimport) void __stdcall Sleep(unsigned long);
#endif

namespace tessarn::detail {

// A lock for sections of a few instructions, which no class of the standard library offers without start-up code on
// every platform.
class short_lock {
 public:
  constexpr short_lock() noexcept = default;
  void lock() noexcept {
    while (held_.exchange(1, std::memory_order_acquire) != 0)
      while (held_.load(std::memory_order_relaxed) != 0) let_others_run();
  }
  void unlock() noexcept { held_.store(0, std::memory_order_release); }

 private:
  static void let_others_run() noexcept {
#if defined(_WIN32)
    Sleep(0);
#else
    std::this_thread::yield();
#endif
  }
  std::atomic<int> held_{0};  // RISC-V exchanges words, and would need a library of its own for a byte
};

template <class Value>
class side_table {
 public:
  constexpr side_table() noexcept = default;
  side_table(const side_table&) = delete;

  // Calls change(value) for the entry of key, which is made with the value Value{} where there is none. Throws
  // std::bad_alloc, and changes nothing then.
  template <class Change>
  void change(const void* key, Change change) {
    part& p = part_of(key);
    const holder hold(p.lock);
    change(p.found_or_made(key).value);
  }

  // Calls use(value) for the entry of key, which is erased where that gives false. False when there is no entry.
  template <class Use>
  bool use(const void* key, Use use) noexcept {
    part& p = part_of(key);
    if (p.used.load(std::memory_order_acquire) == 0) return false;
    const holder hold(p.lock);
    slot* s = p.find(key);
    if (s == nullptr) return false;
    if (!use(s->value)) p.erase(s);
    return true;
  }

  // False when there is no entry.
  bool erase(const void* key) noexcept {
    return use(key, [](Value&) { return false; });
  }

 private:
  struct slot {
    const void* key = nullptr;  // none in a free one
    Value value{};
  };

  struct holder {
    explicit holder(short_lock& l) noexcept : lock(l) { lock.lock(); }
    ~holder() { lock.unlock(); }
    short_lock& lock;
  };

  static constexpr std::size_t parts = 16, few = 8;

  static std::size_t scattered(const void* key) noexcept {
    constexpr std::uint64_t golden = 0x9E3779B97F4A7C15u;
    return static_cast<std::size_t>((reinterpret_cast<std::uintptr_t>(key) * golden) >> 20);
  }

  // Open addressing with linear probing; at least a quarter of the slots is free. The first few slots take no memory
  // from the heap.
  struct alignas(64) part {
    std::atomic<std::size_t> used{0};
    short_lock lock;
    slot few_slots[few];
    slot* many_slots = nullptr;
    std::size_t size = few;

    slot* slots() noexcept { return many_slots != nullptr ? many_slots : few_slots; }
    std::size_t home(const void* key) const noexcept { return (scattered(key) / parts) & (size - 1); }
    std::size_t after(std::size_t i) const noexcept { return (i + 1) & (size - 1); }

    // The slot of key, or the free one where it belongs.
    slot* place(const void* key) noexcept {
      std::size_t i = home(key);
      while (slots()[i].key != nullptr && slots()[i].key != key) i = after(i);
      return slots() + i;
    }

    slot* find(const void* key) noexcept {
      slot* s = place(key);
      return s->key != nullptr ? s : nullptr;
    }

    slot& found_or_made(const void* key) {
      slot* s = place(key);
      if (s->key != nullptr) return *s;
      const std::size_t n = used.load(std::memory_order_relaxed);
      if (4 * (n + 1) > 3 * size) {
        grow();
        s = place(key);
      }
      *s = {key, Value{}};
      used.fetch_add(1, std::memory_order_release);
      return *s;
    }

    void grow() {
      std::unique_ptr<slot[]> larger(new slot[2 * size]);
      slot* const old_slots = slots();
      const std::size_t old_size = size;
      const std::unique_ptr<slot[]> released(many_slots);
      many_slots = larger.release();
      size = 2 * old_size;
      for (std::size_t i = 0; i < old_size; ++i) {
        const slot moved = std::exchange(old_slots[i], slot{});
        if (moved.key != nullptr) *place(moved.key) = moved;
      }
    }

    // Moves those up that probing would no longer find.
    void erase(slot* s) noexcept {
      std::size_t hole = static_cast<std::size_t>(s - slots());
      for (std::size_t i = after(hole); slots()[i].key != nullptr; i = after(i)) {
        const std::size_t distance = (i - home(slots()[i].key)) & (size - 1);
        if (distance < ((i - hole) & (size - 1))) continue;
        slots()[hole] = slots()[i];
        hole = i;
      }
      slots()[hole] = slot{};
      if (used.fetch_sub(1, std::memory_order_release) > 1) return;
      delete[] many_slots;
      many_slots = nullptr;
      size = few;
    }
  };

  part& part_of(const void* key) noexcept { return parts_[scattered(key) % parts]; }

  part parts_[parts];
};

}  // namespace tessarn::detail
