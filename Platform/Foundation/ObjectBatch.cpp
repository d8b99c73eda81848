#include "Platform/Foundation/ObjectBatch.h"

#include "Platform/Foundation/BlockPool.h"
#include "Platform/Foundation/Object.h"

#include <sanitizer/asan_interface.h>

#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

namespace NS {

namespace {

constinit thread_local ObjectBatch* currentBatch = nullptr;

// The allocator's alignment. An object in a block stands half of it behind, and is told from one
// that has storage of its own by nothing but that.
constexpr std::size_t kGrain = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
static_assert(kGrain / 2 >= alignof(Object));

bool isInBlock(const void* storage) noexcept {
    return reinterpret_cast<std::uintptr_t>(storage) % kGrain != 0;
}

} // namespace

// A block of the pool with objects in it, and how many.
class ObjectBatch::Block {
  public:
    // Where the first object stands, and what there is for all of them.
    static constexpr std::size_t kFirst = kGrain + kGrain / 2;
    static constexpr std::size_t kRoom = BlockPool::kBlockSize - kFirst;

    static Block* make() {
        static_assert(sizeof(Block) <= kFirst);
        void* const storage = BlockPool::shared().take();
        auto* const block = ::new (storage) Block;
        ASAN_POISON_MEMORY_REGION(block->first(), kRoom);
        return block;
    }

    // The block of an object that is in one: blocks begin at multiples of their size.
    static Block& of(void* storage) noexcept {
        const auto offset = reinterpret_cast<std::uintptr_t>(storage) % BlockPool::kBlockSize;
        return *reinterpret_cast<Block*>(static_cast<std::byte*>(storage) - offset);
    }

    std::byte* first() noexcept { return reinterpret_cast<std::byte*>(this) + kFirst; }

    // For an object that ended. The size is its class's: characters behind it are not seen.
    void leave(void* storage, [[maybe_unused]] std::size_t size) noexcept {
        ASAN_POISON_MEMORY_REGION(storage, size);
        release(1);
    }

    // No objects come any more; so many did.
    void close(std::uint32_t objects) noexcept { release(kOpen - objects); }

  private:
    // While a batch fills the block this stands for what is still to come.
    static constexpr std::uint32_t kOpen = std::uint32_t{1} << 31U;

    void release(std::uint32_t count) noexcept {
        if (uses_.fetch_sub(count, std::memory_order_acq_rel) == count) {
            ASAN_UNPOISON_MEMORY_REGION(this, BlockPool::kBlockSize);
            BlockPool::shared().giveBack(this);
        }
    }

    std::atomic<std::uint32_t> uses_{kOpen};
};

ObjectBatch::ObjectBatch() noexcept : outer_(std::exchange(currentBatch, this)) {}

ObjectBatch::~ObjectBatch() {
    endBlock();
    currentBatch = outer_;
}

void* ObjectBatch::allocate(std::size_t size) {
    return currentBatch != nullptr ? currentBatch->place(size) : ::operator new(size);
}

void ObjectBatch::free(void* storage, std::size_t size) noexcept {
    if (isInBlock(storage)) {
        Block::of(storage).leave(storage, size);
    } else {
        ::operator delete(storage);
    }
}

void* ObjectBatch::place(std::size_t size) {
    const std::size_t whole = (size + kGrain - 1) / kGrain * kGrain;
    if (whole > room_) [[unlikely]] {
        return placeElsewhere(size);
    }
    std::byte* const place = next_;
    next_ += whole;
    room_ -= whole;
    ++placed_;
    ASAN_UNPOISON_MEMORY_REGION(place, size);
    return place;
}

// For an object that the block has no room for.
void* ObjectBatch::placeElsewhere(std::size_t size) {
    if (size > kLargestObject) {
        return ::operator new(size);
    }
    if (firstObjects_ < kFirstObjects) {
        ++firstObjects_;
        return ::operator new(size);
    }
    endBlock();
    startBlock();
    return place(size);
}

void ObjectBatch::startBlock() {
    block_ = Block::make();
    next_ = block_->first();
    room_ = Block::kRoom;
    placed_ = 0;
}

void ObjectBatch::endBlock() noexcept {
    if (block_ != nullptr) {
        std::exchange(block_, nullptr)->close(placed_);
        room_ = 0;
    }
}

void* Object::operator new(std::size_t size) {
    return ObjectBatch::allocate(size);
}

void Object::operator delete(void* storage, std::size_t size) noexcept {
    ObjectBatch::free(storage, size);
}

} // namespace NS
