"""VARNOK.EFI's start beside an empty application's, and the memory that it takes: uefi.py

METERED.EFI, the program with a meter around it, in one boot of OVMF over a simulated board; what the build of `uefi`
and of `host` has made. 64 KiB of records take seconds: its waits are halts. docs/performance.md says what the figures were.
"""

import re
import sys
import tempfile
from pathlib import Path

import jobs

ROOT = Path(__file__).resolve().parent.parent
sys.path.append(str(ROOT / "tests/qemu"))
from machine import BUILD, Board, Machine, Stick, outside_bmc  # noqa: E402

# The least disturbed of these counts.
STARTS = 5
EMPTY_STARTS = 8
ROUNDS = 3
START_LINES = "\r\n".join(["METERED /?"] * (1 + STARTS) + (["EMPTY"] * EMPTY_STARTS + ["METERED /?"]) * ROUNDS)
IMAGES = ["METERED.EFI", "EMPTY.EFI"]
RECORDS = 1024


def metered(text: str, what: str) -> list[int]:
    return [int(number) for number in re.findall(rf"^{what} (\d+)\r*$", text, re.MULTILINE)]


def starts(text: str) -> tuple[float, float]:
    """From the shell's prompt to the banner; to the next prompt with an empty application. Processor's clock."""
    shown, done = metered(text, "shown"), metered(text, "done")
    between = [after - before for after, before in zip(shown[1:], done)]
    start, with_empty = min(between[:STARTS]), min(between[STARTS:])
    return start, (with_empty - start) / EMPTY_STARTS


def main() -> None:
    records = [jobs.sensor_record(number) for number in range(RECORDS)]
    with tempfile.TemporaryDirectory(prefix="varnok-qemu-") as name:
        folder = Path(name)
        stick = Stick(folder / "stick.img")
        for image in (*IMAGES, "ipmi.efi"):
            stick.put(BUILD / image)
        stick.write("records.sdr", jobs.sdr_file(records).encode())
        machine_type = type("Patient", (Machine,), {"LIMIT": 1200})
        board = Board.default(folder)
        board.change(lambda content: content["bmc"].setdefault("sdrs", {}).update(capacity=jobs.CAPACITY))
        with board:
            boot = machine_type(folder, stick, outside_bmc(board.port)).run(
                {"starts": START_LINES, "/sdr": "METERED /sdr records.sdr", "/d sdr": "METERED /d sdr"})
    start, empty = starts(boot.results["starts"].text)
    print(f"prompt to banner: {start / 1e6:.0f} million clocks, {start / empty:.2f} times an empty application")
    for job in ("/sdr", "/d sdr"):
        result = boot.results[job]
        print(f"{job} of {len(b''.join(records)) / 1024:.0f} KiB, status {result.status}: "
              f"{metered(result.text, 'pool')[0] / 1024:.0f} KiB of pool")


if __name__ == "__main__":
    main()
