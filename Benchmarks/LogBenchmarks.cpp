#include "Benchmarks/Support/RawLogLine.h"
#include "Benchmarks/Support/TemporaryFolder.h"
#include "CustomConsoleLogging/consoleLogging.h"

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

// What does a line of the log cost? It is in the file when the call returns, and that is not open.

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPath = "/home/mia/Fennmoor Drive";
// As long as ours, stamps and all.
constexpr std::string_view kLine = "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: "
                                   "received init at /home/mia/Fennmoor Drive\n";
// Files grow; beyond this one begins anew, outside of what is timed.
constexpr std::uintmax_t kLongest = 64U << 20U;

// A log file that stays short, and has grown by the end.
class File {
  public:
    explicit File(fs::path path) : path_(std::move(path)) { std::ofstream{path_}; }

    const char* path() const noexcept { return path_.c_str(); }
    void keepShort(benchmark::State& state) {
        if (++lines_ % (kLongest / kLine.size()) == 0) {
            state.PauseTiming();
            fs::resize_file(path_, 0);
            state.ResumeTiming();
        }
    }
    void check(benchmark::State& state) const {
        if (fs::file_size(path_) < kLine.size()) {
            state.SkipWithError("no line was written");
        }
    }

  private:
    fs::path path_;
    std::uintmax_t lines_ = 0;
};

// The process's own log file, which is made by its first line and never anew.
const fs::path& ownLog() {
    static const Benchmarks::TemporaryFolder& folder = *new Benchmarks::TemporaryFolder;
    static const fs::path path = [] {
        QVLogging::setupWithPrefix(NS::str("FE"));
        QVLogging::sharedInstance()->setPath(NS::str(folder.path().string() + "/"));
        _Log("DEBUG ", LogOrigin{}, "first");
        const auto entry = fs::directory_iterator(folder.path());
        return entry == fs::directory_iterator() ? fs::path() : entry->path();
    }();
    return path;
}

void line(benchmark::State& state) {
    File file(ownLog());
    const auto path = NS::str(kPath);
    for (auto step : state) {
        _Log("DEBUG ", LogOrigin{}, "received init at %@", path);
        file.keepShort(state);
    }
    file.check(state);
}

void bareCalls(benchmark::State& state) {
    const Benchmarks::TemporaryFolder folder;
    File file(folder.path() / "bare.txt");
    for (auto step : state) {
        if (!Benchmarks::appendRaw(file.path(), kLine)) {
            state.SkipWithError("the file takes no line");
        }
        file.keepShort(state);
    }
    file.check(state);
}

void standardStream(benchmark::State& state) {
    const Benchmarks::TemporaryFolder folder;
    File file(folder.path() / "fopen.txt");
    for (auto step : state) {
        std::FILE* const stream = std::fopen(file.path(), "a");
        (void)std::fwrite(kLine.data(), 1, kLine.size(), stream);
        (void)std::fclose(stream);
        file.keepShort(state);
    }
    file.check(state);
}

// It keeps its file open. Its own stamp is as long as our outer one, the inner one is text.
void spdlogFlushed(benchmark::State& state) {
    const Benchmarks::TemporaryFolder folder;
    File file(folder.path() / "spdlog.txt");
    spdlog::logger logger("FE", std::make_shared<spdlog::sinks::basic_file_sink_st>(file.path()));
    logger.set_pattern("[%Y-%m-%d %H:%M:%S.%e]: %v");
    logger.flush_on(spdlog::level::trace);
    for (auto step : state) {
        logger.info("[2026-11-16 06:56:27]: received init at {}", kPath);
        file.keepShort(state);
    }
    file.check(state);
}

BENCHMARK(line)->Name("log-line/ours")->UseRealTime();
BENCHMARK(bareCalls)->Name("log-line/floor")->UseRealTime();
BENCHMARK(standardStream)->Name("log-line/fopen")->UseRealTime();
BENCHMARK(spdlogFlushed)->Name("log-line/spdlog")->UseRealTime();

} // namespace

BENCHMARK_MAIN();
