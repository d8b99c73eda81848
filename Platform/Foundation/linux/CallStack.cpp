#include "Platform/Foundation/CallStack.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <memory>

namespace NS::CallStack {

namespace {

// Deeper stacks lose their outermost frames: what matters stands at the inner end.
constexpr int kFrames = 128;

std::string demangled(const char* name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

std::string baseName(const char* path) {
    const std::string text(path);
    return text.substr(text.rfind('/') + 1);
}

} // namespace

std::vector<void*> capture(std::size_t skipped) {
    std::array<void*, kFrames> frames{};
    const int count = ::backtrace(frames.data(), kFrames);
    const auto first =
        std::min(static_cast<std::ptrdiff_t>(skipped + 1), static_cast<std::ptrdiff_t>(count));
    return std::vector<void*>(frames.begin() + first, frames.begin() + count);
}

std::string symbol(std::size_t index, void* address) {
    Dl_info info{};
    std::string module = "???";
    std::string function = "???";
    auto offset = reinterpret_cast<std::uintptr_t>(address);
    if (::dladdr(address, &info) != 0) {
        module = baseName(info.dli_fname);
        const bool named = info.dli_sname != nullptr;
        const void* start = named ? info.dli_saddr : info.dli_fbase;
        function = named ? demangled(info.dli_sname) : module;
        offset -= reinterpret_cast<std::uintptr_t>(start);
    }
    std::array<char, 96> head{};
    (void)std::snprintf(head.data(), head.size(), "%-3zu %-35.60s 0x%016zx ", index, module.c_str(),
                        reinterpret_cast<std::uintptr_t>(address));
    return head.data() + function + " + " + std::to_string(offset);
}

} // namespace NS::CallStack
