"""The program against QEMU's own BMC: help, command line, displays, trace log, redirection, a missing driver."""

import unittest

from machine import BUILD, Board, own_bmc
from program import (BANNER, COMMAND_LINE_ERROR, NO_INTERFACE, NO_PROTOCOL, PROBED_SMBIOS, SUCCESS, ProgramTest, lines_of,
                     probe_script, without_record_ids)

SMBIOS = ["-machine", "smbios-entry-point-type=64", "-smbios", "type=1,manufacturer=Varnok Works,product=Hearth S2,version=R3,serial=SY0001",
          "-smbios", "type=3,manufacturer=Chassis Maker,version=R5,serial=CH0003,asset=AS0004", *PROBED_SMBIOS]
SHOWN = [(" Manufacturer      = ", "Varnok Works"), (" Product Name      = ", "Hearth S2"),
         (" Version           = ", "R3"), (" Serial Number     = ", "SY0001"),
         (" Manufacturer      = ", "Board Maker"), (" Product           = ", "Hearth board"),
         (" Version           = ", "R4"), (" Serial Number     = ", "MB0002"),
         (" Manufacturer      = ", "Chassis Maker"), (" Version           = ", "R5"),
         (" Serial Number     = ", "CH0003"), (" Asset Tag Number  = ", "AS0004")]

OTHER_INTERFACE = "ipmi.efi: the BMC of this board is behind SSIF (SMBIOS type 38); this driver reaches KCS alone.\n"

SENSOR = 0x10  # QEMU's BMC has room for the numbers below 14h
QUESTIONS = {"FRUFIELD PN hearth": "yes", "FRUFIELD PN board": "no", f"DISCRETE_SENSOR {SENSOR:02X} FF FF 00 00": "yes",
             f"DISCRETE_SENSOR {SENSOR:02X} 01 00 01 00": "no"}


class OwnBmc(ProgramTest):
    @classmethod
    def setUpClass(cls):
        cls.make_stick()
        cls.stick.make_folder("empty")
        cls.stick.put(BUILD / "PROBE.EFI")
        cls.stick.write("PROBES.CFG", probe_script(0, QUESTIONS))
        cls.board = Board.default(cls.folder)
        image = cls.board.folder / "board.bin"
        cls.fit_compact_sensor(cls.board.folder / "sdr.bin")
        # Not the usual place, but the one that SMBIOS names.
        cls.run_machine(own_bmc(0xDA2, frudatafile=image, sdrfile=cls.board.folder / "sdr.bin") + SMBIOS, {
            "no driver": "cd empty\r\n\\VARNOK /?",
            "help": "cd \\\r\nVARNOK /? > help.txt",
            "help by letter": "VARNOK -H > letter.txt",
            "nothing": "VARNOK",
            "unknown option": "VARNOK /x",
            "left over": "VARNOK /? /h",
            "half": "VARNOK /d",
            "fru": "VARNOK /d fru",
            "fru to file": "VARNOK /d FRU > fru.txt",
            "fru that is none": "VARNOK /d fru IMBDEVICE 05",
            "sdr": "VARNOK /d sdr",
            "smbios": "VARNOK /d smb",
            "probes": "VARNOK /cfg PROBES",
            "missing file": "VARNOK /fru none",
            "missing sdr file": "VARNOK /sdr none.sdr",
            "trace": "VARNOK /? -debug3",
            "newer table alone": "PROBE forget",
            "newer smbios": "VARNOK /d smb",
            "newer probes": "VARNOK /cfg PROBES",
        })

    @staticmethod
    def fit_compact_sensor(repository):
        """QEMU's BMC makes sensors of compact records that ask for it in bit 7 of their initialisation byte."""
        records = bytearray(repository.read_bytes())
        start = 0
        while records[start + 3] != 2:
            start += records[start + 4] + 5
        records[start + 7] = SENSOR
        records[start + 10] |= 0x80
        repository.write_bytes(records)

    def host(self, *arguments: str):
        return self.board.run_host(list(arguments), self.folder)

    def test_help_is_the_hosts(self):
        for name, file in {"help": "help.txt", "help by letter": "letter.txt"}.items():
            self.assert_ends(name, SUCCESS)
            self.assert_file_shows(file, self.host("/?").text)

    def test_command_line(self):
        for name, arguments in {"nothing": [], "unknown option": ["/x"], "left over": ["/?", "/h"], "half": ["/d"]}.items():
            self.assert_ends(name, COMMAND_LINE_ERROR)
            self.assert_shows(name, self.host(*arguments).text)

    def test_displays_a_real_dump(self):
        expected = self.host("/d", "fru")
        self.assertEqual(expected.status, SUCCESS)
        for name in ("fru", "fru to file"):
            self.assert_ends(name, SUCCESS)
        self.assert_shows("fru", expected.text)
        self.assert_file_shows("fru.txt", expected.text)
        self.assertIn(" Product Name     (ASCII)       = Hearth S2 Server Board", lines_of(self.result("fru").text))

    def test_displays_records(self):
        self.assert_ends("sdr", SUCCESS)
        self.assertEqual(without_record_ids(self.result("sdr").text), without_record_ids(self.host("/d", "sdr").text))

    def test_failures_are_the_hosts(self):
        for name, arguments in {"missing file": ["/fru", "none"], "missing sdr file": ["/sdr", "none.sdr"],
                                "fru that is none": ["/d", "fru", "IMBDEVICE", "05"]}.items():
            expected = self.host(*arguments)
            self.assertNotEqual(expected.status, SUCCESS)
            self.assert_ends(name, expected.status)
            self.assert_shows(name, expected.text)

    def test_displays_smbios(self):
        self.assert_ends("smbios", SUCCESS)
        lines = lines_of(self.result("smbios").text)
        position = 0
        for label, value in SHOWN:
            self.assertIn(label + value, lines[position:])
            position = lines.index(label + value, position) + 1

    def test_probes_ask_the_machine(self):
        self.assert_probes_answer(QUESTIONS)

    def test_newer_smbios_table_alone_says_the_same(self):
        self.assertEqual(self.lines("newer table alone"), ["forget: status 0"])
        for name in ("smbios", "probes"):
            self.assert_ends("newer " + name, SUCCESS)
            self.assert_shows("newer " + name, self.result(name).text)

    def test_trace_log(self):
        self.assert_ends("trace", COMMAND_LINE_ERROR)
        log = self.stick.read("DBGLOG.txt")
        lines = log.decode("utf-16-le").split("\r\n")
        self.assertEqual(lines[:3], ["VARNOK Main:: Got Debug Level 3", "CVarnok::Initialize [ENTRY]",
                                     "CVarnok::SetCtrl_C_Enable [ENTRY]"])
        self.assertEqual(lines[-2:], ["Dornquist::main [EXIT]", ""])
        self.host("/?", "-debug3")
        self.assertEqual(log, (self.folder / "DBGLOG.txt").read_bytes())

    def test_missing_driver(self):
        self.assert_ends("no driver", NO_INTERFACE)
        self.assert_shows("no driver", NO_PROTOCOL)


class NoBmc(ProgramTest):
    def test_no_bmc_behind_kcs(self):
        self.make_stick()
        record = self.folder / "ipmi.bin"  # an IPMI device record: SSIF
        record.write_bytes(bytes([38, 18, 0, 38, 4, 0x20, 0x20, 0xFF, 0x20] + [0] * 9 + [0, 0]))
        self.run_machine(["-smbios", f"file={record}"], {"help": "VARNOK /?", "fru": "VARNOK /d fru", "none": "VARNOK"})
        for name in ("help", "fru", "none"):
            self.assert_ends(name, NO_INTERFACE)
            self.assert_shows(name, BANNER + OTHER_INTERFACE + NO_PROTOCOL.removeprefix(BANNER))


if __name__ == "__main__":
    unittest.main(verbosity=2)
