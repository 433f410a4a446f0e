"""Ours and other programs on one BMC, a simulated board behind KCS in a Linux guest: peers.py

Needs what ./test installs, and what it builds of the host. docs/performance.md says how the table reads.
"""

import os
import re
import shutil
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

import jobs

ROOT = Path(__file__).resolve().parent.parent
sys.path.append(str(ROOT / "tests/qemu"))
from machine import Board, LinuxMachine, outside_bmc  # noqa: E402

SENSORS = 100
# A request that no program makes stands before and behind each job in the traffic log. ipmitool sends some
# more around it, always the same.
MARK = "ipmitool raw 0x2e 0x7f > /dev/null 2>&1"
MARKED = re.compile(r"^\S+ > 20 2E/0 7F", re.MULTILINE)
JOBS = {
    "show device 0": {"varnok": "varnok /d fru", "ipmitool": "ipmitool fru print 0",
                      "freeipmi": "ipmi-fru -D openipmi --device-id=0"},
    "write device 0": {"varnok": "varnok /fru server-board.fru", "ipmitool": "ipmitool fru write 0 device.bin"},
    "show or dump the repository": {"varnok": "varnok /d sdr", "ipmitool": "ipmitool sdr dump records.bin"},
    "write the repository": {"varnok": "varnok /sdr records.sdr", "ipmitool": "ipmitool sdr fill file written.bin"},
}


@dataclass
class Traffic:
    """At the BMC's interface; bytes with net function and command."""
    requests: int = 0
    bytes: int = 0

    @classmethod
    def of(cls, log: str) -> "Traffic":
        traffic = cls()
        for line in log.splitlines():
            words = line.partition(" # ")[0].split()
            if len(words) < 5 or words[1] not in "<>":
                continue
            traffic.requests += words[1] == ">"
            traffic.bytes += 2 + len([word for word in words[5:] if word != "lost"])
        return traffic

    def without(self, other: "Traffic") -> "Traffic":
        return Traffic(self.requests - other.requests, self.bytes - other.bytes)


class Guest(LinuxMachine):
    PROGRAMS = ["varnok", shutil.which("ipmitool"), "/usr/sbin/ipmi-fru"]

    def install(self, script: list[str]):
        # ipmi-fru wants a user with a home, where it keeps what it has learnt of the repository.
        own = ["mkdir /etc /root", "echo root:x:0:0::/root:/bin/sh > /etc/passwd", "export HOME=/root",
               f"{JOBS['show device 0']['freeipmi']} > out 2>&1"]
        super().install(own + script)


def content_of(folder: Path, board: Board) -> Path:
    content = folder / "content"
    content.mkdir()
    shutil.copy(ROOT / "samples/server-board.fru", content)
    shutil.copy(board.folder / "board.bin", content / "device.bin")
    records = [jobs.sensor_record(number) for number in range(SENSORS)]
    (content / "records.sdr").write_text(jobs.sdr_file(records))
    (content / "written.bin").write_bytes(b"".join(records))
    return content


def seconds(text: str, kind: str) -> float:
    minutes, rest = re.findall(rf"^{kind}\s+(\d+)m ([\d.]+)s", text, re.MULTILINE)[-1]
    return 60 * int(minutes) + float(rest)


def main() -> None:
    steps = [(job, program, line) for job, programs in JOBS.items() for program, line in programs.items()]
    with tempfile.TemporaryDirectory(prefix="varnok-qemu-") as name:
        folder = Path(name)
        board = Board.default(folder)
        os.environ["VARNOK_TRAFFIC"] = str(folder / "traffic")
        commands = {"nothing": f"{MARK}; {MARK}"}
        commands |= {f"{job}, {program}": f"time sh -c 'exec {line} > out 2>&1'; STATUS=$?; {MARK}; (exit $STATUS)"
                     for job, program, line in steps}
        with board:
            boot = Guest(folder, content_of(folder, board), outside_bmc(board.port)).run(commands)
        parts = MARKED.split((folder / "traffic").read_text())[1:]
    marking = Traffic.of(parts[0])
    print(f"{'job':<28} {'program':<9} {'status':>6} {'wall s':>7} {'CPU s':>6} {'requests':>8} {'bytes':>7}")
    for (job, program, _), part in zip(steps, parts[1:]):
        result = boot.results[f"{job}, {program}"]
        used = Traffic.of(part).without(marking)
        cpu = seconds(result.text, "user") + seconds(result.text, "sys")
        print(f"{job:<28} {program:<9} {result.status:>6} {seconds(result.text, 'real'):>7.2f} {cpu:>6.2f} "
              f"{used.requests:>8} {used.bytes:>7}")


if __name__ == "__main__":
    main()
