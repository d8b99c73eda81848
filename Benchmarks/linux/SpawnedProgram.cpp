#include "Benchmarks/Support/SpawnedProgram.h"

#include <csignal>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace Benchmarks {

SpawnedProgram::SpawnedProgram(const std::string& program,
                               const std::vector<std::string>& arguments) {
    std::vector<char*> texts{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        texts.push_back(const_cast<char*>(argument.c_str()));
    }
    texts.push_back(nullptr);
    const int error =
        ::posix_spawnp(&process_, program.c_str(), nullptr, nullptr, texts.data(), environ);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), program);
    }
}

SpawnedProgram::~SpawnedProgram() {
    (void)::kill(process_, SIGKILL); // one that has ended needs none
    (void)::waitpid(process_, nullptr, 0);
}

std::string SpawnedProgram::own() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

} // namespace Benchmarks
