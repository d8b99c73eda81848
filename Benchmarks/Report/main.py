"""Measures, compares with goals.json, prints the table and renews the README: the second half of ./bench."""

import argparse
import datetime
import os
import platform
import sys
from pathlib import Path

import chart
import goals
import growth
import measuring
import writing

ROOT = Path(__file__).resolve().parents[2]
PICTURE = ROOT / "Docs" / "pictures" / "benchmarks.svg"


def arguments():
    parser = argparse.ArgumentParser(prog="bench", description="See ./bench --help.")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--json", metavar="FILE", type=Path)
    parser.add_argument("filter", metavar="FILTER", nargs="?", default="")
    parser.add_argument("--check", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--programs", type=Path, default=ROOT / "build" / "release" / "bin",
                        help=argparse.SUPPRESS)
    parser.add_argument("--goals", type=Path, default=ROOT / "Benchmarks" / "goals.json",
                        help=argparse.SUPPRESS)
    return parser.parse_args()


def tell(text):
    print(text, file=sys.stderr, flush=True)


def rows_for(path, wanted):
    rows = [row for row in goals.load(path) if wanted in row["path"]]
    if not rows:
        raise goals.GoalsError(f"no goal's path contains “{wanted}”")
    return rows


def processor():
    for line in Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
        if line.startswith("model name"):
            return line.partition(":")[2].strip()
    return platform.machine()


def renew(verdicts, grown):
    machine = (f"{processor()}, one of {os.cpu_count()} processors, Linux "
               f"{platform.release().split('-')[0]}, {datetime.date.today()}")
    readme = ROOT / "README.md"
    text = writing.renewed(readme.read_text(encoding="utf-8"),
                           writing.section(verdicts, grown, machine))
    PICTURE.parent.mkdir(exist_ok=True)
    PICTURE.write_text(chart.chart(verdicts), encoding="utf-8")
    readme.write_text(text, encoding="utf-8")


def bench(options):
    rows = rows_for(options.goals, options.filter)
    if options.json and not options.json.resolve().parent.is_dir():
        raise goals.GoalsError(f"{options.json} cannot be written: there is no such folder")
    if options.check:
        return
    measuring.stay_on_one_processor()
    measured = measuring.measure(options.programs, options.filter,
                                 measuring.QUICK if options.quick else measuring.THOROUGH, tell)
    verdicts = [goals.verdict(measured, row) for row in rows]
    grown = growth.of_each_path(measured)
    print(writing.table(verdicts))
    print(writing.growth_table(grown), end="")
    if options.json:
        writing.write_json(options.json, verdicts)
    if not options.filter and not options.quick:
        renew(verdicts, grown)


def main():
    try:
        bench(arguments())
    except (goals.GoalsError, measuring.MeasuringError, writing.WritingError, OSError) as error:
        tell(f"bench: {error}")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
