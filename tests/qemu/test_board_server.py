"""The program in the virtual machine and on the host over copies of one simulated board: the same text, the same
images."""

import shutil
import sys
import unittest

from machine import BUILD, ROOT, Board, Command, outside_bmc
from program import (BOARD_JOBS, ENVIRONMENT, NO_BMC_TRAFFIC, PROBED_SMBIOS, SAMPLES, SCRIPT_JOBS, SCRIPTS, SUCCESS,
                     ProgramTest, board_files, fru_file)

sys.path.append(str(ROOT / "benchmarks"))
import jobs  # noqa: E402
import uefi  # noqa: E402

RECORDS = [jobs.sensor_record(number) for number in range(32)]


class BoardServer(ProgramTest):
    @classmethod
    def setUpClass(cls):
        cls.make_stick()
        for image in uefi.IMAGES:
            cls.stick.put(BUILD / image)
        for name, content in {**board_files(), "metered.sdr": jobs.sdr_file(RECORDS).encode()}.items():
            cls.stick.write(name, content)
            (cls.folder / name).write_bytes(content)
        cls.make_boards(BOARD_JOBS | {"records": ["/sdr", "metered.sdr"]}, cls.folder)
        commands = {name: "VARNOK " + " ".join(arguments) + f" > {number}.txt"
                    for number, (name, arguments) in enumerate(BOARD_JOBS.items())}
        commands["on the console"] = "VARNOK /fru board.fru"
        commands["starts"] = uefi.START_LINES
        commands["records"] = "METERED /sdr metered.sdr"
        with cls.served_board as board:
            cls.run_machine(outside_bmc(board.port), commands)

    def test_text_and_status_are_the_hosts(self):
        for number, name in enumerate(BOARD_JOBS):
            with self.subTest(name):
                self.assert_ends(name, self.expected[name].status)
                self.assert_file_shows(f"{number}.txt", self.expected[name].text)
        for name in ("program", "program behind a controller", "program sdr"):
            self.assertEqual(self.expected[name].status, SUCCESS, name)

    def test_console_shows_the_hosts_lines(self):
        self.assert_ends("on the console", SUCCESS)
        self.assert_shows("on the console", self.expected["program"].text)

    def test_images_are_the_hosts(self):
        before, host, served = (board.images() for board in (self.untouched, self.host_board, self.served_board))
        self.assertEqual(host, served)
        changed = {name for name in before if before[name] != served[name]}
        self.assertEqual(changed, {"board.bin", "backplane.bin", "sdr.bin"})

    def test_start_costs_little_more_than_an_empty_applications(self):
        start, empty = uefi.starts(self.result("starts").text)
        self.assertLessEqual(start, 1.5 * empty)

    def test_memory_is_sixteen_times_the_repositorys_at_most(self):
        self.assert_ends("records", SUCCESS)
        pool, = uefi.metered(self.result("records").text, "pool")
        self.assertLessEqual(pool, 16 * len(b"".join(RECORDS)))

    def test_server_ends_cleanly(self):
        self.assertEqual(self.served_board.end_status, 0)


class Scripts(ProgramTest):
    """Scripts in a folder of their own, started from elsewhere, with keys typed at their questions."""

    @classmethod
    def setUpClass(cls):
        cls.make_stick()
        cls.stick.make_folder("board files")
        (cls.folder / "board files").mkdir()
        for file in SAMPLES.iterdir():
            cls.stick.put(file, f"board files/{file.name}")
            shutil.copy(file, cls.folder / "board files")
        cls.make_boards(SCRIPT_JOBS, cls.folder / "board files")
        setup = [f"set {name} {value}" for name, value in ENVIRONMENT.items()] + ["cp VARNOK.EFI \"board files\"",
                 "cp ipmi.efi \"board files\"", "cd \"board files\""]
        with cls.served_board as board:
            cls.run_machine(outside_bmc(board.port) + PROBED_SMBIOS,
                            {name: Command(f"VARNOK /cfg {name}", keys) for name, keys in SCRIPTS.items()}, setup)

    def test_transcripts_are_the_hosts(self):
        self.assert_succeeds_as_the_host()

    def test_images_are_the_hosts(self):
        served = self.served_board.images()
        self.assertEqual(self.host_board.images(), served)
        for image, text in {"board.bin": b"SER-4712", "sdr.bin": b"", "supply.bin": b"PSU-01"}.items():
            self.assertNotEqual(self.untouched.images()[image], served[image], image)
            self.assertIn(text, served[image])
        self.assertIn(b"ENV-0815", served["board.bin"])


class TransferMode(ProgramTest):
    MODES = {"help": ["/?"], "nothing": [], "fru": ["/d", "fru"], "sdr": ["/d", "sdr"], "smbios": ["/d", "smb"],
             "program": ["/fru", "board.fru"], "program sdr": ["/sdr", "x"], "script": ["/cfg"]}

    def test_every_mode_ends_at_a_bmc_in_firmware_transfer_mode(self):
        self.make_stick()
        (self.folder / "board.fru").write_bytes(fru_file("board.fru"))
        self.stick.write("board.fru", fru_file("board.fru"))
        board = Board.default(self.folder)
        board.change(lambda content: content["bmc"].update(transferMode={"active": True, "stuck": True}))
        before = board.images()
        with board:
            self.run_machine(outside_bmc(board.port),
                             {name: " ".join(["VARNOK"] + arguments) for name, arguments in self.MODES.items()})
        self.assertEqual(board.images(), before)
        for name, arguments in self.MODES.items():
            with self.subTest(name):
                expected = board.run_host(arguments, self.folder)
                self.assertEqual(expected.status, NO_BMC_TRAFFIC)
                self.assert_ends(name, NO_BMC_TRAFFIC)
                self.assert_shows(name, expected.text)


if __name__ == "__main__":
    unittest.main(verbosity=2)
