"""Runs what the pages show: every command line and every complete example, in the order of the page.

A page needs no marks for this. Each page has a folder of its own with the samples, a home without a board,
and one simulated board for all that it shows.

`$ COMMAND` in a fenced block
    is run; what follows, up to the next one, is all that it may show. A line that is only an ellipsis stands
    for any lines, the home folder is written /home/you.
a fenced block of kind sh
    is run as a whole and must end with 0.
an indented command line
    is run and must end with 0; what stands behind two blanks explains it. An ellipsis, or one of the words
    FILE, FOLDER, PORT and ADDRESS, makes it a form, which nobody can run.
a block behind a line that ends in `NAME`:
    is that file.
a block that holds _FRU ( or _SDR (
    is programmed; JSON becomes a board.json that must open; script commands are run, unless words in small
    letters make them a form.

A command that waits for keys gets those that a line `printf 'KEYS' | COMMAND` of the same page pipes into it.
"""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = os.environ["VARNOK_PROGRAM"]
BOARD_PROGRAM = os.environ["VARNOK_BOARD_PROGRAM"]
PAGES = ["README.md", *sorted(f"docs/{page.name}" for page in (ROOT / "docs").glob("*.md"))]

KEYWORDS = re.compile(
    r"(SET|CLEAR|IFSET|CONFIGURATION|DISPLAY|PROMPT|MENUTITLE|PROBE|FRUNAME|FRUAREA|FRUFIELD|SDRNAME|CLEARSDR"
    r"|BMC_REFRESH|ERRORLEVEL|BOOT)\b")
# Keys that answer every question in the end: a menu's first item, values, each with a yes.
ANY_KEYS = "1\ny" * 40
# What a page tells people to type where this test cannot: the one that does, and what it types there.
ELSEWHERE = {
    "./test": ("test", "ctest --preset"),
    "modprobe": ("tests/qemu/machine.py", "ipmi_devintf"),
    "/dev/ipmi0": ("tests/qemu/machine.py", "/dev/ipmi0"),
    "-chardev": ("varnok-qemu", "-chardev"),
    "-device": ("varnok-qemu", "-device"),
    "fs0:": ("tests/qemu/machine.py", "fs0:"),
}


# What reads a real board's content, with that of the simulated one.
READER = """#!/bin/sh
board=$HOME/.local/state/varnok/board
case "$1 $2" in
  "fru read") cp "$board/board.bin" "$4" ;;
  "sdr dump") cp "$board/sdr.bin" "$3" ;;
  --dump-bin*) cp "$board/smbios.bin" "$2" ;;
  "mc info")
    printf '%-26s: %s\\n' "Device ID" 32 "Device Revision" 1 "Firmware Revision" 2.61 "IPMI Version" 2.0 \\
      "Manufacturer ID" 123456 "Product ID" "17170 (0x4312)" ;;
esac
"""


class Block:
    """A fenced or an indented block of a page, and the file that it is, if the line in front names one."""

    def __init__(self, line, name, is_fenced=False, kind=""):
        self.line, self.name, self.is_fenced, self.kind, self.lines = line, name, is_fenced, kind, []

    @property
    def text(self):
        return "\n".join(self.lines) + "\n"


def blocks_of(text):
    blocks, block, fence, before = [], None, False, ""
    indent = "    "
    for number, line in enumerate(text.splitlines(), 1):
        named = re.search(r"`([\w./-]+\.\w+)`:$", before)
        if line.startswith("```"):
            fence = not fence
            if fence:
                block = Block(number, named and named[1], True, line[3:])
                blocks.append(block)
            else:
                block = None
        elif fence:
            block.lines.append(line)
        elif line.startswith(indent):
            if block is None:
                block = Block(number, named and named[1])
                blocks.append(block)
            block.lines.append(line[len(indent):])
        elif line:
            block = None
        elif block is not None:
            block.lines.append("")
        if line:
            before = line
    for block in blocks:
        while not block.is_fenced and not block.lines[-1]:
            block.lines.pop()
    return blocks


def matches(shown, wanted):
    """Whether the lines are those wanted, where an ellipsis stands for any number of lines."""
    pattern = "".join(r"(?:.*\n)*?" if line == "…" else re.escape(line) + r"\n" for line in wanted)
    return re.fullmatch(pattern, "".join(line + "\n" for line in shown)) is not None


class PageTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.images = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        subprocess.run([PROGRAM, "/?"], env={"HOME": str(cls.images)}, capture_output=True, check=True)

    def setUp(self):
        self.home = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.work = self.home / "varnok"
        shutil.copytree(ROOT / "samples", self.work / "samples")
        for file in (*(ROOT / "samples").iterdir(), *self.images.glob(".local/state/varnok/board/*.bin")):
            shutil.copy(file, self.work)
        for name, target in [("varnok", PROGRAM), ("varnok-board", BOARD_PROGRAM),
                             ("build/host/varnok-board", BOARD_PROGRAM),
                             ("varnok-qemu", ROOT / "varnok-qemu")]:
            (self.work / name).parent.mkdir(parents=True, exist_ok=True)
            (self.work / name).symlink_to(target)
        (self.work / "build/uefi").mkdir()
        (self.work / "build/uefi/varnok.img").write_bytes(b"stick")
        tools = self.home / "tools"
        tools.mkdir()
        for name in ("ipmitool", "dmidecode"):
            (tools / name).write_text(READER)
            (tools / name).chmod(0o755)
        self.environment = {"HOME": str(self.home), "PATH": f"{tools}:{os.environ['PATH']}",
                            "BOARD_SERIAL": "VWSB26010001", "CHASSIS_SERIAL": "VWCH26010001"}
        self.keys = {}

    def run_shell(self, command, keys=None):
        """Status and lines of a command: of a line that was overwritten what stands there in the end."""
        done = subprocess.run(["bash", "-c", command], cwd=self.work, env=self.environment, timeout=60,
                              input=(keys if keys is not None else self.keys.get(command, "")).encode(),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        shown = done.stdout.decode("utf-8", "replace").replace(str(self.home), "/home/you").removesuffix("\n")
        return done.returncode, [line.rstrip().rpartition("\r")[2] for line in shown.split("\n")]

    # --- what a block can be ---

    def transcript(self, block):
        command, wanted, steps = None, [], []
        for line in block.lines + ["$ "]:
            if line.startswith("$ "):
                if command:
                    steps.append((command, wanted))
                command, wanted = line[2:], []
            else:
                wanted.append(line.rstrip())
        for command, wanted in steps:
            _, shown = self.run_shell(command)
            if not matches(shown, wanted):
                self.assertEqual(wanted, shown, command)

    def command(self, line):
        """A line of an indented block, if it is a command line."""
        command = re.split(r"\s{2,}", line, maxsplit=1)[0]
        if "./varnok-board" in command:  # the simulated board is its machine
            self.run_shell("./varnok '/?'")
            command = command.replace("/dev/ipmi0", "~/.local/state/varnok/board")
        elsewhere = [row for part, row in ELSEWHERE.items() if part in command]
        for where, what in elsewhere:
            self.assertIn(what, (ROOT / where).read_text(), f"{command}: is said to be run by {where}")
        if elsewhere or "…" in command or re.search(r"\b(FILE|FOLDER|PORT|ADDRESS)\b", command):
            return
        if command.startswith("cmake "):
            presets = (ROOT / "CMakePresets.json").read_text()
            for preset in re.findall(r"--preset (\w+)", command):
                self.assertIn(f'"name": "{preset}"', presets, command)
        elif command.startswith("./varnok-qemu"):
            self.succeeds("bash -n ./varnok-qemu")
        elif re.match(r"(\w+=\S* )*\./varnok|(printf|rm|dd|sudo dd|VARNOK|ipmitool|dmidecode) ", command):
            command = command.replace("sudo ", "").replace("/dev/sdX", "stick.img")
            command = command.replace("myboard.cfg", "MASTER.CFG")
            if " serve " in command:  # for ever, so for a second; on a port that is free
                command = "timeout --preserve-status 1 " + re.sub(r":\d+$", ":0", command)
            self.succeeds(re.sub(r"^VARNOK ", "./varnok ", command).replace(" /?", " '/?'"))

    def succeeds(self, command):
        status, shown = self.run_shell(command, self.keys.get(command, ANY_KEYS))
        # The companion tells differences and findings by a 1.
        self.assertIn(status, [0, 1] if "./varnok-board" in command else [0], "\n".join([command, *shown]))

    def script(self, lines):
        """A script that the page shows; one that begins inside a FRU gets that FRU in front."""
        text = "\n".join(lines) + "\n"
        if lines[0].startswith("FRUAREA"):
            text = "FRUNAME SYSTEM\n" + text
        if "PROBE FRUFIELD" in text:
            text = "FRUNAME SYSTEM\nFRUAREA Product\n" + text
        (self.work / "SHOWN.CFG").write_text(text)
        status, shown = self.run_shell("./varnok /cfg SHOWN.CFG", ANY_KEYS)
        levels = {int(level or "0", 16) for level in re.findall(r"^\s*ERRORLEVEL *(\w*)", text, re.M)}
        self.assertIn(status, {0, *levels}, "\n".join([text, *shown]))

    def board(self, json):
        if not json.startswith("{"):
            json = '{"bmc": {"frus": [{"id": 0, "file": "board.bin"}]}, ' + json + "}"
        self.run_shell("./varnok '/?'")
        folder = self.home / "shown"
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(self.home / ".local/state/varnok/board", folder)
        (folder / "board.json").write_text(json)
        status, shown = self.run_shell(f"VARNOK_BOARD={folder} ./varnok '/?'")
        self.assertEqual(status, 0, "\n".join(shown))

    def file(self, mode, text):
        (self.work / "SHOWN.TXT").write_text(text)
        status, shown = self.run_shell(f"./varnok {mode} SHOWN.TXT")
        self.assertEqual(status, 0, "\n".join(shown))
        if mode == "/sdr":
            records = self.home / ".local/state/varnok/board/sdr.bin"
            self.assertGreater(records.stat().st_size, 0, "programs no record")

    def run_block(self, block):
        code = [re.sub(r'"[^"]*"|//.*', "", line) for line in block.lines]
        is_form = any(re.search(r"(^|\s)[a-z]{2,}(\s|$)|\[|\.\.\.", line) for line in code)
        if block.name:
            (self.work / block.name).parent.mkdir(parents=True, exist_ok=True)
            (self.work / block.name).write_text(block.text)
        if any(line.startswith("$ ") for line in block.lines):
            self.transcript(block)
        elif block.kind == "sh":
            self.succeeds("set -e\n" + block.text)
        elif block.kind == "json" and not block.name:
            self.board(block.text)
        elif "_FRU (" in block.text:
            self.file("/fru", block.text)
        elif "_SDR (" in block.text:
            self.file("/sdr", block.text)
        elif KEYWORDS.match(block.lines[0]) and not is_form:
            self.script([part for line in block.lines for part in re.split(r"\s{4,}(?=PROBE)", line)])
        else:
            for line in block.text.replace("\\\n", " ").splitlines():
                self.command(line.strip())

    def check(self, page):
        text = (ROOT / page).read_text()
        for keys, command in re.findall(r"printf '([^']*)' \| (.*)", text):
            self.keys[command.strip()] = keys.replace("\\n", "\n")
        blocks = blocks_of(text)
        for block in blocks:
            with self.subTest(place=f"{page}:{block.line}"):
                self.run_block(block)
        inline = re.findall(r"`((?:VARNOK_\w+=\S+ )?\./varnok [^`\n]*)`", text)
        for command in inline:
            with self.subTest(place=page, command=command):
                self.command(command)


class ScriptTest(unittest.TestCase):
    def test_varnok_runs_through_a_symbolic_link_and_leaves_the_build_folder_as_it_is(self):
        with tempfile.TemporaryDirectory() as folder:
            link = pathlib.Path(folder, "varnok")
            link.symlink_to(ROOT / "varnok")
            cache = ROOT / "build/host/CMakeCache.txt"
            before = cache.read_text()
            environment = os.environ | {"XDG_STATE_HOME": f"{folder}/state"}
            done = subprocess.run([link, "/?"], cwd=folder, env=environment, text=True, capture_output=True,
                                  check=False)
            self.assertEqual((done.returncode, cache.read_text()), (0, before), done.stderr)
            self.assertIn("Usage:", done.stdout)


for each in PAGES:
    setattr(PageTest, "test_" + re.sub(r"\W", "_", each), lambda self, page=each: self.check(page))

if __name__ == "__main__":
    unittest.main()
