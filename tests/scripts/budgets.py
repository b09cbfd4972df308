"""Usage: budgets.py PROJECT

Holds bench/budgets.py against made-up counts: a valgrind of the test's own writes them."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(sys.argv.pop(1))

# Two operations, done ten times each, and a thing that takes bytes.
VALGRIND = """#!/bin/sh
for argument; do
    case "$argument" in --callgrind-out-file=*) dump=${argument#*=} ;; esac
done
echo "summary: $QUERY" >"$dump.1"
echo "totals: $ANSWER" >"$dump.2"
printf 'query\\t10\\ttimes\\nhost\\t%s\\tbytes\\nanswer\\t10\\ttimes\\n' "$HOST"
exit "${STATUS:-0}"
"""


class Budgets(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        shutil.copy(PROJECT / "bench/budgets.py", self.folder)
        valgrind = self.folder / "valgrind"
        valgrind.write_text(VALGRIND)
        valgrind.chmod(0o755)
        self.budgets({"query": 100.0, "host": 7000.0, "answer": 200.0})

    def budgets(self, values):
        (self.folder / "budgets.json").write_text(json.dumps(values))

    def run_with(self, *arguments, **counts):
        measured = {"QUERY": "1000", "ANSWER": "2000", "HOST": "7000", **counts}
        return subprocess.run(
            [sys.executable, self.folder / "budgets.py", "any-program", *arguments],
            capture_output=True, text=True,
            env={**os.environ, **measured, "PATH": f"{self.folder}:{os.environ['PATH']}"})

    def row(self, run, name):
        return next(line for line in run.stdout.splitlines() if line.split()[:1] == [name])

    def test_equal_counts_pass(self):
        self.assertEqual(self.run_with().returncode, 0)

    def test_growth_of_less_than_five_percent_passes(self):
        run = self.run_with(QUERY="1049", ANSWER="2098", HOST="7343")
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertIn("+4.9 %", self.row(run, "query"))

    def test_growth_of_more_than_five_percent_fails(self):
        for grown in {"QUERY": "1051"}, {"ANSWER": "2102"}, {"HOST": "7357"}:
            run = self.run_with(**grown)
            self.assertEqual(run.returncode, 1, run.stdout)
            self.assertIn("GROWN", self.row(run, next(iter(grown)).lower()))
            self.assertIn("+5.1 %", run.stdout)
            self.assertEqual(run.stdout.count("GROWN"), 1)

    def test_failure_tells_how_to_accept(self):
        self.assertIn("`scripts/bench --budgets --accept`", self.run_with(QUERY="1051").stderr)

    def test_less_than_the_budget_passes(self):
        self.assertEqual(self.run_with(QUERY="10", HOST="70").returncode, 0)

    def test_what_has_no_budget_fails(self):
        self.budgets({"query": 100.0, "host": 7000.0})
        run = self.run_with()
        self.assertEqual(run.returncode, 1)
        self.assertIn("has no budget", self.row(run, "answer"))

    def test_budget_of_what_is_not_measured_fails(self):
        self.budgets({"query": 100.0, "host": 7000.0, "answer": 200.0, "gone": 1.0})
        run = self.run_with()
        self.assertEqual(run.returncode, 1)
        self.assertIn("is not measured any more", self.row(run, "gone"))

    def test_accepting_writes_what_was_measured(self):
        run = self.run_with("--accept", QUERY="9999", HOST="8000.04")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(json.loads((self.folder / "budgets.json").read_text()),
                         {"query": 999.9, "host": 8000.0, "answer": 200.0})
        self.assertEqual(self.run_with(QUERY="9999", HOST="8000.04").returncode, 0)

    def test_without_accepting_nothing_is_written(self):
        before = (self.folder / "budgets.json").read_text()
        self.run_with(QUERY="9999")
        self.assertEqual((self.folder / "budgets.json").read_text(), before)

    def test_program_that_fails_changes_nothing_and_fails(self):
        before = (self.folder / "budgets.json").read_text()
        self.assertEqual(self.run_with("--accept", QUERY="9999", STATUS="1").returncode, 1)
        self.assertEqual((self.folder / "budgets.json").read_text(), before)


unittest.main()
