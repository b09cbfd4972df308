#!/usr/bin/env python3
"""Usage: bench/budgets.py BENCH_BUDGETS [--accept]

Runs the program under callgrind and holds its instruction counts, and the bytes that it tells, against
budgets.json beside this file. Fails where one is over 5 % more than its budget, and where what is measured and
the budgets are not the same. --accept writes what this run measured as the new budgets."""

import itertools
import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

BUDGETS = Path(__file__).with_name("budgets.json")
MOST_GROWTH = 1.05


def counts(program):
    """Instructions by operation, and bytes by what takes them."""
    with tempfile.TemporaryDirectory() as folder:
        dump = Path(folder, "counts")
        run = subprocess.run(
            ["valgrind", "--tool=callgrind", "--instr-atstart=no", "--collect-atstart=no",
             f"--callgrind-out-file={dump}", program],
            capture_output=True, text=True)
        if run.returncode != 0:
            sys.exit(run.stderr)
        result = {}
        dumps = itertools.count(1)  # one for each operation
        for line in run.stdout.splitlines():
            name, number, unit = line.split("\t")
            if unit == "bytes":
                result[name] = round(float(number), 1)
                continue
            text = Path(f"{dump}.{next(dumps)}").read_text(errors="replace")
            total = re.findall(r"^(?:summary|totals): (\d+)", text, re.MULTILINE)[-1]
            result[name] = round(int(total) / int(number), 1)
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
    print(f"    {'instructions, or bytes':48} {'budget':>10} {'now':>10} {'change':>8}")
    for operation in {**budgets, **measured}:
        count, budget = measured.get(operation), budgets.get(operation)
        change = f"{(count / budget - 1) * 100:+.1f} %" if count and budget else ""
        problem = verdict(count, budget)
        failed = failed or bool(problem)
        print(f"    {operation:48} {budget or '':>10} {count or '':>10} {change:>8} {problem}")
    if failed:
        sys.exit("Not all is within its budget. Where the growth is wanted, run\n"
                 "`scripts/bench --budgets --accept` and commit bench/budgets.json with the reason.")


main()
