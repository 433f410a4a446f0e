"""The Linux program over /dev/ipmi0: a kernel in the virtual machine, our board server behind the KCS interface that it
drives. The same text and the same images as on the host over the simulated board."""

import shutil
import unittest

from machine import Command, LinuxMachine, outside_bmc
from program import (BOARD_JOBS, ENVIRONMENT, PROBED_SMBIOS, PROBES_FOUND, SAMPLES, SCRIPT_JOBS, ProgramTest,
                     board_files, keys_of, probe_script)

# Of the default board.
QUESTIONS = {
    "DEVICE_ID C0 0 0C01": "yes", "DEVICE_ID C0 0 0C02": "no", "DEVICE_ID B4 0": "no",
    "PING 03 A0": "yes", "PING 03 A4": "no", "AT24C02 03 A0": "yes", "FRUFIELD PN hearth": "yes",
    "DISCRETE_SENSOR 62 01 00 01 00": "yes", "DISCRETE_SENSOR 62 01 00 00 00": "no",
    "BASEBOARD_PRODID 2E": "yes", "BMCCONFIG Region EU": "yes", "QRX_TYPE": "yes",
}


class Linux(ProgramTest):
    @classmethod
    def setUpClass(cls):
        cls.make_folder()
        content = cls.folder / "content"
        shutil.copytree(SAMPLES, content)
        for name, data in {**board_files(), "PROBES.CFG": probe_script(0, QUESTIONS)}.items():
            (content / name).write_bytes(data)

        jobs = SCRIPT_JOBS | BOARD_JOBS
        cls.make_boards(jobs, content)
        commands = {"smbios": Command("varnok /d smb"), "probes": Command("varnok /cfg PROBES")}
        commands |= {name: Command("varnok " + " ".join(arguments), keys_of(name)) for name, arguments in jobs.items()}
        with cls.served_board as board:
            machine = LinuxMachine(cls.folder, content, outside_bmc(board.port) + PROBED_SMBIOS)
            cls.boot = machine.run(commands, [f"export {name}={value}" for name, value in ENVIRONMENT.items()])

    def test_text_and_status_are_those_of_the_simulated_board(self):
        self.assert_succeeds_as_the_host()

    def test_images_are_those_of_the_simulated_board(self):
        self.assertEqual(self.served_board.images(), self.host_board.images())
        self.assertNotEqual(self.served_board.images(), self.untouched.images())

    def test_tables_are_the_kernels(self):
        self.assertIn(" Product           = Hearth board\n", self.result("smbios").text)

    def test_probes_ask_the_machine(self):
        # The EEPROM that the script wants to miss is on this board.
        self.assert_probes_answer(QUESTIONS, [line for line in PROBES_FOUND if line != "FRU"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
