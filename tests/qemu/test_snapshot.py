"""A board taken home and put back: SNAPSHOT.EFI under OVMF and varnok-board over /dev/ipmi0 against the same board, as
varnok-board on the desk sees it."""

import hashlib
import subprocess
import unittest

from machine import BUILD, HOST_BUILD, Board, Command, LinuxMachine, Machine, Path, outside_bmc
from program import SAMPLES, SUCCESS, ProgramTest, fru_file

FOUND, FAILED = 1, 3
ASKED = "to the board? [Y/N]"


def files_of(folder: Path) -> dict[str, bytes]:
    """All but the SMBIOS tables, which are the machine's and not the board's."""
    return {file.name: file.read_bytes() for file in folder.iterdir() if file.name != "smbios.bin"}


class Snapshot(ProgramTest):
    """Each class boots one machine over a board of its own: snapshot, program wrongly, look, restore, look again."""

    @classmethod
    def make_board(cls):
        cls.make_stick()
        cls.untouched = Board.default(cls.folder)
        cls.served = cls.untouched.copy(cls.folder / "served")
        cls.wrong = {"board.fru": fru_file("board.fru"), "wrong.sdr": (SAMPLES / "minimal.sdr").read_bytes()}
        desk = cls.folder / "desk"
        done = subprocess.run([HOST_BUILD / "varnok-board", "snapshot", desk, "--from", cls.untouched.folder],
                              capture_output=True, text=True)
        cls.desk_lines = [line for line in done.stdout.splitlines() if not line.startswith(("SMBIOS", "The board is in"))]
        cls.desk, cls.desk_status = files_of(desk), done.returncode

    def assert_round_trip(self):
        for name, status in {"snapshot": SUCCESS, "program": SUCCESS, "program sdr": SUCCESS, "look": FOUND,
                             "restore": SUCCESS, "look again": SUCCESS}.items():
            self.assert_ends(name, status)
        self.assertIn("bytes differ, from offset", self.result("look").text)
        self.assertIn("its 1 record is erased, 60 are written", self.result("look").text)
        self.assertIn("SDR repository: restored", self.result("restore").text)
        self.assertNotIn("differ", self.result("look again").text)
        images = self.untouched.images()
        self.assertEqual({name: content for name, content in self.served.images().items() if content != images[name]}, {})

    def assert_says_what_the_desk_says(self):
        self.assertEqual(self.desk_status, SUCCESS)
        # On a terminal the progress stands in front of the first line.
        shown = tuple(self.result("snapshot").text.replace("\r", "").split("\n"))
        self.assertEqual([line for line in self.desk_lines if not any(other.endswith(line) for other in shown)], [])


class UnderUefi(Snapshot):
    @classmethod
    def setUpClass(cls):
        cls.make_board()
        cls.stick.put(BUILD / "SNAPSHOT.EFI")
        for name, content in cls.wrong.items():
            cls.stick.write(name, content)
        with cls.served as board:
            machine = Machine(cls.folder, cls.stick, outside_bmc(board.port))
            cls.boot = machine.run({
                "help": "SNAPSHOT /?",
                "snapshot": "SNAPSHOT",
                "taken": "SNAPSHOT BOARD001",
                "program": "VARNOK /fru board.fru",
                "program sdr": "VARNOK /sdr wrong.sdr",
                "look": Command("SNAPSHOT /restore BOARD001 0 sdr", [(ASKED, "n")]),
                "restore": Command("SNAPSHOT /restore BOARD001 0 SDR", [(ASKED, "xy")]),
                "look again": "SNAPSHOT -restore board001",
                "nowhere": "SNAPSHOT /restore NOWHERE",
            })

    def test_round_trip(self):
        self.assert_round_trip()

    def test_folder_is_the_desks(self):
        self.assert_says_what_the_desk_says()
        self.assertEqual({name: self.stick.read(f"BOARD001/{name}") for name in self.desk}, self.desk)
        self.assertEqual(self.stick.read("BOARD001/smbios.bin")[:4], b"_SM_")

    def test_what_cannot_be_done_is_said(self):
        self.assert_ends("help", SUCCESS)
        for name in ("taken", "nowhere"):
            self.assert_ends(name, FAILED)
        self.assertIn("BOARD001: is there already", self.result("taken").text)
        self.assertIn("NOWHERE: not found", self.result("nowhere").text)


class UnderLinux(Snapshot):
    @classmethod
    def setUpClass(cls):
        cls.make_board()
        content = cls.folder / "content"
        content.mkdir()
        for name, data in cls.wrong.items():
            (content / name).write_bytes(data)
        with cls.served as board:
            machine = LinuxMachine(cls.folder, content, outside_bmc(board.port))
            machine.PROGRAMS = ["varnok", "varnok-board"]
            cls.boot = machine.run({
                "snapshot": "varnok-board snapshot before",
                "sums": "md5sum before/*",
                "program": "varnok /fru board.fru",
                "program sdr": "varnok /sdr wrong.sdr",
                "look": "echo n | varnok-board restore before",
                "restore": "varnok-board restore before --to /dev/ipmi0 --yes",
                "look again": "varnok-board restore before --yes",
            })

    def test_round_trip(self):
        self.assert_round_trip()

    def test_folder_is_the_desks(self):
        self.assert_says_what_the_desk_says()
        shown = {line.split()[1].removeprefix("before/"): line.split()[0]
                 for line in self.result("sums").text.splitlines() if "before/" in line}
        self.assertIsNotNone(shown.pop("smbios.bin", None))
        self.assertEqual(shown, {name: hashlib.md5(content).hexdigest() for name, content in self.desk.items()})


if __name__ == "__main__":
    unittest.main(verbosity=2)
