#include "Platform/CrashReporter/linux/CrashReport.h"

#include "Platform/CrashReporter/linux/Machine.h"
#include "Platform/Foundation/Exception.h"

#include <sys/prctl.h>
#include <tuple>
#include <unistd.h>

// What a report says of the code that crashed: its stack, its registers and its modules.
namespace NS {

namespace {

constexpr std::size_t kMostRaised =
    std::tuple_size_v<decltype(UncaughtExceptionRecord::returnAddresses)>;
constexpr std::size_t kIndexWidth = 4;
constexpr std::size_t kModuleWidth = 35;
constexpr std::size_t kRegisterWidth = 8;
constexpr std::size_t kRegistersInLine = 3;

// The call stack of the exception by which this thread ends; empty where it ends otherwise, or by
// an exception that brings no stack.
std::span<void* const> stackOfException(const Crash& crash) noexcept {
    const UncaughtExceptionRecord* const record = uncaughtExceptionRecord();
    if (record == nullptr || crash.signal != SIGABRT || record->thread != ::gettid()) {
        return {};
    }
    return {record->returnAddresses.data(), record->depth};
}

// A call's address to return to may lie behind the function's end, when the call does not return.
std::uintptr_t placeOf(const CrashedFrame& frame) noexcept {
    return frame.interrupted || frame.address == 0 ? frame.address : frame.address - 1;
}

// The program's own code is this; unlike its path, the name that it is opened by always leads to
// the very file, though that may have been replaced since.
const char* fileOf(const LoadedModule& module) noexcept {
    const auto own = reinterpret_cast<std::uintptr_t>(&uncaughtExceptionRecord);
    return module.holds(own) ? "/proc/self/exe" : module.path.data();
}

} // namespace

void CrashReport::readModules(const Crash&) noexcept {
    modules_.read();
}

void CrashReport::takeFrame(const CrashedFrame& frame) noexcept {
    const LoadedModule* const module = modules_.at(placeOf(frame));
    SymbolQuery query{};
    query.address = placeOf(frame) - (module == nullptr ? 0 : module->bias);
    frames_[frameCount_++] = {frame, module, query};
}

void CrashReport::readStack(const Crash& crash) noexcept {
    const std::span<void* const> raised = stackOfException(crash);
    if (!raised.empty()) {
        stack_.readFrom(raised);
    } else {
        stack_.readFrom(*crash.info, *crash.context);
    }
}

void CrashReport::findNames(const Crash&) noexcept {
    for (const CrashedFrame& frame : stack_.inner()) {
        takeFrame(frame);
    }
    for (std::size_t i = 0; i < stack_.outerCount(); ++i) {
        takeFrame(stack_.outer(i));
    }
    for (const LoadedModule& module : modules_.list()) {
        findNamesIn(module);
    }
}

void CrashReport::findNamesIn(const LoadedModule& module) noexcept {
    std::size_t count = 0;
    for (std::size_t i = 0; i < frameCount_; ++i) {
        if (frames_[i].module == &module) {
            asked_[count] = i;
            queries_[count++] = frames_[i].symbol;
        }
    }
    if (count == 0) {
        return;
    }
    const SymbolFile file(fileOf(module), module.buildId);
    if (file.isOpen()) {
        file.find(std::span(queries_).first(count));
    }
    for (std::size_t i = 0; i < count; ++i) {
        frames_[asked_[i]].symbol = queries_[i];
    }
}

void CrashReport::writeName(const Frame& frame) noexcept {
    std::array<char, 1024> name{};
    if (frame.symbol.found) {
        SymbolFile(fileOf(*frame.module), frame.module->buildId).name(frame.symbol, name);
    }
    if (name.front() == '\0') {
        text_ << "???";
        return;
    }
    text_.text(name.data()) << " + ";
    const std::uintptr_t address = frame.at.address - frame.module->bias;
    text_.decimal(static_cast<std::int64_t>(address - frame.symbol.start));
}

void CrashReport::writeFrame(std::size_t index, const Frame& frame) noexcept {
    const bool known = frame.module != nullptr;
    FixedText<24> number;
    number.decimal(static_cast<unsigned>(index));
    text_.column(number.view(), kIndexWidth - 1) << " ";
    text_.column(known ? frame.module->name() : "???", kModuleWidth) << " ";
    text_.address(frame.at.address - (known ? frame.module->bias : 0)) << " ";
    writeName(frame);
    text_ << "\n";
}

void CrashReport::writeStack(const Crash& crash) noexcept {
    const std::span<void* const> raised = stackOfException(crash);
    std::array<char, 17> name{};
    (void)::prctl(PR_GET_NAME, name.data()); // else it has none
    text_ << "\nThread ";
    text_.decimal(::gettid()) << " Crashed: ";
    text_.text(name.data()) << "\n";
    for (std::size_t i = 0; i < frameCount_; ++i) {
        const bool isOuter = i >= stack_.inner().size();
        if (isOuter && i == stack_.inner().size() && stack_.leftOut() > 0) {
            text_ << "... ";
            text_.decimal(static_cast<std::int64_t>(stack_.leftOut())) << " frames left out\n";
        }
        writeFrame(isOuter ? i + stack_.leftOut() : i, frames_[i]);
    }
    if (raised.size() == kMostRaised) {
        text_ << "(no more than the innermost frames are known)\n";
    }
}

void CrashReport::writeRegisters(const Crash& crash) noexcept {
    std::size_t count = 0;
    for (const Machine::Register& each : Machine::registers(*crash.context)) {
        if (each.name == nullptr) {
            break;
        }
        text_ << (count == 0 ? "\nRegisters:\n" : count % kRegistersInLine == 0 ? "\n" : "  ");
        text_.column(each.name, kRegisterWidth).address(each.value);
        ++count;
    }
    text_ << (count == 0 ? "" : "\n");
}

void CrashReport::writeModules(const Crash&) noexcept {
    text_ << "\nBinary Images:\n";
    for (const LoadedModule& module : modules_.list()) {
        text_.address(module.start) << " - ";
        text_.address(module.end) << "  ";
        text_.text(module.name()) << "  <";
        for (std::size_t i = 0; i < module.buildId.length; ++i) {
            text_.byte(module.buildId.bytes[i]);
        }
        text_ << ">  ";
        text_.text(module.pathText()) << "\n";
    }
}

} // namespace NS
