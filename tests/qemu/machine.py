"""A virtual board for the end-to-end tests: OVMF with its built-in shell in QEMU, a FAT stick with the program on it,
and a BMC. One boot runs many commands; every command's text, exit status and files can be looked at afterwards."""

import json
import os
import re
import selectors
import shutil
import socket
import subprocess
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

FIRMWARE = "/usr/share/ovmf/OVMF.fd"  # without flash for its variables, whose emulation takes a fourth of a boot
EMULATOR = ["qemu-system-x86_64", "-machine", "q35,accel=tcg", "-nodefaults", "-display", "none", "-net", "none",
            "-serial", "stdio", "-no-reboot"]
BOOT_LIMIT = 240  # seconds; a boot on an idle machine takes 4

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("VARNOK_UEFI_BUILD", ROOT / "build" / "uefi"))
HOST_BUILD = Path(os.environ.get("VARNOK_HOST_BUILD", ROOT / "build" / "host"))
LINUX_BUILD = ROOT / "build" / "linux"  # a kernel with its modules and a shell, unpacked by tools/unpack-packages
FIXTURES = Path(__file__).resolve().parent / "fixtures"


class Stick:
    """A FAT image, filled and read with mtools."""

    def __init__(self, image: Path, small: bool = False):
        self.image = image
        shape = ["-f", "1440"] if small else ["-F", "-T", str(34 * 1024 * 2), "-h", "16", "-s", "63"]
        self._run(["mformat", "-i", str(image), "-C"] + shape + ["-v", "VARNOK", "::"])

    @classmethod
    def of_partition(cls, image: Path, offset: str) -> "Stick":
        """The volume inside a partitioned image."""
        stick = cls.__new__(cls)
        stick.image = f"{image}@@{offset}"
        return stick

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
    # Time passes faster than here: a boot and a request are mostly waits. Any faster, and answers from
    # outside come late.
    CLOCK = ["-icount", "shift=7,sleep=off", "-rtc", "clock=vm"]
    LAST_STATUS = "%lasterror%"
    FIRST_KEYS = [("seconds to skip", "\r")]
    LIMIT = BOOT_LIMIT

    def __init__(self, folder: Path, stick: Stick, devices: list[str] | None = None, halts: bool = True):
        """`halts`: the firmware's long waits are halts (tests/uefi/halting_stall.cpp), which cost nothing here."""
        self.folder = folder
        self.stick = stick
        self.devices = devices or []
        self.halts = halts

    def command_line(self) -> list[str]:
        return EMULATOR + self.CLOCK + [
            "-m", "256", "-bios", FIRMWARE,
            "-drive", f"if=none,id=stick,format=raw,file={str(self.stick.image).partition('@@')[0]}",
            "-device", "virtio-blk-pci,drive=stick",
        ] + self.devices

    def run(self, commands: dict[str, Command | str], setup: list[str] | None = None) -> Boot:
        """Boots once and runs the commands in order; `setup` lines come before them."""
        commands = {name: Command(c) if isinstance(c, str) else c for name, c in commands.items()}
        script = list(setup or [])
        for name, command in commands.items():
            script += [f"echo \"[[begin {name}]]\"", command.line, f"echo \"[[end {name} {self.LAST_STATUS}]]\""]
        self.install(script)
        transcript = self._drive(self.FIRST_KEYS + [pair for command in commands.values() for pair in command.keys])
        return Boot(transcript, self._split(transcript, commands))

    def install(self, script: list[str]):
        """Puts the lines where the machine runs them after its start."""
        if self.halts:
            self.stick.put(BUILD / "HALT.EFI")
            script.insert(0, "load HALT.EFI")
        script = ["@echo -off", "fs0:"] + script + ["reset -s"]
        self.stick.write("startup.nsh", "".join(line + "\r\n" for line in script).encode("latin-1"))

    def _drive(self, keys: list[tuple[str, str]]) -> str:
        process = subprocess.Popen(self.command_line(), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT)
        output = bytearray()
        searched = 0
        deadline = time.monotonic() + self.LIMIT
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


class LinuxMachine(Machine):
    """Linux with the host program in place of OVMF with the shell; the program's folder is `content`."""

    LAST_STATUS = "$(printf %x $?)"
    FIRST_KEYS = []
    MODULES = ["ipmi_msghandler", "ipmi_devintf", "ipmi_si"]
    PROGRAMS = ["varnok"]

    def __init__(self, folder: Path, content: Path, devices: list[str]):
        self.folder = folder
        self.content = content
        self.devices = devices

    def install(self, script: list[str]):
        root = self.folder / "root"
        for name in ("bin", "dev", "proc", "sys", "modules"):
            (root / name).mkdir(parents=True)
        shutil.copytree(self.content, root / "work")
        shutil.copy(LINUX_BUILD / "bin" / "busybox", root / "bin")
        for module in self.MODULES:
            shutil.copy(next((LINUX_BUILD / "lib" / "modules").rglob(module + ".ko")), root / "modules")
        programs = [HOST_BUILD / name for name in self.PROGRAMS]
        for program in programs:
            shutil.copy(program, root / "bin")
        for library in re.findall(r"(/\S+) \(0x", subprocess.check_output(["ldd", *programs], text=True)):
            (root / library[1:]).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(library, root / library[1:])
        start = ["#!/bin/busybox sh", "/bin/busybox --install -s /bin", "mount -t devtmpfs none /dev",
                 "mount -t proc none /proc", "mount -t sysfs none /sys", "stty -onlcr",
                 "export VARNOK_BOARD=/dev/ipmi0"]
        start += [f"insmod /modules/{module}.ko" for module in self.MODULES]
        start += ["until [ -c /dev/ipmi0 ]; do sleep 0.1; done", "cd /work"]
        (root / "init").write_text("\n".join(start + script + ["poweroff -f"]) + "\n")
        (root / "init").chmod(0o755)
        names = "\n".join(str(path.relative_to(root)) for path in sorted(root.rglob("*")))
        with open(self.folder / "root.cpio", "wb") as archive:
            subprocess.run(["cpio", "-o", "-H", "newc", "--quiet"], cwd=root, input=names.encode(), stdout=archive,
                           check=True)

    def command_line(self) -> list[str]:
        kernel = next((LINUX_BUILD / "boot").glob("vmlinuz-*"))
        # A busy computer makes the emulated timer look broken to a kernel that checks it.
        return EMULATOR + ["-m", "256", "-kernel", str(kernel), "-initrd", str(self.folder / "root.cpio"),
                           "-append", "console=ttyS0 quiet panic=-1 no_timer_check"] + self.devices


def own_bmc(port: int = 0xCA2, **properties) -> list[str]:
    """QEMU's own BMC behind KCS."""
    text = "".join(f",{name}={value}" for name, value in {"product_id": "0x4311", **properties}.items())
    return ["-device", f"ipmi-bmc-sim,id=bmc0{text}", "-device", f"isa-ipmi-kcs,bmc=bmc0,ioport={port:#x}"]


def outside_bmc(port: int) -> list[str]:
    """A BMC outside of QEMU, at a TCP port of this computer."""
    return ["-chardev", f"socket,id=c0,host=127.0.0.1,port={port},reconnect=1",
            "-device", "ipmi-bmc-extern,id=bmc0,chardev=c0", "-device", "isa-ipmi-kcs,bmc=bmc0,ioport=0xca2"]


class Board:
    """A simulated board in a folder of its own; serves it while used as a context."""

    def __init__(self, folder: Path):
        self.folder = folder

    @classmethod
    def default(cls, folder: Path) -> "Board":
        """The built-in default board, made by the program itself."""
        environment = dict(os.environ, XDG_STATE_HOME=str(folder))
        environment.pop("VARNOK_BOARD", None)
        subprocess.run([HOST_BUILD / "varnok", "/?"], env=environment, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)
        board = cls(folder / "varnok" / "board")
        board.change(cls.hasten)
        return board

    @staticmethod
    def hasten(content, erase: int = 1, restart: int = 1):
        """What takes the BMCs long takes these milliseconds: a server's clock is this computer's, and a machine's is
        far ahead of it."""
        content["bmc"]["sdrs"]["eraseMilliseconds"] = erase
        for controller in (content["bmc"], *content["controllers"]):
            controller["coldResetMilliseconds"] = restart

    def copy(self, folder: Path) -> "Board":
        shutil.copytree(self.folder, folder)
        return Board(folder)

    def change(self, change):
        """Edits board.json through a function that gets it as a dictionary."""
        file = self.folder / "board.json"
        content = json.loads(file.read_text())
        change(content)
        file.write_text(json.dumps(content, indent=2))

    def images(self) -> dict[str, bytes]:
        return {file.name: file.read_bytes() for file in sorted(self.folder.glob("*.bin"))}

    def run_host(self, arguments: list[str], folder: Path, keys: str = "",
                 environment: dict[str, str] | None = None) -> "Result":
        """The Linux program over this board, in `folder`."""
        done = subprocess.run([HOST_BUILD / "varnok", *arguments], cwd=folder, input=keys.encode(), capture_output=True,
                              env=dict(os.environ, VARNOK_BOARD=str(self.folder), **(environment or {})))
        return Result(done.stdout.decode(), done.returncode)

    def __enter__(self) -> "Board":
        structures = Path(f"{self.folder} structures")
        structures.mkdir(exist_ok=True)
        self.server = subprocess.Popen([HOST_BUILD / "varnok-board", "serve", self.folder, "--listen", "127.0.0.1:0",
                                        "--smbios", structures],
                                       stdout=subprocess.PIPE, text=True)
        self.port = int(self.server.stdout.readline().rsplit(":", 1)[1])
        sockets = max(1, len(list(structures.glob("*-type4.bin"))))  # QEMU wants as many
        self.smbios = ["-smp", f"1,maxcpus={sockets},sockets={sockets},cores=1,threads=1"]
        self.smbios += [word for file in sorted(structures.iterdir()) for word in ("-smbios", f"file={file}")]
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.end_status = self.server.wait(timeout=10)
        self.server.stdout.close()


def free_port() -> int:
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class IpmiSim:
    """OpenIPMI's BMC simulator, reachable by QEMU and by ipmitool; `devices` are its FRU devices as (controller,
    device ID, size, content), `records` its sensor data records, `sensors` the BMC's discrete sensors as (number,
    "scanning" or "no-scanning", set states)."""

    CONTROLLERS = {0x20: "0x23 1 5 0xbf 0x1291 0x4311", 0xB0: "0x31 2 1 0x29 0x1291 0x0c01"}

    def __init__(self, folder: Path, devices: list[tuple[int, int, int, bytes]], records: bytes = b"",
                 sensors: list[tuple[int, str, list[int]]] | None = None):
        self.folder = folder
        self.devices = devices
        self.records = records
        self.sensors = sensors or []

    def __enter__(self) -> "IpmiSim":
        self.port, self.lan_port = free_port(), free_port()
        (self.folder / "state").mkdir()
        (self.folder / "lan.conf").write_text(f"""name "board"
set_working_mc 0x20
  startlan 1
    addr 127.0.0.1 {self.lan_port}
    priv_limit admin
    allowed_auths_callback none md2 md5 straight
    allowed_auths_user none md2 md5 straight
    allowed_auths_operator none md2 md5 straight
    allowed_auths_admin none md2 md5 straight
    guid 00112233445566778899aabbccddeeff
  endlan
  serial 15 127.0.0.1 {self.port} codec VM
  user 2 true "test" "test" admin 10 none md2 md5 straight
""")
        commands = ["mc_setbmc 0x20"]
        for address, identity in self.CONTROLLERS.items():
            commands.append(f"mc_add {address:#x} 0 no-device-sdrs {identity}")
            for controller, device, size, content in self.devices:
                if controller == address:
                    data = " ".join(f"{byte:#04x}" for byte in content)
                    commands.append(f"mc_add_fru_data {address:#x} {device} {size} data {data}")
            commands.append(f"mc_enable {address:#x}")
        records = self.records
        while records:
            size = records[4] + 5
            commands.append("main_sdr_add 0x20 " + " ".join(f"{byte:#04x}" for byte in records[:size]))
            records = records[size:]
        for number, scanning, states in self.sensors:
            commands.append(f"sensor_add 0x20 0 {number} 8 0x6f")
            commands.append(f"sensor_set_event_support 0x20 0 {number} enable {scanning} none" + 4 * (" " + 15 * "0"))
            commands += [f"sensor_set_bit 0x20 0 {number} {state} 1 0" for state in states]
        (self.folder / "board.emu").write_text("\n".join(commands) + "\n")
        self.server = subprocess.Popen(["ipmi_sim", "-c", self.folder / "lan.conf", "-f", self.folder / "board.emu",
                                        "-s", self.folder / "state", "-n"],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for _ in range(50):
            if subprocess.run(self._ipmitool("mc", "info"), capture_output=True).returncode == 0:
                break
            time.sleep(0.2)
        return self

    def _ipmitool(self, *arguments: str) -> list[str]:
        return ["ipmitool", "-I", "lan", "-H", "127.0.0.1", "-p", str(self.lan_port), "-U", "test", "-P", "test",
                *arguments]

    def ipmitool(self, *arguments: str) -> str:
        return subprocess.run(self._ipmitool(*arguments), check=True, capture_output=True, text=True).stdout

    def __exit__(self, *_):
        self.server.kill()
        self.server.wait()


def temporary_folder() -> tempfile.TemporaryDirectory:
    """In memory where there is room: while a disk is slow to flush an image, a machine takes the answer for lost."""
    memory = Path("/dev/shm")
    has_room = memory.is_dir() and shutil.disk_usage(memory).free > 1 << 30
    return tempfile.TemporaryDirectory(prefix="varnok-qemu-", dir=memory if has_room else None)
