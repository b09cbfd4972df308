"""Usage: bench.py PROJECT

Holds scripts/bench against benchmarks of the test's own: what becomes of figures that miss what is wanted."""

import json
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(sys.argv.pop(1))

# Writes what stands beside it where --json says, and ends as is told there.
BENCHMARK = """#!/bin/sh
while [ "$1" != --json ]; do shift; done
[ ! -e "$0.json" ] || cp "$0.json" "$2"
exit "$( cat "$0.status" )"
"""


class Bench(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name in "scripts", "bench", "build/release/bin":
            (self.folder / name).mkdir(parents=True)
        for name in "bench", "common.sh":
            shutil.copy(PROJECT / "scripts" / name, self.folder / "scripts")
        for name in "bootstrap", "build":
            self.program(self.folder / "scripts" / name, "#!/bin/sh\n")

    def program(self, path, text):
        path.write_text(text)
        path.chmod(0o755)

    def benchmark(self, name, status, figures=None):
        (self.folder / "bench" / f"{name}.cpp").touch()
        program = self.folder / "build/release/bin" / f"bench_{name}"
        self.program(program, BENCHMARK)
        Path(f"{program}.status").write_text(str(status))
        if figures is not None:
            rows = ",\n".join(f'  "{row}": {json.dumps(figure)}' for row, figure in figures.items())
            rows = rows.replace("{", "{ ").replace("}", " }")  # the form that the benchmarks write
            Path(f"{program}.json").write_text(f"{{\n{rows}\n}}\n")

    def figure(self, median, met=None, **wanted):
        figure = {"median": median, "least": 0.1, "most": 99, "unit": "times", **wanted}
        return figure if met is None else {**figure, "met": met}

    def bench(self, *arguments):
        return subprocess.run([self.folder / "scripts/bench", *arguments], capture_output=True, text=True)

    def test_all_met_is_success(self):
        self.benchmark("one", 0, {"row": self.figure(3.5, True, atLeast=3)})
        run = self.bench()
        self.assertEqual((run.returncode, run.stderr), (0, ""))

    def test_missed_rows_are_named_after_all_have_run(self):
        self.benchmark("one", 3, {
            "slow row": self.figure(0.79, False, atLeast=0.85), "good row": self.figure(0.9, True, atLeast=0.85)})
        self.benchmark("two", 3, {"fat row": self.figure(9000, False, atMost=8192), "plain row": self.figure(1)})
        run = self.bench("--quick")
        self.assertEqual(run.returncode, 1)
        self.assertEqual(run.stderr.splitlines()[:-1], [
            "missed: slow row: 0.79, wanted at least 0.85", "missed: fat row: 9000, wanted at most 8192"])

    def test_benchmark_that_fails_is_named_and_the_others_run(self):
        self.benchmark("one", 1)
        self.benchmark("two", 3, {"row": self.figure(9, False, atMost=8)})
        run = self.bench()
        self.assertEqual(run.returncode, 1)
        self.assertEqual(run.stderr.splitlines()[:-1], [
            "missed: row: 9, wanted at most 8", "could not be measured: one"])

    def test_figures_are_written_whatever_was_missed(self):
        self.benchmark("one", 1)
        self.benchmark("two", 3, {"row": self.figure(9, False, atMost=8)})
        self.bench("--json", str(self.folder / "all.json"))
        figures = json.loads((self.folder / "all.json").read_text())
        self.assertEqual(list(figures), ["two"])
        self.assertEqual(figures["two"]["row"]["median"], 9)

    def test_figures_of_an_earlier_run_do_not_stand_in(self):
        self.benchmark("one", 0, {"row": self.figure(9, True, atMost=10)})
        self.bench()
        (self.folder / "build/release/bin/bench_one.json").unlink()
        (self.folder / "build/release/bin/bench_one.status").write_text("1")
        self.bench("--json", str(self.folder / "all.json"))
        self.assertEqual(json.loads((self.folder / "all.json").read_text()), {})


unittest.main()
