#pragma once

#include <vector>

namespace Benchmarks {

// The processor time that this process and others take: what an exchange between them comes to on
// one processor that has nothing else to do, also while it has.
class ProcessorTime {
  public:
    explicit ProcessorTime(const std::vector<int>& otherProcesses = {});

    // Seconds, by all of them, since they began.
    double now() const;
    // Seconds since the last call, or since this was made.
    double lap();

  private:
    std::vector<int> clocks_;
    double last_ = 0;
};

// Seconds of processor time that another process has taken since it began.
double processorTimeOf(int process);

} // namespace Benchmarks
