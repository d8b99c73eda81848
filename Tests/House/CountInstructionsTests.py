#!/usr/bin/env python3
"""Tests of what Scripts/count-instructions makes of the counts."""

import importlib.machinery
import importlib.util
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "Scripts" / "count-instructions"
LOADER = importlib.machinery.SourceFileLoader("count_instructions", str(SCRIPT))
counting = importlib.util.module_from_spec(importlib.util.spec_from_loader(LOADER.name, LOADER))
LOADER.exec_module(counting)


class CountInstructions(unittest.TestCase):
    def test_names_the_path_that_got_worse(self):
        found = list(counting.faults({"a": 1031, "b": 100}, {"a": 1000, "b": 100}))
        self.assertEqual(len(found), 1)
        self.assertIn("a takes 3.1% more", found[0])

    def test_allows_what_is_hardly_worse_and_what_is_better(self):
        self.assertEqual(list(counting.faults({"a": 1030, "b": 10}, {"a": 1000, "b": 100})), [])

    def test_names_paths_that_are_not_in_both(self):
        found = list(counting.faults({"new": 1}, {"old": 1}))
        self.assertEqual([fault.split()[0] for fault in found], ["new", "old"])

    def test_reads_what_was_counted_of_each_path(self):
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            (folder / "counts.1").write_text(
                "desc: Trigger: Client Request: log-line\nevents: Ir\ntotals: 375934\n", encoding="utf-8")
            (folder / "counts.2").write_text("desc: Trigger: Program termination\ntotals: 7\n",
                                             encoding="utf-8")
            self.assertEqual(counting.counts_in(folder), {"log-line": 375934})

    def test_has_counts_that_it_can_read(self):
        self.assertGreater(len(counting.kept()), 0)


if __name__ == "__main__":
    unittest.main()
