#include "Platform/Foundation/Nesting.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Limits.h"

#include <cstddef>

namespace NS {

namespace {

constexpr std::size_t kVisitLimit = 1'000'000;

struct Progress {
    std::size_t depth = 0;
    std::size_t visits = 0; // since the outermost began
};

constinit thread_local Progress progress;

} // namespace

NestedVisit::NestedVisit() {
    if (progress.depth == 0) {
        progress.visits = 0;
    }
    if (progress.depth >= Limits::kDepth || progress.visits >= kVisitLimit) {
        Exception::raise(kGenericException,
                         "a collection holds itself, or holds too many collections");
    }
    ++progress.depth;
    ++progress.visits;
}

NestedVisit::~NestedVisit() {
    --progress.depth;
}

} // namespace NS
