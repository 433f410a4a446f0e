"""The stick that starts by itself: firmware boots its menu, keys over the serial line program a board from there."""

import re
import subprocess
import unittest

from machine import HOST_BUILD, Board, Machine, Stick, outside_bmc, plain
from program import SAMPLES, SCRIPTS, ProgramTest, keys_of

PACKAGE = ["MASTER.CFG", "HEARTHS2.FRU", "HEARTHS2.SDR"]
MENU = """TITLE "Hearth S2, package 7"
ENTRY "Program the board" VARNOK /cfg MASTER.CFG
ENTRY "Put a snapshot back" RESTORE
ENTRY "A program that is none" BROKEN
ENTRI "A line that is none" VARNOK
ENTRY "A program that is not there" NOTHING.EFI /x
ENTRY "Shell" SHELL
ENTRY "Restart" RESTART
RUN 5 AFTER 9
"""
CHOICE, GO_ON, SHELL = "key of your choice: ", "Press a key for the menu.", "FS0:\\>"
KEYS = [
    ("any key stops this.", "x"),
    (CHOICE, "1"), *SCRIPTS["MASTER.CFG"], (GO_ON, " "),
    (CHOICE, "2"), ("Which one?", "1"), ("to the board? [Y/N]", "n"), (GO_ON, " "),
    (CHOICE, "3"), (GO_ON, " "),
    (CHOICE, "4"), (GO_ON, " "),
    # The menu once more, from the shell that it has started, and back.
    (CHOICE, "5"), ("Shell>", "fs0:\r"), (SHELL, "START\r"), ("any key stops this.", "x"),
    (CHOICE, "3"), (GO_ON, " "), (CHOICE, "5"), (SHELL, "exit\r"),
    (CHOICE, "6"),
]
SHOWN = [
    'START.CFG, line 5: "ENTRI" is none of the keywords TITLE, ENTRY and RUN',
    '"Shell" starts in 9 s',
    "Hearth S2, package 7\n\n  1  Program the board\n  2  Put a snapshot back\n",
    "The system has been updated successfully.", "VARNOK: done.",
    "  1  BOARD001\n  0  None, back to the menu\n", "bytes differ", "Nothing was written.",
    "SNAPSHOT ended with 1: something could not be read, or was not wanted.",
    "BROKEN was not started: it is no program for this firmware.",
    "NOTHING was not started: it is not on the stick.",
    "UEFI Interactive Shell",
    '"Shell" starts in 9 s', "BROKEN was not started", SHELL, "Hearth S2, package 7", "  6  Restart",
]


class Start(ProgramTest):
    def test_keys_program_a_board_and_come_back_to_the_menu(self):
        self.make_folder()
        package = self.folder / "package"
        package.mkdir()
        for name in PACKAGE:
            (package / name).write_bytes((SAMPLES / name).read_bytes())
        self.make_boards({"MASTER.CFG": ["/cfg", "MASTER.CFG"]}, package)
        # Without halts the clock is a few times ahead: the driver meets a BMC that erases, and one that is
        # silent.
        self.served_board.change(lambda content: Board.hasten(content, erase=100, restart=2400))
        subprocess.run([HOST_BUILD / "varnok-board", "snapshot", package / "BOARD001", "--from", self.untouched.folder],
                       check=True, stdout=subprocess.DEVNULL)
        for file in (package / "BOARD001").iterdir():
            if file.name not in ("board.json", "fru-0.bin"):
                file.unlink()
        (package / "BROKEN.EFI").write_bytes(b"MZ, and nothing behind it")
        image = self.folder / "stick.img"
        subprocess.run([HOST_BUILD / "varnok-board", "stick", image, "--package", package], check=True)
        stick = Stick.of_partition(image, "1M")
        stick.write("START.CFG", MENU.encode())
        with self.served_board as board:
            machine = Machine(self.folder, stick, outside_bmc(board.port) + board.smbios)
            shown = re.sub(r"\r+\n?", "\n", plain(machine._drive(list(KEYS))))
        place = 0
        for part in SHOWN:
            self.assertIn(part, shown[place:])
            place = shown.index(part, place) + len(part)
        self.assertEqual(self.served_board.images(), self.host_board.images())


if __name__ == "__main__":
    unittest.main(verbosity=2)
