#include "Benchmarks/Support/ProcessorTime.h"

#include <cerrno>
#include <ctime>
#include <system_error>
#include <utility>

namespace Benchmarks {

namespace {

clockid_t clockOf(int process) {
    clockid_t clock = CLOCK_PROCESS_CPUTIME_ID;
    if (const int error = ::clock_getcpuclockid(process, &clock); error != 0) {
        throw std::system_error(error, std::generic_category(), "clock_getcpuclockid");
    }
    return clock;
}

double secondsOf(clockid_t clock) {
    timespec time{};
    if (::clock_gettime(clock, &time) != 0) {
        throw std::system_error(errno, std::generic_category(), "clock_gettime");
    }
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

ProcessorTime::ProcessorTime(const std::vector<int>& otherProcesses) {
    clocks_.push_back(CLOCK_PROCESS_CPUTIME_ID);
    for (const int process : otherProcesses) {
        clocks_.push_back(clockOf(process));
    }
    last_ = now();
}

double ProcessorTime::now() const {
    double sum = 0;
    for (const int clock : clocks_) {
        sum += secondsOf(clock);
    }
    return sum;
}

double processorTimeOf(int process) {
    return secondsOf(clockOf(process));
}

double ProcessorTime::lap() {
    const double before = std::exchange(last_, now());
    return last_ - before;
}

} // namespace Benchmarks
