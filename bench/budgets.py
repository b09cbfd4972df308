#!/usr/bin/env python3
"""Usage: bench/budgets.py BENCH_BUDGETS [--accept]

Runs the program under callgrind and holds its instruction counts against bench/budgets.json. Fails where an
operation costs over 5 % more than its budget, and where the operations and the budgets are not the same.
--accept writes the counts of this run as the new budgets."""

import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

BUDGETS = Path(__file__).with_name("budgets.json")
MOST_GROWTH = 1.05


def counts(program):
    """Instructions by operation."""
    with tempfile.TemporaryDirectory() as folder:
        dump = Path(folder, "counts")
        run = subprocess.run(
            ["valgrind", "--tool=callgrind", "--instr-atstart=no", "--collect-atstart=no",
             f"--callgrind-out-file={dump}", program],
            capture_output=True, text=True)
        if run.returncode != 0:
            sys.exit(run.stderr)
        result = {}
        for number, line in enumerate(run.stdout.splitlines(), 1):
            operation, times = line.split("\t")
            text = Path(f"{dump}.{number}").read_text(errors="replace")
            total = re.findall(r"^(?:summary|totals): (\d+)", text, re.MULTILINE)[-1]
            result[operation] = round(int(total) / int(times), 1)
        return result


def verdict(count, budget):
    if budget is None:
        return "has no budget"
    if count is None:
        return "is not measured any more"
    return "GROWN" if count > budget * MOST_GROWTH else ""


def main():
    measured = counts(sys.argv[1])
    if "--accept" in sys.argv[2:]:
        BUDGETS.write_text(json.dumps(measured, indent=3) + "\n")
        print(f"wrote {BUDGETS}")
        return
    budgets = json.loads(BUDGETS.read_text())
    failed = False
    print(f"    {'instructions':45} {'budget':>10} {'now':>10} {'change':>8}")
    for operation in {**budgets, **measured}:
        count, budget = measured.get(operation), budgets.get(operation)
        change = f"{(count / budget - 1) * 100:+.1f} %" if count and budget else ""
        problem = verdict(count, budget)
        failed = failed or bool(problem)
        print(f"    {operation:45} {budget or '':>10} {count or '':>10} {change:>8} {problem}")
    if failed:
        sys.exit("An operation has outgrown its budget. Where the growth is wanted, run\n"
                 "`scripts/bench --budgets --accept` and commit bench/budgets.json with the reason.")


main()
