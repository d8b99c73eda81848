#include "Platform/CrashReporter/linux/CrashReport.h"

#include "Platform/CrashReporter/linux/FaultGuard.h"
#include "Platform/CrashReporter/linux/Machine.h"
#include "Platform/CrashReporter/linux/SignalNames.h"
#include "Platform/Foundation/Exception.h"

#include <ctime>
#include <dlfcn.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace NS {

namespace {

constexpr std::size_t kKeyWidth = 17;
constexpr std::int64_t kReportVersion = 1;

// What the C library keeps of its last words: the room for it in bytes, then the text.
struct AbortMessage {
    unsigned size;
    char text[1]; // NOLINT(cppcoreguidelines-avoid-c-arrays): as long as the size says
};

constexpr std::size_t kLongestAbortMessage = 1024;

// False for what has a number of the process that sent it, instead of an address.
bool isFault(const siginfo_t& info) noexcept {
    return info.si_code > 0 && info.si_code != SI_KERNEL && info.si_signo != SIGSYS;
}

} // namespace

bool CrashReport::prepare(const std::string& folder, std::string_view process,
                          std::string_view version) {
    process_ << process;
    version_ << version;
    std::array<char, 4096> place{};
    const ssize_t length = ::readlink("/proc/self/exe", place.data(), place.size());
    program_ << std::string_view(place.data(), length < 0 ? 0 : static_cast<std::size_t>(length));
    utsname system{};
    if (::uname(&system) == 0) { // else there are no names
        host_ << system.nodename;
        system_ << system.sysname << " " << system.release << " " << system.machine;
    }
    zone_ = ZoneOffsets::from(::time(nullptr));
    abortMessage_ =
        static_cast<const void* const*>(::dlvsym(RTLD_DEFAULT, "__abort_msg", "GLIBC_PRIVATE"));
    CrashedStack::prepare();
    return file_.prepare(folder, process, host_.view());
}

void CrashReport::write(const Crash& crash) noexcept {
    (void)::clock_gettime(CLOCK_REALTIME, &now_); // else it is 1970
    const int file = file_.create(civilTime(now_.tv_sec, zone_.at(now_.tv_sec)));
    if (file < 0) {
        return;
    }
    text_.begin(file);
    writeSection("process", &CrashReport::writeProcess, crash);
    writeSection("signal", &CrashReport::writeSignal, crash);
    writeSection("information", &CrashReport::writeInformation, crash);
    writeSection("modules", &CrashReport::readModules, crash);
    takeStack(crash);
    writeSection("names", &CrashReport::findNames, crash);
    writeSection("stack", &CrashReport::writeStack, crash);
    writeSection("registers", &CrashReport::writeRegisters, crash);
    writeSection("modules", &CrashReport::writeModules, crash);
    (void)::close(file); // what could not be written has been lost already
    if (text_.written() == 0) {
        file_.remove();
    }
}

void CrashReport::writeSection(std::string_view subject, Section section,
                               const Crash& crash) noexcept {
    const int fault = FaultGuard::run([&] { (this->*section)(crash); });
    if (fault != 0) {
        text_ << "\n(" << subject << " cut short by " << signalName(fault) << ")\n";
    }
    text_.flush();
}

// The process goes on by the context afterwards: it has to be as the signal left it, also when the
// walk did not come to its end.
void CrashReport::takeStack(const Crash& crash) noexcept {
    const std::optional<Machine::Place> place = Machine::place(*crash.context);
    writeSection("stack", &CrashReport::readStack, crash);
    if (place) {
        Machine::setPlace(*crash.context, *place);
    }
}

void CrashReport::writeProcess(const Crash&) noexcept {
    text_.column("Process:", kKeyWidth).text(process_.view()) << " [";
    text_.decimal(::getpid()) << "]\n";
    text_.column("Path:", kKeyWidth).text(program_.view()) << "\n";
    text_.column("Version:", kKeyWidth).text(version_.view()) << "\n";
    writeDate();
    text_.column("Host:", kKeyWidth).text(host_.view()) << "\n";
    text_.column("OS Version:", kKeyWidth).text(system_.view()) << "\n";
    text_.column("Report Version:", kKeyWidth).decimal(kReportVersion) << "\n\n";
}

void CrashReport::writeDate() noexcept {
    const std::int32_t offset = zone_.at(now_.tv_sec);
    const std::int32_t minutes = (offset < 0 ? -offset : offset) / 60;
    const LocalTime time = civilTime(now_.tv_sec, offset);
    text_.column("Date/Time:", kKeyWidth).decimal(time.year, 4) << "-";
    text_.decimal(time.month, 2) << "-";
    text_.decimal(time.day, 2) << " ";
    text_.decimal(time.hour, 2) << ":";
    text_.decimal(time.minute, 2) << ":";
    text_.decimal(time.second, 2) << ".";
    text_.decimal(now_.tv_nsec / 1'000'000, 3) << (offset < 0 ? " -" : " +");
    text_.decimal(minutes / 60, 2).decimal(minutes % 60, 2) << "\n";
}

void CrashReport::writeSignal(const Crash& crash) noexcept {
    const siginfo_t& info = *crash.info;
    text_.column("Exception Type:", kKeyWidth) << signalName(crash.signal) << " (";
    text_.decimal(crash.signal) << ")\n";
    text_.column("Exception Codes:", kKeyWidth)
        << signalCodeName(crash.signal, info.si_code) << " (";
    text_.decimal(info.si_code) << ")";
    if (isFault(info)) {
        text_ << " at ";
        text_.address(reinterpret_cast<std::uintptr_t>(info.si_addr));
    } else if (info.si_code <= 0) {
        text_ << " from process ";
        text_.decimal(info.si_pid);
    }
    text_ << "\n";
}

std::string_view CrashReport::abortMessage() const noexcept {
    const auto* const message =
        abortMessage_ == nullptr ? nullptr : static_cast<const AbortMessage*>(*abortMessage_);
    if (message == nullptr || message->size <= sizeof message->size) {
        return {};
    }
    const std::string_view room(
        message->text, std::min(message->size - sizeof message->size, kLongestAbortMessage));
    const std::string_view text = room.substr(0, room.find('\0'));
    return text.substr(0, text.find_last_not_of('\n') + 1);
}

// An empty line would end the part.
void CrashReport::writeLine(std::string_view text) noexcept {
    if (text.empty()) {
        text_ << "(none)\n";
    } else {
        text_.text(text) << "\n";
    }
}

void CrashReport::writeInformation(const Crash& crash) noexcept {
    const UncaughtExceptionRecord* const record = uncaughtExceptionRecord();
    const std::string_view message = crash.signal == SIGABRT ? abortMessage() : std::string_view();
    if (record == nullptr && message.empty()) {
        return;
    }
    text_ << "Application Specific Information:\n";
    if (record != nullptr) {
        writeLine(record->name.data());
        writeLine(record->reason.data());
    }
    if (!message.empty()) {
        text_.text(message) << "\n";
    }
}

} // namespace NS
