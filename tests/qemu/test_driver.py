"""ipmi.efi against QEMU's own BMC: finding the interface, KCS traffic, starting and failing to start."""

import unittest

from machine import BUILD, Command, own_bmc
from program import NO_INTERFACE, NO_PROTOCOL, ProgramTest

DRIVER_NOT_STARTED = "load: -502"
NOT_READY = "receive: status 8000000000000006"


class Driver(ProgramTest):
    HALTS = False

    def run_probe(self, devices: list[str], commands: dict[str, Command | str]):
        self.make_stick(image="PROBE.EFI")
        for folder in ("empty", "other"):
            self.stick.make_folder(folder)
        for file, name in {"VARNOK.EFI": "VARNOK.EFI", "other.efi": "ipmi.efi"}.items():
            self.stick.put(BUILD / file, f"other/{name}")
        self.run_machine(devices, commands)

    def test_bmc_at_the_usual_place(self):
        self.run_probe(own_bmc(0xCA2), {
            "no driver here": "cd empty\r\n\\PROBE ipmi load\r\ncd \\",
            "load": "PROBE ipmi load",
            "load again": "PROBE ipmi load",
            "start again": "PROBE ipmi start ipmi.efi",
            "handles": "PROBE ipmi handles",
            "identity": "PROBE ipmi send 64 6 1",
            "unread": "PROBE ipmi send none 6 37\r\nPROBE ipmi send none a 10 0",
            "after unread": "PROBE ipmi send 64 6 1",
            "cut": "PROBE ipmi send 4 6 1",
            "no room": "PROBE ipmi send 0 6 1",
            "after cut": "PROBE ipmi send 64 6 1",
            "nothing sent": "PROBE ipmi receive",
            "refused": "PROBE ipmi send 64 6 f0",
            "unload": "PROBE ipmi unload",
            "unloaded": "PROBE ipmi handles",
            "load after unload": "PROBE ipmi load",
            "identity after unload": "PROBE ipmi send 64 6 1",
            "without a driver": "PROBE ipmi unload",
            "another revision": "cd other\r\n\\PROBE ipmi load",
            "program": "VARNOK /?",
            "program again": "VARNOK /?",
        })
        self.assertEqual(self.lines("no driver here"), [DRIVER_NOT_STARTED])
        self.assertEqual(self.lines("load"), ["load: 0"])
        self.assertEqual(self.lines("load again"), ["load: 0"])
        self.assertEqual(self.lines("start again"), ["start: status 8000000000000014"])
        self.assertEqual(self.lines("handles"), ["locate: status 8000000000000005", "handles: 1"])
        self.assertEqual(self.lines("unload"), ["unload: status 0"])
        self.assertEqual(self.lines("unloaded"), ["locate: status 800000000000000E"])
        self.assertEqual(self.lines("load after unload"), ["load: 0"])
        for name in ("identity", "after unread", "after cut", "identity after unload"):
            answer = self.lines(name)
            self.assertEqual(answer[0], "send: status 0", name)
            self.assertRegex(answer[1], r"^answer: 07/0 01 00: 20 .* 11 43( 00){0,4}$", name)
        whole = self.lines("identity")[1]
        self.assertEqual(self.lines("cut")[1], whole[: whole.index(":", 8) + 1 + 4 * 3])
        self.assertEqual(self.lines("no room")[1], "answer: 07/0 01 00:")
        self.assertEqual(self.lines("nothing sent"), [NOT_READY])
        self.assertRegex(self.lines("refused")[1], r"^answer: 07/0 F0 C1:")
        self.assertEqual(self.lines("without a driver"), ["unload: status 0"])
        self.assertEqual(self.lines("another revision"), ["load: -500"])
        for name in ("program", "program again"):
            self.assert_ends(name, NO_INTERFACE)
            self.assert_shows(name, NO_PROTOCOL)

    def test_no_bmc(self):
        self.run_probe([], {"load": "PROBE ipmi load", "start": "PROBE ipmi start ipmi.efi", "handles": "PROBE ipmi handles"})
        self.assertEqual(self.lines("load"), [DRIVER_NOT_STARTED])
        self.assertEqual(self.lines("start"), ["start: status 800000000000000E"])
        self.assertEqual(self.lines("handles"), ["locate: status 800000000000000E"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
