// Storage for the key/value arrays of property-list dictionaries.
//
// A document of a million entries is a million small dictionaries. Taking
// each one's array from the heap, and touching fresh memory a small page at a
// time, was most of the cost of reading or building such a document. While a
// BulkStorageScope is open on a thread, dictionaries built on that thread
// take their arrays from large chunks instead: a bump of a pointer each, in
// memory backed by huge pages where the system grants them. A chunk is given
// back when the last array in it is freed, on whatever thread that happens.
// Outside a scope, arrays come from the heap as usual, so that dictionaries
// kept for a long time do not hold a chunk each.
#pragma once

#include <cstddef>
#include <limits>
#include <new>
#include <vector>

namespace tarn::plist {

// Opens bulk storage for the current thread until destroyed. Scopes nest.
// Space freed inside a chunk is not reused until the whole chunk is free, so
// open one only where a whole tree is built at once (reading or saving a
// document), not around long edits of dictionaries that grow and shrink.
class BulkStorageScope {
 public:
  BulkStorageScope();
  ~BulkStorageScope();
  BulkStorageScope(const BulkStorageScope&) = delete;
  BulkStorageScope& operator=(const BulkStorageScope&) = delete;
};

namespace detail {

// Blocks are aligned to 8 bytes, enough for a dictionary's items.
constexpr std::size_t kDictionaryStorageAlignment = 8;
void* AllocateDictionaryStorage(std::size_t bytes);
void FreeDictionaryStorage(void* block) noexcept;

// Large blocks (2 MB and more) mapped on huge-page boundaries and advised
// for huge pages; smaller ones from the heap.
void* AllocateLargeBlock(std::size_t bytes);
void FreeLargeBlock(void* block, std::size_t bytes) noexcept;

}  // namespace detail

// For the big scratch arrays of readers and writers (offset tables, hash
// tables): looked up at random, they would otherwise miss the address
// translation cache on almost every access.
template <class T>
struct LargeBlockAllocator {
  using value_type = T;

  LargeBlockAllocator() = default;
  template <class U>
  LargeBlockAllocator(const LargeBlockAllocator<U>&) {}

  T* allocate(std::size_t count) {
    static_assert(alignof(T) <= alignof(std::max_align_t));
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
      throw std::bad_array_new_length();
    }
    return static_cast<T*>(detail::AllocateLargeBlock(count * sizeof(T)));
  }
  void deallocate(T* block, std::size_t count) noexcept {
    detail::FreeLargeBlock(block, count * sizeof(T));
  }

  friend bool operator==(const LargeBlockAllocator&, const LargeBlockAllocator&) { return true; }
};

template <class T>
using LargeVector = std::vector<T, LargeBlockAllocator<T>>;

template <class T>
struct DictionaryAllocator {
  using value_type = T;

  DictionaryAllocator() = default;
  template <class U>
  DictionaryAllocator(const DictionaryAllocator<U>&) {}

  T* allocate(std::size_t count) {
    static_assert(alignof(T) <= detail::kDictionaryStorageAlignment);
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
      throw std::bad_array_new_length();
    }
    return static_cast<T*>(detail::AllocateDictionaryStorage(count * sizeof(T)));
  }
  void deallocate(T* block, std::size_t) noexcept { detail::FreeDictionaryStorage(block); }

  friend bool operator==(const DictionaryAllocator&, const DictionaryAllocator&) { return true; }
};

}  // namespace tarn::plist
