"""A virtual board for the end-to-end tests: OVMF with its built-in shell in QEMU, a FAT stick with the program on it,
and a BMC. One boot runs many commands; every command's text, exit status and files can be looked at afterwards."""

import os
import re
import selectors
import shutil
import subprocess
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

FIRMWARE_CODE = "/usr/share/OVMF/OVMF_CODE_4M.fd"
FIRMWARE_VARIABLES = "/usr/share/OVMF/OVMF_VARS_4M.fd"
BOOT_LIMIT = 240  # seconds; a boot on an idle machine takes 6 to 11

BUILD = Path(os.environ.get("VARNOK_UEFI_BUILD", Path(__file__).resolve().parents[2] / "build" / "uefi"))


class Stick:
    """A FAT image, filled and read with mtools."""

    def __init__(self, image: Path, small: bool = False):
        self.image = image
        shape = ["-f", "1440"] if small else ["-F", "-T", str(34 * 1024 * 2), "-h", "16", "-s", "63"]
        self._run(["mformat", "-i", str(image), "-C"] + shape + ["-v", "VARNOK", "::"])

    @staticmethod
    def _run(command, **kwargs):
        return subprocess.run(command, check=True, capture_output=True, **kwargs).stdout

    def put(self, source: Path, name: str | None = None):
        self._run(["mcopy", "-o", "-i", str(self.image), str(source), "::/" + (name or source.name)])

    def write(self, name: str, content: bytes):
        self._run(["mcopy", "-o", "-i", str(self.image), "-", "::/" + name], input=content)

    def make_folder(self, name: str):
        self._run(["mmd", "-i", str(self.image), "::/" + name])

    def read(self, name: str) -> bytes | None:
        result = subprocess.run(["mcopy", "-n", "-i", str(self.image), "::/" + name, "-"], capture_output=True)
        return result.stdout if result.returncode == 0 else None

    def read_text(self, name: str) -> str | None:
        """A 16-bit text file, with or without a byte-order mark."""
        content = self.read(name)
        return None if content is None else content.decode("utf-16-le").removeprefix("\ufeff")


@dataclass
class Result:
    """What one command showed and how it ended."""

    text: str = ""
    status: int | None = None


@dataclass
class Command:
    line: str
    keys: list[tuple[str, str]] = field(default_factory=list)  # (text to wait for, keys to type then)


@dataclass
class Boot:
    transcript: str
    results: dict[str, Result]


ESCAPES = re.compile(r"\x1b\[[0-9;=?]*[A-Za-z]|\x1b[()].|\x1b[=>]")


def plain(text: str) -> str:
    """Console text without the terminal's control sequences."""
    return ESCAPES.sub("", text)


class Machine:
    def __init__(self, folder: Path, stick: Stick, devices: list[str] | None = None):
        self.folder = folder
        self.stick = stick
        self.devices = devices or []

    def command_line(self) -> list[str]:
        variables = self.folder / "variables.fd"
        shutil.copyfile(FIRMWARE_VARIABLES, variables)
        return [
            "qemu-system-x86_64", "-machine", "q35,accel=tcg", "-m", "256", "-nodefaults", "-display", "none",
            "-net", "none", "-serial", "stdio", "-no-reboot",
            "-drive", f"if=pflash,format=raw,unit=0,readonly=on,file={FIRMWARE_CODE}",
            "-drive", f"if=pflash,format=raw,unit=1,file={variables}",
            "-drive", f"if=none,id=stick,format=raw,file={self.stick.image}",
            "-device", "virtio-blk-pci,drive=stick",
        ] + self.devices

    def run(self, commands: dict[str, Command | str], setup: list[str] | None = None) -> Boot:
        """Boots once and runs the commands in order; `setup` lines come before them."""
        commands = {name: Command(c) if isinstance(c, str) else c for name, c in commands.items()}
        script = ["@echo -off", "fs0:"] + (setup or [])
        for name, command in commands.items():
            script += [f"echo \"[[begin {name}]]\"", command.line, f"echo \"[[end {name} %lasterror%]]\""]
        script += ["echo \"[[finished]]\"", "reset -s"]
        self.stick.write("startup.nsh", "".join(line + "\r\n" for line in script).encode("latin-1"))
        keys = [("seconds to skip", "\r")] + [pair for command in commands.values() for pair in command.keys]
        transcript = self._drive(keys)
        return Boot(transcript, self._split(transcript, commands))

    def _drive(self, keys: list[tuple[str, str]]) -> str:
        process = subprocess.Popen(self.command_line(), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT)
        output = bytearray()
        searched = 0
        deadline = time.monotonic() + BOOT_LIMIT
        selector = selectors.DefaultSelector()
        selector.register(process.stdout, selectors.EVENT_READ)
        try:
            while time.monotonic() < deadline:
                if not selector.select(timeout=1):
                    continue
                part = os.read(process.stdout.fileno(), 65536)
                if not part:
                    break
                output += part
                while keys:
                    found = output.find(keys[0][0].encode("latin-1"), searched)
                    if found < 0:
                        break
                    searched = found + len(keys[0][0])
                    time.sleep(0.2)
                    process.stdin.write(keys.pop(0)[1].encode("latin-1"))
                    process.stdin.flush()
            else:
                raise AssertionError("the machine did not end in time:\n" + plain(output.decode("latin-1"))[-3000:])
        finally:
            selector.close()
            if process.poll() is None:
                try:
                    process.wait(timeout=10)
                except subprocess.TimeoutExpired:
                    process.kill()
                    process.wait()
            process.stdin.close()
            process.stdout.close()
        return output.decode("latin-1")

    @staticmethod
    def _split(transcript: str, commands: dict[str, Command]) -> dict[str, Result]:
        text = plain(transcript)
        results = {}
        for name in commands:
            match = re.search(rf"\[\[begin {re.escape(name)}\]\]\r*\n(.*?)\[\[end {re.escape(name)} (\w*)\]\]", text,
                              re.DOTALL)
            results[name] = Result() if match is None else Result(match[1], int(match[2], 16))
        return results


def temporary_folder() -> tempfile.TemporaryDirectory:
    return tempfile.TemporaryDirectory(prefix="varnok-qemu-")
