#pragma once

#include <string>
#include <vector>

namespace Benchmarks {

// A program that runs beside the benchmark, on the same processors, and is killed with this object.
class SpawnedProgram {
  public:
    // The program's path, or its name to be looked for where programs are. Throws when it cannot be
    // run.
    SpawnedProgram(const std::string& program, const std::vector<std::string>& arguments);
    ~SpawnedProgram();
    SpawnedProgram(const SpawnedProgram&) = delete;
    SpawnedProgram& operator=(const SpawnedProgram&) = delete;

    // The path of the program that this process runs.
    static std::string own();

  private:
    int process_ = 0;
};

} // namespace Benchmarks
