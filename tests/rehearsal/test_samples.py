#!/usr/bin/env python3
"""The samples on all roads under faults: none comes to anything that the table of docs/testing.md does not have.

Here every so-manieth fault is tried; `test_samples.py --table` tries all and prints the table.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
STEPS = {"MASTER.CFG": 173, "COMPARE.CFG": 29, "RESIZE.CFG": 17, "STOP.CFG": 17}
RESULTS = ["false success", "cannot be shown", "no way back", "stuck", "endless", "rerun helps", "old board",
           "wanted board"]


def rehearse(script, step):
    program = os.environ.get("VARNOK_BOARD_PROGRAM", ROOT / "build/host/varnok-board")
    environment = os.environ | {"BOARD_SERIAL": "VWSB26010001", "CHASSIS_SERIAL": "VWCH26010001"}
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([program, "new", f"{folder}/board"], check=True, capture_output=True)
        done = subprocess.run([program, "rehearse", script, "--board", f"{folder}/board", "--all-roads", "--every-fault",
                               "--step", str(step), "--json"],
                              cwd=ROOT / "samples", env=environment, capture_output=True, check=False)
    if done.returncode > 1:
        raise RuntimeError(done.stderr.decode())
    return json.loads(done.stdout)


def scripts():
    return sorted(path.name for path in (ROOT / "samples").glob("*.CFG"))


def table_of_page():
    rows = re.findall(r"^\| `(\w+\.CFG)` \|(.*)\|$", (ROOT / "docs/testing.md").read_text(), re.M)
    return {name: [int(cell.replace(",", "")) for cell in cells.split("|")] for name, cells in rows}


class SampleTest(unittest.TestCase):
    def test_samples_under_faults(self):
        table = table_of_page()
        self.assertEqual(sorted(table), scripts())
        for script, (roads, _, *known) in table.items():
            with self.subTest(script):
                report = rehearse(script, STEPS.get(script, 7))
                self.assertEqual(len(report["roads"]), roads)
                self.assertGreater(len(report["faults"]), 0)
                new = [(fault["kind"], fault["request"], fault["result"]) for fault in report["faults"]
                       if known[RESULTS.index(fault["result"])] == 0]
                self.assertEqual(new, [])
                self.assertEqual([fault for fault in report["faults"] if fault["message"].startswith("SIG")], [])


if __name__ == "__main__":
    if sys.argv[1:] != ["--table"]:
        unittest.main()
    for each in scripts():
        whole = rehearse(each, 1)
        counts = [len(whole["roads"]), len(whole["faults"]), *whole["faultResults"].values()]
        print(f"| `{each}` |", " | ".join(f"{count:,}" for count in counts), "|")
