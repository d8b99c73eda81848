#include "Platform/Foundation/CallStack.h"

#include "Platform/Foundation/linux/SymbolFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>
#include <memory>
#include <optional>

namespace NS::CallStack {

namespace {

// Deeper stacks lose their outermost frames: what matters stands at the inner end.
constexpr std::ptrdiff_t kFrames = 128;
// Those of the capture itself do not count.
constexpr int kCaptured = 144;

// Longer names are cut off, and stay as they are in the file.
constexpr std::size_t kLongestName = 16384;

struct Frame {
    // To return to.
    std::uintptr_t address = 0;
    std::string module = "???";
    std::string function = "???";
    // Where the function begins, or else the module.
    std::uintptr_t start = 0;
    // What the program's own addresses were moved by; nothing for another module.
    std::optional<std::uintptr_t> bias;
};

std::string baseName(const char* path) {
    const std::string text(path);
    return text.substr(text.rfind('/') + 1);
}

// The address to return to lies behind the call, and behind the whole function when that ends in a
// call that does not return, such as raising.
std::uintptr_t callBefore(std::uintptr_t returnAddress) noexcept {
    return returnAddress - 1;
}

Frame frameOf(void* address) {
    Frame frame;
    frame.address = reinterpret_cast<std::uintptr_t>(address);
    Dl_info info{};
    link_map* map = nullptr;
    const auto* const call = reinterpret_cast<const void*>(callBefore(frame.address));
    if (::dladdr1(call, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0) {
        return frame;
    }
    frame.module = baseName(info.dli_fname);
    const bool named = info.dli_sname != nullptr;
    frame.function = named ? readableName(info.dli_sname) : frame.module;
    frame.start = reinterpret_cast<std::uintptr_t>(named ? info.dli_saddr : info.dli_fbase);
    if (map->l_name[0] == '\0') { // only the program's own is empty
        frame.bias = map->l_addr;
    }
    return frame;
}

// The program exports nothing: a table of all its names in memory would be in every process. They
// are read from its file, which is opened by a name that leads to it wherever it is now.
void nameOwnFunctions(std::span<Frame> frames) {
    std::vector<Frame*> own;
    std::vector<SymbolQuery> queries;
    for (Frame& frame : frames) {
        if (frame.bias) {
            own.push_back(&frame);
            queries.emplace_back().address = callBefore(frame.address) - *frame.bias;
        }
    }
    if (own.empty()) {
        return;
    }
    const SymbolFile file("/proc/self/exe");
    file.find(queries);
    std::string name(kLongestName, '\0');
    for (std::size_t i = 0; i < own.size(); ++i) {
        if (queries[i].found) {
            file.name(queries[i], name);
            own[i]->function = readableName(name.c_str());
            own[i]->start = queries[i].start + *own[i]->bias;
        }
    }
}

std::string lineOf(std::size_t index, const Frame& frame) {
    std::array<char, 96> head{};
    (void)std::snprintf(head.data(), head.size(), "%-3zu %-35.60s 0x%016zx ", index,
                        frame.module.c_str(), frame.address);
    return head.data() + frame.function + " + " + std::to_string(frame.address - frame.start);
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

std::vector<std::string> symbols(std::span<void* const> addresses) {
    std::vector<Frame> frames;
    frames.reserve(addresses.size());
    for (void* const address : addresses) {
        frames.push_back(frameOf(address));
    }
    nameOwnFunctions(frames);
    std::vector<std::string> lines;
    lines.reserve(frames.size());
    for (const Frame& frame : frames) {
        lines.push_back(lineOf(lines.size(), frame));
    }
    return lines;
}

std::string readableName(const char* name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

} // namespace NS::CallStack
