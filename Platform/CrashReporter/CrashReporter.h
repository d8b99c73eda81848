#pragma once

#include <string_view>

namespace NS {

// Has this process leave a report when it crashes, in the user's folder of diagnostic reports:
//
//     <process>_<yyyy-MM-dd-HHmmss>_<host>.crash
//
// A crash is SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP or SIGSYS, from within or from
// outside, and so is an exception that nothing catches. Afterwards the process ends as it would
// have: by the same signal, with what was set for it before. A signal that is ignored already stays
// so. At rest this costs no time and no thread.
//
// Of the reports that earlier processes of the name left all but the newest move to the folder
// "Retired", which keeps the 25 newest. What the file system refuses there is told on the console
// log, once. Call early in main(), as soon as it is clear that the process is to do its work;
// further calls do nothing. The environment says where the folder is. The process's name, of
// letters and digits, begins the file's name; the version is any short text.
void startCrashReporter(std::string_view process, std::string_view version);

} // namespace NS
