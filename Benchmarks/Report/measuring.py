"""Runs the benchmark programs and gathers their figures.

A case is called path/role or path/role/size. All programs run on one processor, one after the other. What
is compared, the roles of a path at one size, is measured by one process, mixed at random, so that what
disturbs the machine disturbs ours, floor and peer alike. Each size has a process of its own, since tidying up
after a million entries would slow down a thousand. All that is measured is measured in rounds, each from the first
to the last: what comes and goes with a few minutes, or with where a process's memory happened to be, is in one
of them. A figure is the median of the rounds', and a round's is the median of its repetitions. Processor time is
what counts, unless a case takes another.
"""

import json
import os
import re
import signal
import statistics
import subprocess
import tempfile
from dataclasses import dataclass
from pathlib import Path

from goals import TIME

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
# What Google Benchmark adds to a case's name.
ADDED = re.compile(r"real_time|process_time|manual_time|\w+:.*")
# What it tells of each run that is no counter.
NO_COUNTERS = {
    "name", "family_index", "per_family_instance_index", "run_name", "run_type", "repetitions",
    "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit", "label",
}


class MeasuringError(Exception):
    """A benchmark program failed."""


@dataclass(frozen=True)
class Effort:
    rounds: int
    repetitions: int  # in each of them
    seconds: float

    def repetitions_of(self, name):
        """Fewer where each takes longer than the least, up to seconds: of many entries, and by its own count."""
        size = case_of(name)[2] or 0
        most = 3 if size >= 1_000_000 else 5 if size >= 100_000 or "/iterations:" in name else self.repetitions
        return min(self.repetitions, most)


# Many short repetitions: the processor has slower and quicker moments of some ten milliseconds.
THOROUGH = Effort(rounds=3, repetitions=60, seconds=0.01)
QUICK = Effort(rounds=1, repetitions=15, seconds=0.01)


def case_of(name):
    """(path, role, size or None) of a case's name."""
    parts = [part for part in name.split("/") if not ADDED.fullmatch(part)]
    if len(parts) not in (2, 3) or (len(parts) == 3 and not parts[2].isdigit()):
        raise MeasuringError(f"{name} is not called path/role/size")
    return parts[0], parts[1], int(parts[2]) if len(parts) == 3 else None


def seconds_of(run):
    """A case says in its name when its time is not the processor's."""
    real = run["run_name"].endswith(("/real_time", "/manual_time"))
    return run["real_time" if real else "cpu_time"] * SECONDS[run["time_unit"]]


def medians(values):
    """Of lists of values by case and key."""
    return {case: {key: statistics.median(each) for key, each in figures.items()}
            for case, figures in values.items()}


def figures_of(report):
    """The medians of each case of a program's report."""
    runs = {}
    for run in report["benchmarks"]:
        if run.get("run_type") != "iteration":
            continue
        if run.get("error_occurred"):
            raise MeasuringError(f"{run['name']}: {run.get('error_message', 'failed')}")
        values = runs.setdefault(case_of(run["run_name"]), {})
        values.setdefault(TIME, []).append(seconds_of(run))
        for key in run.keys() - NO_COUNTERS:
            values.setdefault(key, []).append(run[key])
    return medians(runs)


def together(rounds):
    """The medians of what several rounds gave."""
    values = {}
    for figures in rounds:
        for case, each in figures.items():
            for key, value in each.items():
                values.setdefault(case, {}).setdefault(key, []).append(value)
    return medians(values)


def programs_in(folder):
    found = sorted(each for each in Path(folder).glob("quorvane-benchmarks-*")
                   if os.access(each, os.X_OK))
    if not found:
        raise MeasuringError(f"there are no benchmarks in {folder}")
    return found


def run(program, arguments):
    """What a program prints, when all goes well. What it leaves running is ended with it."""
    with tempfile.TemporaryFile("w+") as out, tempfile.TemporaryFile("w+") as errors:
        with subprocess.Popen([program, *arguments], stdout=out, stderr=errors, text=True,
                              start_new_session=True) as process:
            try:
                os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
            finally:
                os.killpg(process.pid, signal.SIGKILL)  # has its number until it is waited for
            status = process.wait()
        if status != 0:
            errors.seek(0)
            last = (errors.read().splitlines() or [""])[-1]
            raise MeasuringError(f"{program.name} ended with status {status}: {last}")
        out.seek(0)
        return out.read()


def names_in(program):
    return run(program, ["--benchmark_list_tests"]).splitlines()


def filter_for(names):
    return "^(" + "|".join(re.escape(name).replace(r"\-", "-") for name in names) + ")$"


def measure_program(program, names, effort):
    """The figures of some cases of a program, mixed with each other."""
    repetitions = min(effort.repetitions_of(name) for name in names)
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder) / "report.json"
        run(program, [f"--benchmark_filter={filter_for(names)}",
                      "--benchmark_enable_random_interleaving",
                      f"--benchmark_repetitions={repetitions}",
                      f"--benchmark_min_time={effort.seconds}",
                      f"--benchmark_out={out}", "--benchmark_out_format=json"])
        return figures_of(json.loads(out.read_text(encoding="utf-8")))


def stay_on_one_processor():
    """The last of those that this process may use: interrupts tend to the first."""
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})


def compared(names):
    """The names in groups, each of a path at one size."""
    groups = {}
    for name in names:
        path, _, size = case_of(name)
        groups.setdefault((path, size), []).append(name)
    return groups.values()


def measure_round(folder, wanted, effort, tell):
    measured = {}
    for program in programs_in(folder):
        names = [name for name in names_in(program) if wanted in case_of(name)[0]]
        if names:
            tell(f"{program.name}: {len(names)} cases")
        for group in compared(names):
            measured.update(measure_program(program, group, effort))
    return measured


def measure(folder, wanted, effort, tell):
    """The figures of the cases whose path contains a text, by (path, role, size)."""
    rounds = []
    while len(rounds) < effort.rounds:
        tell(f"round {len(rounds) + 1} of {effort.rounds}")
        rounds.append(measure_round(folder, wanted, effort, tell))
    return together(rounds)
