"""Scripts/check-floors, on small trees with one file each."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "Scripts" / "check-floors"


class CheckFloors(unittest.TestCase):
    def check(self, path, line):
        with tempfile.TemporaryDirectory() as tree:
            file = Path(tree) / path
            file.parent.mkdir(parents=True)
            file.write_text(line + "\n")
            run = subprocess.run(
                [sys.executable, SCRIPT, tree], capture_output=True, text=True, check=False
            )
            return run.returncode, run.stdout

    def assert_fits(self, path, line):
        self.assertEqual(self.check(path, line), (0, ""))

    def assert_faulty(self, path, line, fault):
        status, output = self.check(path, line)
        self.assertEqual(status, 1)
        self.assertTrue(output.startswith(f"{path}:1: "), output)
        self.assertIn(fault, output)

    def test_an_include_may_point_down(self):
        self.assert_fits("Platform/Ports/A.h", '#include "Platform/Foundation/String.h"')

    def test_an_include_may_not_point_up(self):
        self.assert_faulty(
            "Platform/Foundation/A.h",
            '#include "Platform/Ports/RunLoop.h"',
            "points up from floor 0 to floor 1",
        )

    def test_neighbours_may_not_see_each_other(self):
        self.assert_faulty(
            "Platform/Ports/A.h", '#include "Platform/Finder/FinderSync.h"', "know nothing of each other"
        )

    def test_an_include_starts_at_the_root(self):
        self.assert_faulty("QVApi/Content/A.h", '#include "B.h"', "not written from the root")

    def test_a_test_may_use_the_tests_support(self):
        self.assert_fits("Platform/Ports/ATests.cpp", '#include "Tests/Support/Process.h"')

    def test_the_systems_own_folders_call_no_library(self):
        self.assert_faulty("QVApi/Content/A.cpp", "#include <nlohmann/json.hpp>", "does not use")

    def test_the_systems_own_folders_do_not_call_the_operating_system(self):
        self.assert_faulty("QVFinderExtension/A.cpp", "#include <unistd.h>", "neither the standard")

    def test_the_operating_system_stands_in_linux_folders(self):
        self.assert_faulty("Platform/Ports/A.cpp", "#include <sys/socket.h>", "outside of a linux/")
        self.assert_fits("Platform/Ports/linux/A.cpp", "#include <sys/socket.h>")

    def test_the_standard_library_is_for_all(self):
        self.assert_fits("QVFinderExtension/A.cpp", "#include <string_view>")

    def test_no_condition_asks_for_a_system(self):
        self.assert_faulty("Platform/Ports/A.cpp", "#ifdef __linux__", "__linux__ asks which system")
        self.assert_faulty("Programs/A.cpp", "#if defined(__APPLE__)", "__APPLE__ asks which system")
        self.assert_fits("Platform/Ports/A.cpp", "#ifdef NDEBUG")

    def test_an_empty_tree_is_a_mistake(self):
        self.assertEqual(self.check("Elsewhere/A.cpp", ""), (1, "no source files found\n"))


if __name__ == "__main__":
    unittest.main()
