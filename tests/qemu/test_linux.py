"""The Linux program over /dev/ipmi0: a kernel in the virtual machine, our board server behind the KCS interface that it
drives. The same text and the same images as on the host over the simulated board."""

import shutil
import unittest

from machine import Board, Command, LinuxMachine, Path, outside_bmc, temporary_folder
from program import (BOARD_JOBS, ENVIRONMENT, PROBED_SMBIOS, PROBES_FOUND, SAMPLES, SCRIPTS, SUCCESS, board_files,
                     lines_of, probe_script)

SENSOR = 0x62  # of the default board


class Linux(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = temporary_folder()
        cls.addClassCleanup(temporary.cleanup)
        folder = Path(temporary.name)
        content = folder / "content"
        shutil.copytree(SAMPLES, content)
        for name, data in {**board_files(), "PROBES.CFG": probe_script(SENSOR)}.items():
            (content / name).write_bytes(data)

        jobs = {name: (["/cfg", name], keys) for name, keys in SCRIPTS.items()}
        jobs |= {name: (arguments, []) for name, arguments in BOARD_JOBS.items()}
        cls.untouched = Board.default(folder)
        cls.host_board = cls.untouched.copy(folder / "host board")
        cls.expected = {name: cls.host_board.run_host(arguments, content, "".join(typed for _, typed in keys), ENVIRONMENT)
                        for name, (arguments, keys) in jobs.items()}
        commands = {name: Command("varnok " + " ".join(arguments), keys) for name, (arguments, keys) in jobs.items()}
        commands |= {"smbios": Command("varnok /d smb"), "probes": Command("varnok /cfg PROBES")}
        cls.served_board = cls.untouched.copy(folder / "served board")
        with cls.served_board as board:
            machine = LinuxMachine(folder, content, outside_bmc(board.port) + PROBED_SMBIOS)
            cls.results = machine.run(commands, [f"export {name}={value}" for name, value in ENVIRONMENT.items()]).results

    def test_text_and_status_are_those_of_the_simulated_board(self):
        for name, expected in self.expected.items():
            with self.subTest(name):
                self.assertEqual((expected.status, self.results[name].status), (SUCCESS, SUCCESS), self.results[name].text)
                self.assertEqual(lines_of(self.results[name].text), lines_of(expected.text))

    def test_images_are_those_of_the_simulated_board(self):
        self.assertEqual(self.served_board.images(), self.host_board.images())
        self.assertNotEqual(self.served_board.images(), self.untouched.images())

    def test_tables_are_the_kernels(self):
        self.assertIn(" Product           = Hearth board\n", self.results["smbios"].text)
        self.assertEqual(self.results["probes"].status, SUCCESS, self.results["probes"].text)
        # The EEPROM that the script wants to miss is on this board.
        self.assertEqual(lines_of(self.results["probes"].text)[3:-1], [line for line in PROBES_FOUND if line != "FRU"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
