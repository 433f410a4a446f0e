"""The program against OpenIPMI's BMC simulator, with ipmitool as the second pair of eyes."""

import re
import unittest

from machine import Board, IpmiSim, outside_bmc
from program import (PROBED_SMBIOS, SUCCESS, ProgramTest, fru_file, lines_of, probe_script, without_record_ids)

SATELLITE = 0xB0

SENSORS = [(0x10, "scanning", [1, 10]), (0x11, "no-scanning", [])]
QUESTIONS = {
    "IMBDEVICE 01": "yes",  # as ipmitool wrote it
    "IMBDEVICE 06": "no",   # it is there, but its header's checksum does not hold
    "FRUFIELD PN oth": "yes", "FRUFIELD PN Others": "no",
    "FRUFIELD P# P-18": "yes", "FRUFIELD P# S-17": "no",
    "DISCRETE_SENSOR 10 FF FF 02 04": "yes", "DISCRETE_SENSOR 10 06 04 02 04": "yes",
    "DISCRETE_SENSOR 10 06 04 06 04": "no", "DISCRETE_SENSOR 10 02 0C 02 08": "no",
    "DISCRETE_SENSOR 11 FF FF 00 00": "no",  # it is not scanned
}


def fields(text: str) -> dict[str, str]:
    """What `ipmitool fru print` shows."""
    return {key.strip(): value.strip() for key, value in re.findall(r"^ ([^:]+):(.*)$", text, re.MULTILINE)}


class Simulator(ProgramTest):
    @classmethod
    def setUpClass(cls):
        cls.make_stick()
        cls.stick.write("board.fru", fru_file("board.fru"))
        cls.stick.write("back.fru", fru_file("backplane.fru", SATELLITE))
        cls.stick.write("PROBES.CFG", probe_script(1, QUESTIONS))
        (cls.folder / "other.bin").write_bytes(cls.board_only_image())
        devices = [(0x20, 0, 512, bytes(8)), (0x20, 1, 256, bytes(8)),
                   (0x20, 6, 64, b"\1\0\0\1\0\0\0\xFF"), (SATELLITE, 0, 256, bytes(8))]
        cls.board_of_records = Board.default(cls.folder)
        records = (cls.board_of_records.folder / "sdr.bin").read_bytes()
        with IpmiSim(cls.folder, devices, records, SENSORS) as simulator:
            simulator.ipmitool("fru", "write", "1", str(cls.folder / "other.bin"))
            cls.run_machine(outside_bmc(simulator.port) + PROBED_SMBIOS, {
                "program": "VARNOK /fru board.fru",
                "program behind a controller": "VARNOK /fru back.fru",
                "show": "VARNOK /d fru",
                "show what another wrote": "VARNOK /d fru IMBDEVICE 01",
                "sdr": "VARNOK /d sdr",
                "probes": "VARNOK /cfg PROBES",
            })
            cls.board = fields(simulator.ipmitool("fru", "print", "0"))
            cls.satellite = fields(simulator.ipmitool("-t", f"{SATELLITE:#x}", "fru", "print", "0"))

    @staticmethod
    def board_only_image() -> bytes:
        area = bytearray(b"\x01\x05\x00\x00\x00\x00\xc8Somebody\xc5Other\xc4S-17\xc4P-18\xc0\xc1")
        area += bytes(39 - len(area))
        area.append(-sum(area) & 0xFF)
        return bytes([1, 0, 0, 1, 0, 0, 0, 0xFE]) + bytes(area)

    def test_ipmitool_reads_what_was_programmed(self):
        self.assert_ends("program", SUCCESS)
        self.assertEqual(self.board, self.board | {
            "Chassis Type": "Rack Mount Chassis", "Chassis Part Number": "VW-CH-E2", "Chassis Serial": "CH00000001",
            "Board Mfg": "Varnok Works", "Board Product": "E2E board", "Board Serial": "MB00000001",
            "Board Part Number": "VW-E2E-1", "Product Manufacturer": "Varnok Works", "Product Name": "E2E unit",
            "Product Part Number": "VW-E2E", "Product Version": "R1", "Product Serial": "PR00000001"})

    def test_ipmitool_reads_what_was_programmed_behind_a_controller(self):
        self.assert_ends("program behind a controller", SUCCESS)
        self.assertEqual(self.satellite, self.satellite | {
            "Board Mfg": "Varnok Works", "Board Product": "Backplane", "Board Serial": "BP00000001",
            "Board Part Number": "VW-E2E-2"})

    def test_shows_what_ipmitool_wrote(self):
        self.assert_ends("show what another wrote", SUCCESS)
        shown = lines_of(self.result("show what another wrote").text)
        for line in (" Manufacturer Name(ASCII)       = Somebody", " Product Name     (ASCII)       = Other",
                     " Serial Number    (ASCII)       = S-17", " Part Number      (ASCII)       = P-18"):
            self.assertIn(line, shown)

    def test_displays_records(self):
        self.assert_ends("sdr", SUCCESS)
        expected = self.board_of_records.run_host(["/d", "sdr"], self.folder).text
        self.assertEqual(without_record_ids(self.result("sdr").text), without_record_ids(expected))

    def test_probes_ask_the_machine(self):
        self.assert_probes_answer(QUESTIONS)


if __name__ == "__main__":
    unittest.main(verbosity=2)
