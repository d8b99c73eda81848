// How long a file manager waits for menus and commands, over the bus, as percentiles: what a person
// notices is the slowest of a hundred. Benchmarks give means, so this stands beside them.

#include "Shell/Client/FinderClient.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using Shell::MenuKind;
using Shell::Outcome;

constexpr std::chrono::seconds kPatience{30};

struct Options {
    std::string drive;
    int items = 10'000;
    int rounds = 1'000;
};

struct Row {
    std::string name;
    std::function<Outcome()> ask;
};

Shell::Place placeOf(const Options& options, int items, const char* folder) {
    Shell::Place place;
    place.target = options.drive;
    for (int i = 0; i < items; ++i) {
        place.items.push_back(options.drive + folder + "/holiday picture " + std::to_string(i) +
                              ".jpg");
    }
    return place;
}

Row menuRow(Shell::FinderClient& client, const char* name, MenuKind kind,
            const Shell::Place& place) {
    return {name + std::string(" of ") + std::to_string(place.items.size()),
            [&client, kind, &place] {
                return client.menu(kind, place, kPatience).outcome;
            }};
}

Row commandRow(Shell::FinderClient& client, const char* name, MenuKind kind, const char* action,
               const Shell::Place& place) {
    return {name + std::string(" of ") + std::to_string(place.items.size()),
            [&client, kind, action, &place] {
                return client.run(kind, action, place, kPatience);
            }};
}

void measure(const Row& row, int rounds) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        const Outcome outcome = row.ask();
        times.push_back(Milliseconds(Clock::now() - start).count());
        if (outcome != Outcome::kDone) {
            std::cerr << "quorvane-menu-times: " << row.name << " failed in round " << i << '\n';
            std::exit(EXIT_FAILURE);
        }
    }
    std::ranges::sort(times);
    std::printf("%-34s %9.3f %9.3f %9.3f\n", row.name.c_str(), times[times.size() / 2],
                times[times.size() * 99 / 100], times.back());
}

std::vector<Row> rowsFor(Shell::FinderClient& client, const Shell::Place& outside,
                         const Shell::Place& inTrash) {
    return {
        menuRow(client, "menu, items", MenuKind::kItems, outside),
        menuRow(client, "menu, items in the Trash", MenuKind::kItems, inTrash),
        menuRow(client, "menu, container", MenuKind::kContainer, outside),
        menuRow(client, "menu, sidebar", MenuKind::kSidebar, outside),
        menuRow(client, "menu, toolbar", MenuKind::kToolbar, outside),
        commandRow(client, "share", MenuKind::kContainer, "shareItem:", outside),
        commandRow(client, "show properties", MenuKind::kContainer, "showProps", outside),
        commandRow(client, "refresh folder", MenuKind::kContainer, "refreshFolder", outside),
        commandRow(client, "move to trash", MenuKind::kItems, "moveToTrash", outside),
        commandRow(client, "restore", MenuKind::kItems, "restore", inTrash),
        commandRow(client, "delete", MenuKind::kItems, "delete", inTrash),
        commandRow(client, "empty trash", MenuKind::kToolbar, "emptyTrash", outside),
    };
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app(
        "Measures menus and commands for items that do not exist on the drive of a running "
        "extension, with 1 item and with many.");
    Options options;
    app.add_option("--drive", options.drive, "The drive's mount path")->required();
    app.add_option("--items", options.items, "How many items many are")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--rounds", options.rounds, "How often each is asked")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);

    Shell::FinderClient client;
    if (!client.waitUntilKnown(kPatience) || !client.isPresent()) {
        std::cerr << "quorvane-menu-times: the extension is not running\n";
        return EXIT_FAILURE;
    }
    std::printf("%-34s %9s %9s %9s   milliseconds\n", "", "median", "p99", "longest");
    for (const int items : {1, options.items}) {
        const Shell::Place outside = placeOf(options, items, "");
        const Shell::Place inTrash = placeOf(options, items, "/Trash");
        for (const Row& row : rowsFor(client, outside, inTrash)) {
            measure(row, options.rounds);
        }
    }
    return EXIT_SUCCESS;
}
