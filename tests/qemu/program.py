"""What the tests of the whole program share."""

import re
import unittest

from machine import BUILD, FIXTURES, ROOT, Board, Boot, Command, Machine, Path, Result, Stick, temporary_folder

BANNER = "\nVARNOK Load Utility Version 2.0.1 Build 18 \n\n"
NO_PROTOCOL = BANNER + "\nERROR:Failed to load IPMI protocol.\n\n"
SUCCESS, COMMAND_LINE_ERROR, NO_BMC_TRAFFIC, LOAD_ERROR, NO_INTERFACE = 0, 1, 3, 5, 9


def lines_of(text: str) -> list[str]:
    """The lines as any console shows them: CR LF and LF end one, a CR alone begins it again."""
    return text.replace("\r\n", "\n").split("\n")


def without_record_ids(text: str) -> list[str]:
    """The lines of an SDR display; a BMC numbers its records as it likes."""
    return [re.sub(r"#\d+$|^ [0-9A-F]{2} 00( 51.{39} *).", r"\1", line) for line in lines_of(text)]


def keys_of(job: str) -> list[tuple[str, str]]:
    return SCRIPTS.get(job, [])


HOT_SWAP = 0xC0

# Jobs over the default board, in their order.
BOARD_JOBS = {
    "before": ["/d", "fru"],
    "program": ["/fru", "board.fru"],
    "program behind a controller": ["/fru", "back"],
    "show": ["/d", "fru"],
    "show by number": ["/d", "fru", "IMBDEVICE", "00"],
    "show behind a controller": ["/d", "fru", "IMBDEVICE", "C%02X" % HOT_SWAP, "L00", "FF", "20"],
    "sdr": ["/d", "sdr"],
    "program sdr": ["/sdr", "HEARTHS2.SDR"],
    "show sdr": ["/d", "sdr"],
}
SAMPLES = ROOT / "samples"
# Scripts with their keys: the text that each key waits for, and what is typed then.
SCRIPTS = {
    "MASTER.CFG": [("None of these: leave without any change", "1\r"),
                   ("fan fitted? Press Y or N, no Enter:", "y"), ("tag now? Press Y or N, no Enter:", "Y"),
                   ("Product Serial Number  :", "SER-4711\r"), ("correct: 'SER-4711'?", "n"),
                   ("Product Serial Number  :", "SER-4712\r"), ("correct: 'SER-4712'?", "Y"),
                   ("Product Asset Tag  :", "ASSET 9\r"), ("correct: 'ASSET 9'?", "Y")],
    "BRANCH.CFG": [("rack system? Press Y or N, no Enter:", "Y"), ("supplies fitted? Press Y or N, no Enter:", "N")],
    "MENU.CFG": [("Leave it as it is", "7\r2\r")],
    "FIELDS.CFG": [],
    "SUPPLY.CFG": [],
}
SCRIPT_JOBS = {name: ["/cfg", name] for name in SCRIPTS}
ENVIRONMENT = {"BOARD_SERIAL": "ENV-0815"}

# What PROBES.CFG asks of OVMF's tables: a board and a BIOS version of ours, one processor socket named CPU1.
PROBED_SMBIOS = ["-smbios", "type=0,vendor=Varnok Works,version=A.B.C.D.E.0045.1",
                 "-smbios", "type=2,manufacturer=Board Maker,product=Hearth board,version=R4,serial=MB0002",
                 "-smbios", "type=4,sock_pfx=CPU1"]
PROBES_FOUND = ["board", "BIOS", "memory", "processor", "FRU", "BMC"]


def probe_script(device: int, questions: dict[str, str]) -> bytes:
    """PROBES.CFG, then the questions that only this BMC answers so; fields are those of FRU device `device`'s board."""
    script = (FIXTURES / "PROBES.CFG").read_text()
    script += f"\nFRUNAME SYSTEM\n  FRUADDRESS {device:02X}\n  FRUAREA Board\n"
    for number, question in enumerate(questions):
        script += f"""PROBE {question}
FOUND YES{number} NO{number}
IFSET YES{number}
  DISPLAY "{question}: yes"
ENDIF
IFSET NO{number}
  DISPLAY "{question}: no"
ENDIF
"""
    return script.encode("latin-1")


def fru_file(name: str, controller: int = 0x20) -> bytes:
    text = (FIXTURES / name).read_text()
    return text.replace("CONTROLLER\n", f"{controller:02X}\n").encode("latin-1")


def board_files() -> dict[str, bytes]:
    """The files that BOARD_JOBS program."""
    return {"board.fru": fru_file("board.fru"), "back.FRU": fru_file("backplane.fru", HOT_SWAP),
            "HEARTHS2.SDR": (SAMPLES / "HEARTHS2.SDR").read_bytes()}


class ProgramTest(unittest.TestCase):
    """A folder; in it a stick with an image of ours, that `run_machine` boots, or simulated boards."""

    HALTS = True  # not where the firmware's own services are what is tested

    @classmethod
    def make_folder(cls):
        temporary = temporary_folder()
        cls.addClassCleanup(temporary.cleanup)
        cls.folder = Path(temporary.name)

    @classmethod
    def make_stick(cls, driver: str | None = "ipmi.efi", image: str = "VARNOK.EFI"):
        cls.make_folder()
        cls.stick = Stick(cls.folder / "stick.img")
        cls.stick.put(BUILD / image)
        if driver is not None:
            cls.stick.put(BUILD / driver, "ipmi.efi")

    @classmethod
    def run_machine(cls, devices: list[str], commands: dict[str, Command | str], setup: list[str] | None = None):
        cls.boot: Boot = Machine(cls.folder, cls.stick, devices, cls.HALTS).run(commands, setup)

    @classmethod
    def make_boards(cls, jobs: dict[str, list[str]], folder: Path):
        """The default board thrice: untouched, changed by the host program's jobs in the folder, and to be served."""
        cls.untouched = Board.default(cls.folder)
        cls.host_board = cls.untouched.copy(cls.folder / "host board")
        cls.served_board = cls.untouched.copy(cls.folder / "served board")
        cls.expected = {name: cls.host_board.run_host(arguments, folder, "".join(typed for _, typed in keys_of(name)),
                                                      ENVIRONMENT)
                        for name, arguments in jobs.items()}

    def result(self, name: str) -> Result:
        return self.boot.results[name]

    def lines(self, name: str) -> list[str]:
        return self.result(name).text.replace("\r", "").split("\n")[:-1]

    def assert_ends(self, name: str, status: int):
        self.assertEqual(self.result(name).status, status, f"{name}:\n{self.result(name).text}")

    def assert_probes_answer(self, questions: dict[str, str], found: list[str] = PROBES_FOUND):
        self.assert_ends("probes", SUCCESS)
        self.assertEqual(lines_of(self.result("probes").text)[3:-1],
                         found + [f"{question}: {answer}" for question, answer in questions.items()])

    def assert_shows(self, name: str, text: str):
        self.assertEqual(lines_of(self.result(name).text), lines_of(text), name)

    def assert_succeeds_as_the_host(self):
        for name, expected in self.expected.items():
            with self.subTest(name):
                self.assertEqual(expected.status, SUCCESS, expected.text)
                self.assert_ends(name, SUCCESS)
                self.assert_shows(name, expected.text)

    def assert_file_shows(self, file: str, text: str):
        """Output that the shell wrote to a 16-bit file."""
        content = self.stick.read_text(file)
        self.assertIsNotNone(content, f"{file} is missing")
        self.assertEqual(lines_of(content), lines_of(text), file)
