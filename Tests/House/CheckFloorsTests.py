"""Scripts/check-floors, on small trees with one file each.

Written without a test framework, as a script of a few rows needs none.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "Scripts" / "check-floors"

# What each case shows, the file, its one line, and what is said about it; None where it fits.
CASES = [
    ("an include may point down",
     "Platform/Ports/A.h", '#include "Platform/Foundation/String.h"', None),
    ("an include may not point up",
     "Platform/Foundation/A.h", '#include "Platform/Ports/RunLoop.h"',
     "points up from floor 0 to floor 1"),
    ("neighbours may not see each other",
     "Platform/Ports/A.h", '#include "Platform/Finder/FinderSync.h"', "know nothing of each other"),
    ("the crash reporter is a neighbour of ports",
     "Platform/CrashReporter/linux/A.cpp", '#include "Platform/Ports/Termination.h"',
     "know nothing of each other"),
    ("an include starts at the root",
     "QVApi/Content/A.h", '#include "B.h"', "not written from the root"),
    ("a test may use what supports tests",
     "Platform/Ports/ATests.cpp", '#include "Tests/Support/Process.h"', None),
    ("code may not use what supports tests",
     "Platform/Ports/A.cpp", '#include "Tests/Support/Process.h"', "points up from floor 1 to floor 5"),
    ("the system's own folders call no library",
     "QVApi/Content/A.cpp", "#include <nlohmann/json.hpp>", "does not use"),
    ("the system's own folders do not call the operating system",
     "QVFinderExtension/A.cpp", "#include <unistd.h>", "neither the standard library"),
    ("a benchmark calls its library",
     "Benchmarks/A.cpp", "#include <benchmark/benchmark.h>", None),
    ("nothing else calls a benchmark's library",
     "Programs/A.cpp", "#include <benchmark/benchmark.h>", "does not use"),
    ("the operating system is not called beside linux/",
     "Platform/Ports/A.cpp", "#include <sys/socket.h>", "outside of a linux/ folder"),
    ("the operating system is called in linux/",
     "Platform/Ports/linux/A.cpp", "#include <sys/socket.h>", None),
    ("the platform tells the compiler's checkers of its own memory",
     "Platform/Foundation/A.cpp", "#include <sanitizer/asan_interface.h>", None),
    ("nothing else does",
     "QVApi/Content/A.cpp", "#include <sanitizer/asan_interface.h>", "does not use"),
    ("the lowest floor names the processor's instructions",
     "Platform/Foundation/A.h", "#include <emmintrin.h>", None),
    ("nobody above does",
     "Platform/Finder/A.cpp", "#include <emmintrin.h>", "does not use"),
    ("the standard library is for all",
     "QVFinderExtension/A.cpp", "#include <string_view>", None),
    ("no #ifdef asks for a system",
     "Platform/Ports/A.cpp", "#ifdef __linux__", "__linux__ asks which system"),
    ("no #if asks for a system",
     "Programs/A.cpp", "#if defined(__APPLE__)", "__APPLE__ asks which system"),
    ("a condition may ask for something else",
     "Platform/Ports/A.cpp", "#ifdef NDEBUG", None),
    ("a plug-in uses the client library",
     "FileManagers/Shared/A.cpp", '#include "Shell/Client/FinderClient.h"', None),
    ("a plug-in uses nothing else of the tree",
     "FileManagers/Shared/A.cpp", '#include "Shell/FileURL.h"', "more than the client library"),
    ("a plug-in calls the interface of its file manager",
     "FileManagers/Caja/A.cpp", "#include <libcaja-extension/caja-menu-item.h>", None),
    ("a plug-in calls no other's interface",
     "FileManagers/Nemo/A.cpp", "#include <libcaja-extension/caja-menu-item.h>", "does not use"),
    ("the client library includes its own",
     "Shell/Client/A.cpp", '#include "Shell/Client/FinderClient.h"', None),
    ("the client library knows the names on the bus",
     "Shell/Client/A.cpp", '#include "Shell/FinderInterface.h"', None),
    ("the client library calls the bus",
     "Shell/Client/A.cpp", "#include <systemd/sd-bus.h>", None),
    ("the client library knows UTF-8",
     "Shell/Client/A.cpp", '#include "Platform/Foundation/Utf8.h"', None),
    ("the client library knows nothing else of the platform",
     "Shell/Client/A.cpp", '#include "Platform/Foundation/String.h"', "more than the standard library"),
    ("the client library knows nothing of the service",
     "Shell/Client/A.cpp", '#include "Shell/FileURL.h"', "more than the standard library"),
    ("the system's own folders know nothing of the client library",
     "QVFinderExtension/A.cpp", '#include "Shell/Client/FinderClient.h"', "know nothing of each other"),
    ("a tree without sources is a mistake",
     "Elsewhere/A.cpp", "", "no source files found"),
]


def check(path, line):
    with tempfile.TemporaryDirectory() as tree:
        file = Path(tree) / path
        file.parent.mkdir(parents=True)
        file.write_text(line + "\n")
        run = subprocess.run(
            [sys.executable, str(SCRIPT), tree], capture_output=True, text=True, check=False
        )
        return run.returncode, run.stdout + run.stderr


def is_as_expected(path, line, fault):
    status, output = check(path, line)
    if fault is None:
        return status == 0 and output == ""
    return status == 1 and fault in output


failed = [name for name, *case in CASES if not is_as_expected(*case)]
for name in failed:
    print(f"failed: {name}")
sys.exit(1 if failed else 0)
