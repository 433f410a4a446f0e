"""What ./bench runs and shows: report.py [--json FILE] [--compare OLD.json]. docs/performance.md says what the rows mean."""

import argparse
import json
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile
from dataclasses import asdict, dataclass
from pathlib import Path

import jobs
import sizes

ROOT = Path(__file__).resolve().parent.parent
BUILD, UEFI, SIZES = (ROOT / "build" / name for name in ("bench", "uefi", "uefi-sizes"))
BENCHMARKS = BUILD / "benchmarks"
VERSION = 1
REPEATS = 7
KIB = 1024
TRACE_TESTS = 3 * 1_000_000  # of the level, in bench_parts' TraceOff


@dataclass
class Row:
    name: str
    value: float
    unit: str
    bar: float | None = None
    most_is_best: bool = False
    noise: float = 0.0

    @property
    def is_met(self) -> bool:
        return self.bar is None or (self.value >= self.bar if self.most_is_best else self.value <= self.bar)

    def is_worse_than(self, old: "Row") -> bool:
        worse = old.value - self.value if self.most_is_best else self.value - old.value
        return worse > self.noise + old.noise


@dataclass
class Cost:
    """Medians over the runs: microseconds, KiB; and how far the CPU times lay apart."""
    cpu: float
    wall: float
    peak: float
    spread: float


class Bench:
    def __init__(self, folder: Path):
        self.folder = folder
        self.rows: list[Row] = []
        subprocess.run([BUILD / "varnok", "/?"], env={"XDG_STATE_HOME": str(folder)}, capture_output=True)
        self.default = folder / "varnok/board"
        self.smbios = (self.default / "smbios.bin").read_bytes()
        self.empty = self.board("empty")
        self.start = self.cost(self.empty, "/?")  # what each run pays before its work

    def board(self, name: str, **what) -> Path:
        shutil.rmtree(self.folder / name, ignore_errors=True)
        return jobs.make_board(self.folder / name, self.smbios, **what)

    def add(self, name: str, value: float, unit: str, bar=None, most_is_best=False, noise=0.0) -> None:
        self.rows.append(Row(name, value, unit, bar, most_is_best, noise))
        print(shown(self.rows[-1]), flush=True)

    def execute(self, *command, **environment) -> str:
        """The error output of a command that must end well."""
        with open(self.folder / "console", "wb") as console:
            done = subprocess.run(command, cwd=self.folder, stdout=console, stderr=subprocess.PIPE, text=True,
                                  env=environment)
        if done.returncode != 0:
            raise SystemExit(f"{command} ended with {done.returncode}: {done.stderr}")
        return done.stderr

    def run(self, board: Path, arguments, before=(), **environment) -> str:
        return self.execute(*before, BUILD / "varnok", *arguments, VARNOK_BOARD=str(board), **environment)

    def cost(self, board: Path, *arguments: str, before_each=lambda: None) -> Cost:
        runs = []
        for _ in range(REPEATS):
            before_each()
            said = self.run(board, arguments, [BENCHMARKS / "measured_run"]).splitlines()[-1]
            status, *numbers = map(float, said.split())
            if status != 0:
                raise SystemExit(f"{arguments} ended with {status:.0f}")
            runs.append(numbers)
        cpu, wall, peak = zip(*runs)
        return Cost(statistics.median(cpu), statistics.median(wall), statistics.median(peak), statistics.pstdev(cpu))

    def requests(self, board: Path, *arguments: str) -> int:
        log = self.folder / "traffic"
        self.run(board, arguments, VARNOK_TRAFFIC=str(log))
        return log.read_text().count(" > ")

    def instructions(self, board: Path, *arguments: str) -> int:
        """Of a run; by the processor's counter where there is one, else by callgrind."""
        if shutil.which("perf"):
            counted = self.folder / "counted"
            self.run(board, arguments, ["perf", "stat", "-x,", "-e", "instructions:u", "-o", counted])
            first = counted.read_text().strip().splitlines()[-1].split(",")[0]
            if first.isdigit():
                return int(first)
        return self.callgrind(BUILD / "varnok", *arguments, VARNOK_BOARD=str(board))

    def callgrind(self, *command, only: str | None = None, **environment) -> int:
        """The instructions of a command, or of the functions of the name `only` with what they call."""
        log = self.folder / "callgrind.log"
        options = [f"--log-file={log}", f"--callgrind-out-file={self.folder / 'callgrind'}"]
        options += [f"--toggle-collect={only}"] if only else []
        self.execute("valgrind", "--tool=callgrind", *options, *command, **environment)
        return next(int(line.split()[-1]) for line in log.read_text().splitlines() if "Collected" in line)

    # --- the rows ---

    def sizes(self) -> None:
        for name, bar in [("VARNOK.EFI", 240), ("SNAPSHOT.EFI", 96), ("ipmi.efi", 8)]:
            self.add(name, (UEFI / name).stat().st_size / KIB, "KiB", bar)
        for name, size in sizes.by_folder(ROOT, SIZES).items():
            self.add(f"VARNOK.EFI: {name}", size / KIB, "KiB", noise=0.5)

    def per_request(self, name: str, board: Path, *arguments: str, bar: float, before_each=lambda: None) -> Cost:
        before_each()
        requests = self.requests(board, *arguments)
        cost = self.cost(board, *arguments, before_each=before_each)
        self.add(f"{name}: CPU a request", (cost.cpu - self.start.cpu) / requests, "us", bar,
                 noise=2 * (cost.spread + self.start.spread) / requests)
        return cost

    def inventory(self) -> None:
        self.add("start, usage and end: default board", self.instructions(self.default, "/?"), "instructions", 1_000_000,
                 noise=10_000)
        fru = self.board("fru", fru=jobs.fru_image(300))
        self.per_request("/d fru of 60 KiB", fru, "/d", "fru", bar=4)
        many = self.board("many", records=[jobs.oem_record(i) for i in range(5000)])
        self.per_request("/d sdr of 5,000 records", many, "/d", "sdr", bar=4)
        for count, kind, bars in [(1000, jobs.oem_record, {"wall": 300}), (1024, jobs.sensor_record, {"cpu": 60})]:
            name = f"{count}.sdr"
            records = [kind(i) for i in range(count)]
            (self.folder / name).write_text(jobs.sdr_file(records))
            what = f"{sum(map(len, records)) / KIB:.0f} KiB, {count:,} records"
            cost = self.per_request(f"/sdr of {what}", self.folder / "written", "/sdr", name, bar=5,
                                    before_each=lambda: self.board("written"))
            self.add(f"/sdr of {what}: wall", cost.wall / 1000, "ms", bars.get("wall"), noise=10)
            self.add(f"/sdr of {what}: CPU", cost.cpu / 1000, "ms", bars.get("cpu"), noise=2 * cost.spread / 1000)
            self.add(f"/sdr of {what}: peak", cost.peak / KIB, "MiB", 8, noise=0.5)
        cost = self.cost(self.folder / "written", "/d", "sdr")
        self.add("/d sdr of 64 KiB: CPU", cost.cpu / 1000, "ms", 60, noise=2 * cost.spread / 1000)
        self.add("/d sdr of 64 KiB: peak", cost.peak / KIB, "MiB", 8, noise=0.5)
        few, more = (self.instructions(self.board("written"), "/sdr", name) for name in self.halves())
        self.add("ten times the records: instructions", more / few, "times", 11, noise=0.1)

    def trace(self) -> None:
        """How many lines a run would log, by what the test of the level costs when it logs none."""
        self.execute(BENCHMARKS / "traced_run", self.default, "/d", "sdr")
        lines = (self.folder / "DBGLOG.txt").read_bytes().count("\n".encode("utf-16-le"))
        tests = self.callgrind(*self.parts_command(self.default), "--benchmark_filter=TraceOff", only="*TraceOff*")
        share = lines * tests / TRACE_TESTS / self.instructions(self.default, "/d", "sdr")
        self.add("trace that is off: share of /d sdr", 100 * share, "%", 1, noise=0.01)

    def halves(self):
        for count in (500, 5000):
            (self.folder / f"{count}.sdr").write_text(jobs.sdr_file([jobs.oem_record(i) for i in range(count)]))
            yield f"{count}.sdr"

    def scripts(self) -> None:
        def write(text: str) -> None:
            (self.folder / "script.CFG").write_text(text)

        lines = 1_000_000
        write(jobs.flat_script(lines))
        cost = self.cost(self.empty, "/cfg", "script")
        self.add("script of 1,000,000 lines", lines / cost.cpu, "million lines/s", 2, True,
                 noise=2 * lines * cost.spread / cost.cpu**2)
        self.add("memory of a script", (cost.peak - self.start.peak) * KIB / lines, "bytes a line", 80, noise=0.5)
        for name, make, most in [("lines", jobs.flat_script, 1_000_000), ("nested blocks", jobs.nested_script, 200_000),
                                 ("tags", jobs.tagged_script, 100_000)]:
            counted = []
            for count in (most // 10, most):
                write(make(count))
                counted.append(self.instructions(self.empty, "/cfg", "script"))
            self.add(f"{most:,} {name} to a tenth: instructions", counted[1] / counted[0], "times", 11, noise=0.1)

    def parts_command(self, board: Path) -> list:
        return [BENCHMARKS / "bench_parts", ROOT / "samples/server-board.fru", self.folder / "1024.sdr", board]

    def parts(self) -> None:
        done = subprocess.run([*self.parts_command(self.empty), "--benchmark_format=json",
                               f"--benchmark_repetitions={REPEATS}", "--benchmark_report_aggregates_only=true"],
                              check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        results = {each["name"]: each for each in json.loads(done.stdout)["benchmarks"]}
        for name, result in results.items():
            if not name.endswith("_median"):
                continue
            part = name.removesuffix("_median")
            spread = results[part + "_stddev"]["cpu_time"] / result["cpu_time"]
            if "bytes_per_second" in result:
                speed = result["bytes_per_second"] / 1e6
                self.add(f"part {part}", speed, "MB/s", 50, True, noise=2 * speed * spread)
            else:
                self.add(f"part {part}", result["cpu_time"], "ns", noise=2 * result["cpu_time"] * spread)


def shown(row: Row) -> str:
    bar = "" if row.bar is None else f"{'>=' if row.most_is_best else '<='} {row.bar:,g}"
    number = f"{row.value:,.0f}" if row.value >= 1000 else f"{row.value:.3g}" if row.value < 10 else f"{row.value:.1f}"
    return f"{row.name:<52} {number:>10} {row.unit:<16} {bar:<14} {'' if row.is_met else 'MISSED'}".rstrip()


def machine() -> str:
    model = next((line.split(":")[1].strip() for line in Path("/proc/cpuinfo").read_text().splitlines()
                  if line.startswith("model name")), platform.machine())
    return f"{os.cpu_count()} x {model}, Linux {platform.release()}"


def compare(rows: list[Row], file: Path) -> int:
    stored = json.loads(file.read_text())
    if stored.get("version") != VERSION:
        raise SystemExit(f"{file}: is not of version {VERSION}")
    old = {row["name"]: Row(**row) for row in stored["rows"]}
    worse = [(row, old[row.name]) for row in rows if row.name in old and row.is_worse_than(old[row.name])]
    print(f"\nWorse than {file} ({stored['machine']}) by more than the noise: {len(worse) or 'nothing'}")
    for row, before in worse:
        print(f"{shown(row)}   was {before.value:,.3f}")
    return 1 if worse else 0


def main() -> int:
    arguments = argparse.ArgumentParser(prog="./bench", description="What VARNOK costs, beside what it may cost.")
    arguments.add_argument("--json", type=Path, metavar="FILE", help="write the rows there, too")
    arguments.add_argument("--compare", type=Path, metavar="OLD.json",
                           help="show the rows that got worse by more than their noise; the exit status is 1 then")
    given = arguments.parse_args()
    print(machine())
    with tempfile.TemporaryDirectory() as folder:
        bench = Bench(Path(folder))
        for part in (bench.sizes, bench.inventory, bench.trace, bench.scripts, bench.parts):
            part()
    missed = [row.name for row in bench.rows if not row.is_met]
    print(f"\n{len(bench.rows)} rows, {len(missed)} miss their bar." + "".join(f"\n  {name}" for name in missed))
    if given.json:
        stored = {"version": VERSION, "machine": machine(), "rows": [asdict(row) for row in bench.rows]}
        given.json.write_text(json.dumps(stored, indent=1) + "\n")
    return compare(bench.rows, given.compare) if given.compare else 0


if __name__ == "__main__":
    sys.exit(main())
