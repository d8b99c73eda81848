#pragma once

#include <functional>

// What is done so often, or to so much at once, that a person would notice if it became slower.
// Each path does the same in every process, on every machine.
namespace HotPaths {

// Counts the instructions of a path, when valgrind runs the process. The same work was done once
// before, so that what is made at first use counts nowhere.
void count(const char* path, const std::function<void()>& work);

void countArchives();
void countLink();
void countMenus();

} // namespace HotPaths
