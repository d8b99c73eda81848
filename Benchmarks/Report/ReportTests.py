#!/usr/bin/env python3
"""Tests of what ./bench makes of the figures."""

import json
import tempfile
import time
import unittest
import xml.etree.ElementTree
from pathlib import Path

import chart
import goals
import growth
import measuring
import trying
import writing


def run(name, seconds, **more):
    return {"name": name, "run_name": name, "run_type": "iteration", "real_time": 99.0,
            "cpu_time": seconds, "time_unit": "s", "iterations": 1} | more


def row(**more):
    return {"name": "a row", "path": "p", **more}


def measured(**figures):
    return {("p", role, None): {goals.TIME: value} for role, value in figures.items()}


def program_that(folder, text):
    program = Path(folder) / "quorvane-benchmarks-fake"
    program.write_text("#!/bin/sh\n" + text, encoding="utf-8")
    program.chmod(0o755)
    return program


def wait_until_gone(process):
    """Also one that nobody waits for any more is gone."""
    stat = Path(f"/proc/{process}/stat")
    deadline = time.monotonic() + 60
    while time.monotonic() < deadline:
        try:
            if stat.read_text(encoding="utf-8").rpartition(")")[2].split()[0] in "ZX":
                return
        except OSError:
            return
        time.sleep(0.001)
    raise AssertionError(f"process {process} is still there")


class CaseNames(unittest.TestCase):
    def test_are_a_path_a_role_and_a_size(self):
        self.assertEqual(measuring.case_of("archive-decode/ours/1000/real_time"),
                         ("archive-decode", "ours", 1000))

    def test_need_no_size(self):
        self.assertEqual(measuring.case_of("log-line/floor/min_time:0.1/real_time"),
                         ("log-line", "floor", None))

    def test_of_any_other_form_are_refused(self):
        for name in ("alone", "path/role/many", "path/role/1/2"):
            with self.assertRaises(measuring.MeasuringError):
                measuring.case_of(name)


class Figures(unittest.TestCase):
    def test_are_the_medians_of_the_repetitions(self):
        report = {"benchmarks": [run("p/ours", value) for value in (9.0, 1.0, 2.0)]}
        self.assertEqual(measuring.figures_of(report), {("p", "ours", None): {goals.TIME: 2.0}})

    def test_leave_out_what_the_library_summed_up(self):
        report = {"benchmarks": [run("p/ours", 1.0), run("p/ours", 7.0, run_type="aggregate")]}
        self.assertEqual(measuring.figures_of(report)["p", "ours", None][goals.TIME], 1.0)

    def test_come_in_seconds(self):
        report = {"benchmarks": [run("p/ours", 3.0, time_unit="us")]}
        self.assertEqual(measuring.figures_of(report)["p", "ours", None][goals.TIME], 3e-6)

    def test_are_of_the_clock_that_the_case_takes(self):
        report = {"benchmarks": [run("p/ours/real_time", 3.0), run("p/floor/manual_time", 3.0)]}
        times = [values[goals.TIME] for values in measuring.figures_of(report).values()]
        self.assertEqual(times, [99.0, 99.0])

    def test_include_counters(self):
        report = {"benchmarks": [run("p/ours", 1.0, waiting=300)]}
        self.assertEqual(measuring.figures_of(report)["p", "ours", None]["waiting"], 300)

    def test_of_rounds_are_their_medians(self):
        rounds = [{("p", "ours", None): {goals.TIME: value, "waiting": -value}} for value in (9.0, 1.0, 2.0)]
        self.assertEqual(measuring.together(rounds),
                         {("p", "ours", None): {goals.TIME: 2.0, "waiting": -2.0}})

    def test_of_a_case_that_failed_are_none(self):
        failed = run("p/ours", 0.0, error_occurred=True, error_message="no bus")
        with self.assertRaisesRegex(measuring.MeasuringError, "no bus"):
            measuring.figures_of({"benchmarks": [failed]})


class Programs(unittest.TestCase):
    def test_that_fail_are_named(self):
        with tempfile.TemporaryDirectory() as folder:
            program = program_that(folder, "echo why >&2; exit 3\n")
            with self.assertRaisesRegex(measuring.MeasuringError, "fake ended with status 3: why"):
                measuring.names_in(program)

    def test_leave_nothing_running(self):
        with tempfile.TemporaryDirectory() as folder:
            program = program_that(folder, "sleep 1000 & echo $!\n")
            left = int(measuring.run(program, []))
            wait_until_gone(left)

    def test_that_are_not_there_are_missed(self):
        with tempfile.TemporaryDirectory() as folder:
            with self.assertRaises(measuring.MeasuringError):
                measuring.programs_in(folder)

    def test_run_only_the_cases_of_the_wanted_paths(self):
        with tempfile.TemporaryDirectory() as folder:
            program_that(folder, 'case "$*" in *list_tests*) printf "a-b/ours\\nc/ours\\n"; exit;; esac\n'
                         f'echo "$*" >{folder}/arguments; for a; do case $a in --benchmark_out=*)\n'
                         'echo \'{"benchmarks": []}\' >"${a#*=}";; esac; done\n')
            measuring.measure(folder, "a-", measuring.QUICK, tell=lambda text: None)
            arguments = (Path(folder) / "arguments").read_text(encoding="utf-8")
        self.assertIn("--benchmark_filter=^(a-b/ours)$ ", arguments)

    def test_are_measured_as_often_as_there_are_rounds(self):
        with tempfile.TemporaryDirectory() as folder:
            template = Path(folder) / "template"
            template.write_text(json.dumps({"benchmarks": [run("a/ours", 777)]}), encoding="utf-8")
            program_that(folder, 'case "$*" in *list_tests*) echo a/ours; exit;; esac\n'
                         f'echo again >>{folder}/rounds; for a; do case $a in --benchmark_out=*)\n'
                         f'sed "s/777/$(wc -l <{folder}/rounds)/" {template} >"${{a#*=}}";; esac; done\n')
            effort = measuring.Effort(rounds=3, repetitions=1, seconds=0.01)
            figures = measuring.measure(folder, "a", effort, tell=lambda text: None)
        self.assertEqual(figures, {("a", "ours", None): {goals.TIME: 2.0}})

    def test_go_from_the_first_to_the_last_in_each_round(self):
        with tempfile.TemporaryDirectory() as folder:
            program_that(folder, 'case "$*" in *list_tests*) printf "a/ours\\nb/ours\\n"; exit;; esac\n'
                         f'echo "$1" >>{folder}/order; for a; do case $a in --benchmark_out=*)\n'
                         'echo \'{"benchmarks": []}\' >"${a#*=}";; esac; done\n')
            effort = measuring.Effort(rounds=2, repetitions=1, seconds=0.01)
            measuring.measure(folder, "", effort, tell=lambda text: None)
            order = (Path(folder) / "order").read_text(encoding="utf-8").split()
        self.assertEqual([each[-8:-2] for each in order], ["a/ours", "b/ours"] * 2)

    def test_measure_together_what_is_compared(self):
        names = ["p/ours/10", "p/ours/1000", "q/ours/10", "p/floor/10", "p/floor/1000"]
        self.assertEqual(list(measuring.compared(names)),
                         [["p/ours/10", "p/floor/10"], ["p/ours/1000", "p/floor/1000"], ["q/ours/10"]])


class Efforts(unittest.TestCase):
    def test_are_less_for_what_takes_long(self):
        effort = measuring.Effort(rounds=1, repetitions=9, seconds=0.1)
        names = ("p/ours", "p/ours/1000", "p/ours/100000", "p/ours/1000000", "p/ours/iterations:1")
        self.assertEqual([effort.repetitions_of(name) for name in names], [9, 9, 5, 3, 5])


class Verdicts(unittest.TestCase):
    def test_compare_with_the_reference(self):
        goal = row(reference="floor", limit=1.25)
        near = goals.verdict(measured(ours=1.25, floor=1.0), goal)
        far = goals.verdict(measured(ours=1.26, floor=1.0), goal)
        self.assertEqual((near.ratio, near.met, far.met), (1.25, True, False))

    def test_compare_entries_of_the_last_size_with_those_of_the_first(self):
        figures = {("p", "ours", 10): {goals.TIME: 1.0}, ("p", "ours", 100): {goals.TIME: 15.0}}
        verdict = goals.verdict(figures, row(sizes=[10, 100], perEntryWithin=1.6))
        self.assertAlmostEqual(verdict.ratio, 1.5)
        self.assertTrue(verdict.met)

    def test_compare_growth_with_that_of_the_floor(self):
        figures = {("p", "ours", 10): {goals.TIME: 2.0}, ("p", "ours", 100): {goals.TIME: 30.0},
                   ("p", "floor", 10): {goals.TIME: 1.0}, ("p", "floor", 100): {goals.TIME: 12.0}}
        verdict = goals.verdict(figures, row(sizes=[10, 100], growthOverFloor=1.05))
        self.assertAlmostEqual(verdict.ratio, 1.25)
        self.assertFalse(verdict.met)

    def test_take_counters_as_they_stand(self):
        figures = {("p", "ours", None): {goals.TIME: 1.0, "waiting": 255}}
        verdict = goals.verdict(figures, row(measure="waiting", atLeast=256))
        self.assertEqual((verdict.ours, verdict.ratio, verdict.met), (255, None, False))

    def test_show_all_peers_and_the_reference_first(self):
        figures = measured(ours=1.0, floor=0.5, slow=9.0, quick=2.0, other=3.0)
        verdict = goals.verdict(figures, row(reference="slow", limit=1))
        self.assertEqual(verdict.peers, (("slow", 9.0), ("other", 3.0), ("quick", 2.0)))
        self.assertEqual((verdict.peer, verdict.floor), (9.0, 0.5))

    def test_miss_what_was_not_measured(self):
        with self.assertRaisesRegex(goals.GoalsError, "p/floor is not measured"):
            goals.verdict(measured(ours=1.0), row(reference="floor", limit=2))

    def test_divide_by_nothing_only_with_a_word(self):
        with self.assertRaisesRegex(goals.GoalsError, "nothing to divide by"):
            goals.verdict(measured(ours=1.0, floor=0), row(reference="floor", limit=2))

    def test_as_json_have_the_keys_that_the_README_names(self):
        verdict = goals.verdict(measured(ours=3.0, floor=1.0), row(reference="floor", limit=2))
        self.assertEqual(verdict.as_json(), {"name": "a row", "ours": 3.0, "floor": 1.0,
                                             "peer": None, "ratio": 3.0, "goal": 2, "met": False})


class Rows(unittest.TestCase):
    def test_without_sense_are_refused(self):
        for bad in (row(), row(limit=1), row(reference="floor"), row(atMost=1, atLeast=1),
                    row(atMost=1, colour="red"), row(sizes=[1, 2], atMost=1),
                    row(growthOverFloor=1), {"path": "p", "atMost": 1}):
            with self.assertRaises(goals.GoalsError):
                goals.check(bad)

    def test_that_no_program_measures_are_found(self):
        rows = [row(size=10, reference="floor", limit=1), row(path="q", sizes=[1, 2], perEntryWithin=1),
                row(path="r", sizes=[1, 2], growthOverFloor=1)]
        cases = {("p", "ours", 10), ("q", "ours", 1), ("r", "ours", 1), ("r", "ours", 2),
                 ("r", "floor", 1)}
        self.assertEqual(trying.missing(rows, cases), ["p/floor/10", "q/ours/2", "r/floor/2"])

    def test_of_the_tree_make_sense(self):
        rows = goals.load(Path(__file__).resolve().parents[1] / "goals.json")
        names = [each["name"] for each in rows]
        self.assertEqual(len(names), len(set(names)))


class Trying(unittest.TestCase):
    def test_takes_the_smallest_size_of_each(self):
        names = ["p/ours/1000", "p/ours/10", "p/floor/1000", "q/ours"]
        self.assertEqual(trying.smallest(names), ["p/ours/10", "p/floor/1000", "q/ours"])


class Growth(unittest.TestCase):
    def test_of_what_is_quadratic_is_two(self):
        figures = {("p", "ours", size): {goals.TIME: 1e-9 * size**2} for size in (1000, 10000, 100000)}
        (path, sizes, exponent, _), = growth.of_each_path(figures)
        self.assertEqual((path, sizes), ("p", [1000, 10000, 100000]))
        self.assertAlmostEqual(exponent, 2.0)

    def test_leaves_out_sizes_that_tell_nothing(self):
        figures = {("p", "ours", size): {goals.TIME: max(1e-5, 1e-8 * size)}
                   for size in (1, 10, 1000, 10000, 100000)}
        (_, sizes, exponent, _), = growth.of_each_path(figures)
        self.assertEqual(sizes, [1000, 10000, 100000])
        self.assertAlmostEqual(exponent, 1.0)

    def test_of_short_paths_begins_early(self):
        figures = {("p", "ours", size): {goals.TIME: 1e-6 * size} for size in (1, 10, 100, 1000)}
        self.assertEqual(growth.of_each_path(figures)[0][1], [10, 100, 1000])

    def test_stands_beside_that_of_the_floor(self):
        figures = {("p", role, size): {goals.TIME: 1e-9 * size**power}
                   for role, power in (("ours", 1), ("floor", 2)) for size in (1000, 10000, 100000)}
        (_, _, ours, floor), = growth.of_each_path(figures)
        self.assertAlmostEqual(ours, 1.0)
        self.assertAlmostEqual(floor, 2.0)

    def test_needs_three_sizes(self):
        figures = {("p", "ours", size): {goals.TIME: 1.0} for size in (1, 10, 10000)}
        self.assertEqual(growth.of_each_path(figures), [])


class Writing(unittest.TestCase):
    def setUp(self):
        self.verdicts = [goals.verdict(measured(ours=1.5e-6, floor=1e-6), row(reference="floor", limit=2)),
                         goals.verdict(measured(ours=3, floor=1), row(reference="floor", limit=2))]

    def test_chooses_the_unit(self):
        cases = {(1.5e-6, "s"): "1.50 µs", (2.5e-9, "s"): "2.50 ns", (123.4, "s"): "123 s",
                 (6 << 20, "B"): "6 MiB", (300, ""): "300", (None, "s"): "", (0, "s"): "0 ns"}
        for (value, unit), text in cases.items():
            self.assertEqual(writing.quantity(value, unit), text)

    def test_says_what_is_met(self):
        lines = writing.table(self.verdicts).splitlines()
        self.assertEqual([line.split()[-1] for line in lines], ["met", "yes", "no"])

    def test_writes_each_peer_and_how_ours_is_to_it(self):
        verdict = goals.verdict(measured(ours=1e-6, floor=1e-6, a=2e-6, b=4e-6),
                                row(reference="b", limit=2))
        self.assertEqual(writing.cells(verdict)[3:6], ("4 µs (b), 2 µs (a)", "1.00", "0.25, 0.50"))

    def test_renews_what_stands_between_the_markers_only(self):
        readme = f"above\n{writing.BEGIN}\nold\n{writing.END}\nbelow\n"
        self.assertEqual(writing.renewed(readme, "new\n"),
                         f"above\n{writing.BEGIN}\n\nnew\n\n{writing.END}\nbelow\n")

    def test_leaves_a_readme_without_markers_alone(self):
        with self.assertRaises(writing.WritingError):
            writing.renewed("nothing to renew\n", "new\n")

    def test_writes_rows_as_json(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "rows.json"
            writing.write_json(path, self.verdicts)
            self.assertEqual([each["met"] for each in json.loads(path.read_text(encoding="utf-8"))],
                             [True, False])

    def test_draws_a_bar_for_each_row(self):
        root = xml.etree.ElementTree.fromstring(chart.chart(self.verdicts))
        bars = [each for each in root.iter() if each.get("fill") in chart.COLOURS.values()]
        self.assertEqual([each.get("fill") for each in bars],
                         [chart.COLOURS[True], chart.COLOURS[False]])

    def test_draws_each_figure_behind_the_bars(self):
        root = xml.etree.ElementTree.fromstring(chart.chart(self.verdicts))
        figures = [each for each in root.iter() if each.text == chart.figure(self.verdicts[0])]
        self.assertGreater(float(figures[0].get("x")), chart.LEFT + chart.length(chart.MOST))

    def test_writes_an_amount_beside_its_goal(self):
        verdict = goals.Verdict("a death", 0.0006, None, (), None, 0.005, True, "atMost", "s")
        self.assertEqual(chart.figure(verdict), "600 µs ≤ 5 ms")

    def test_writes_a_small_ratio_with_the_digits_that_tell_it_from_its_goal(self):
        self.assertEqual(writing.times(0.0514), "0.051")
        self.assertEqual(writing.times(1.234), "1.23")


if __name__ == "__main__":
    unittest.main()
