#include "Platform/Foundation/CallStack.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <memory>

namespace NS::CallStack {

namespace {

// Deeper stacks lose their outermost frames: what matters stands at the inner end.
constexpr std::ptrdiff_t kFrames = 128;
// Those of the capture itself do not count.
constexpr int kCaptured = 144;

std::string baseName(const char* path) {
    const std::string text(path);
    return text.substr(text.rfind('/') + 1);
}

} // namespace

std::vector<void*> captureFrom(const void* returnAddress) {
    std::array<void*, kCaptured> frames{};
    const auto end = frames.begin() + ::backtrace(frames.data(), kCaptured);
    // Not by number: compilers and sanitisers take frames away and put frames of their own in.
    const auto first = std::find(frames.begin(), end, returnAddress);
    const auto begin = first == end ? frames.begin() : first;
    // Not in braces: they would make a vector of the two iterators.
    return std::vector<void*>(begin, begin + std::min(end - begin, kFrames)); // NOLINT
}

std::string symbol(std::size_t index, void* address) {
    // The address to return to lies behind the call, and behind the whole function when that ends
    // in a call that does not return, such as raising.
    const void* const call = static_cast<const char*>(address) - 1;
    Dl_info info{};
    std::string module = "???";
    std::string function = "???";
    auto offset = reinterpret_cast<std::uintptr_t>(address);
    if (::dladdr(call, &info) != 0) {
        module = baseName(info.dli_fname);
        const bool named = info.dli_sname != nullptr;
        const void* start = named ? info.dli_saddr : info.dli_fbase;
        function = named ? readableName(info.dli_sname) : module;
        offset -= reinterpret_cast<std::uintptr_t>(start);
    }
    std::array<char, 96> head{};
    (void)std::snprintf(head.data(), head.size(), "%-3zu %-35.60s 0x%016zx ", index, module.c_str(),
                        reinterpret_cast<std::uintptr_t>(address));
    return head.data() + function + " + " + std::to_string(offset);
}

std::string readableName(const char* name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

} // namespace NS::CallStack
