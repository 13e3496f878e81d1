#include "tarn/platform/bulk_storage.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>

#if defined(__linux__)
#include <sys/mman.h>
#endif

// AddressSanitizer checks heap blocks one by one; inside a chunk it would see
// one big block. Sanitized builds therefore keep every array on the heap.
#if defined(__SANITIZE_ADDRESS__)
#define TARN_BULK_STORAGE 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARN_BULK_STORAGE 0
#endif
#endif
#ifndef TARN_BULK_STORAGE
#define TARN_BULK_STORAGE 1
#endif

namespace tarn::plist {
namespace {

// Every block is preceded by the chunk it came from, or nullptr for a block
// of the heap.
struct Chunk;
constexpr std::size_t kHeaderSize = 8;
static_assert(sizeof(Chunk*) <= kHeaderSize);

// One huge page: the unit the system maps at once when it grants them.
constexpr std::size_t kChunkSize = std::size_t{2} << 20;
// Arrays larger than this come from the heap even inside a scope, so that
// one chunk always holds many of them.
constexpr std::size_t kLargestBulkBlock = std::size_t{64} << 10;

// While a thread allocates from a chunk it holds this many references on
// it, less the blocks it has handed out; it returns the rest when it moves
// on. Frees can then never bring the count to zero early, and handing out a
// block needs no atomic operation.
constexpr std::uint64_t kOwnerReferences = std::uint64_t{1} << 62;

struct Chunk {
  std::atomic<std::uint64_t> references;
};
constexpr std::size_t kChunkHeaderSize = 64;

std::size_t wholeChunks(std::size_t bytes) {
  return (bytes + kChunkSize - 1) & ~(kChunkSize - 1);
}

// `bytes` (a multiple of kChunkSize) of memory aligned to kChunkSize.
void* mapHugePages(std::size_t bytes) {
#if defined(__linux__)
  // Map a chunk more and trim it to an aligned range: huge pages need their
  // natural alignment.
  void* raw = ::mmap(nullptr, bytes + kChunkSize, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (raw == MAP_FAILED) throw std::bad_alloc();
  const auto start = reinterpret_cast<std::uintptr_t>(raw);
  const std::uintptr_t aligned = (start + kChunkSize - 1) & ~(kChunkSize - 1);
  if (aligned != start) ::munmap(raw, aligned - start);
  const std::uintptr_t tail = aligned + bytes;
  if (tail != start + bytes + kChunkSize) {
    ::munmap(reinterpret_cast<void*>(tail), start + bytes + kChunkSize - tail);
  }
  void* memory = reinterpret_cast<void*>(aligned);
#ifdef MADV_HUGEPAGE
  ::madvise(memory, bytes, MADV_HUGEPAGE);
#endif
  return memory;
#else
  void* memory = std::aligned_alloc(kChunkSize, bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
#endif
}

void unmapHugePages(void* memory, std::size_t bytes) noexcept {
#if defined(__linux__)
  ::munmap(memory, bytes);
#else
  (void)bytes;
  std::free(memory);
#endif
}

Chunk* mapChunk() {
  return new (mapHugePages(kChunkSize)) Chunk{};
}

void unmapChunk(Chunk* chunk) noexcept {
  chunk->~Chunk();
  unmapHugePages(chunk, kChunkSize);
}

void release(Chunk* chunk, std::uint64_t references) noexcept {
  if (chunk->references.fetch_sub(references, std::memory_order_acq_rel) == references) {
    unmapChunk(chunk);
  }
}

// The chunk a thread is filling, and how far.
class ThreadChunk {
 public:
  ~ThreadChunk() { retire(); }

  void* allocate(std::size_t bytes) {
    if (static_cast<std::size_t>(end_ - next_) < bytes) {
      retire();
      chunk_ = mapChunk();
      chunk_->references.store(kOwnerReferences, std::memory_order_relaxed);
      handedOut_ = 0;
      next_ = reinterpret_cast<char*>(chunk_) + kChunkHeaderSize;
      end_ = reinterpret_cast<char*>(chunk_) + kChunkSize;
    }
    char* block = next_;
    next_ += bytes;
    ++handedOut_;
    *reinterpret_cast<Chunk**>(block) = chunk_;
    return block + kHeaderSize;
  }

 private:
  void retire() noexcept {
    if (chunk_ == nullptr) return;
    release(chunk_, kOwnerReferences - handedOut_);
    chunk_ = nullptr;
    next_ = end_ = nullptr;
  }

  Chunk* chunk_ = nullptr;
  std::uint64_t handedOut_ = 0;
  char* next_ = nullptr;
  char* end_ = nullptr;
};

// Kept apart from the chunk so that it stays readable while the thread's
// objects are being destroyed.
thread_local int scopeDepth = 0;
thread_local ThreadChunk threadChunk;

}  // namespace

BulkStorageScope::BulkStorageScope() {
  ++scopeDepth;
}
BulkStorageScope::~BulkStorageScope() {
  --scopeDepth;
}

namespace detail {

void* AllocateDictionaryStorage(std::size_t bytes) {
  const std::size_t total =
      (kHeaderSize + bytes + kDictionaryStorageAlignment - 1) & ~(kDictionaryStorageAlignment - 1);
  if (TARN_BULK_STORAGE && scopeDepth > 0 && total <= kLargestBulkBlock) {
    return threadChunk.allocate(total);
  }
  void* raw = std::malloc(kHeaderSize + bytes);
  if (raw == nullptr) throw std::bad_alloc();
  *static_cast<Chunk**>(raw) = nullptr;
  return static_cast<char*>(raw) + kHeaderSize;
}

void FreeDictionaryStorage(void* block) noexcept {
  if (block == nullptr) return;
  char* raw = static_cast<char*>(block) - kHeaderSize;
  Chunk* chunk = *reinterpret_cast<Chunk**>(raw);
  if (chunk == nullptr) {
    std::free(raw);
  } else {
    release(chunk, 1);
  }
}

void* AllocateLargeBlock(std::size_t bytes) {
  if (!TARN_BULK_STORAGE || bytes < kChunkSize) {
    void* block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block == nullptr) throw std::bad_alloc();
    return block;
  }
  return mapHugePages(wholeChunks(bytes));
}

void FreeLargeBlock(void* block, std::size_t bytes) noexcept {
  if (!TARN_BULK_STORAGE || bytes < kChunkSize) {
    std::free(block);
  } else {
    unmapHugePages(block, wholeChunks(bytes));
  }
}

}  // namespace detail
}  // namespace tarn::plist
