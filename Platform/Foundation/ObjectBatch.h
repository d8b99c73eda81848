#pragma once

#include <cstddef>
#include <cstdint>

namespace NS {

// Until it ends, the small objects that its thread makes stand together, many in one allocation:
// for whoever makes a listing's thousands, which are mostly let go of together as well. They are
// objects like any other, on any thread, for as long as someone refers to them.
//
// A block of 4 KiB goes back when its last object has ended, and can then hold others: of few
// objects that are kept, each may keep as much from them. What is kept from the system is bounded
// (BlockPool). The first objects of a batch have storage of their own. Batches may stand within one
// another.
class ObjectBatch {
  public:
    // Objects that take more have storage of their own.
    static constexpr std::size_t kLargestObject = 256;
    // How many of a batch's objects have storage of their own before it starts a block.
    static constexpr unsigned kFirstObjects = 32;

    ObjectBatch() noexcept;
    ~ObjectBatch();
    ObjectBatch(const ObjectBatch&) = delete;
    ObjectBatch& operator=(const ObjectBatch&) = delete;

  private:
    friend class Object;
    class Block;

    // Storage for an object, in the thread's batch where there is one.
    static void* allocate(std::size_t size);
    static void free(void* storage, std::size_t size) noexcept;

    void* place(std::size_t size);
    void* placeElsewhere(std::size_t size);
    void startBlock();
    void endBlock() noexcept;

    ObjectBatch* const outer_;
    Block* block_ = nullptr;
    std::byte* next_ = nullptr; // where the block's next object stands
    std::size_t room_ = 0;      // what is left behind it
    std::uint32_t placed_ = 0;  // objects in the block
    unsigned firstObjects_ = 0;
};

} // namespace NS
