"""The facade under OVMF: arguments, console, files, environment, memory."""

import unittest

from machine import BUILD, Command, Stick
from program import ProgramTest

NOT_FOUND = "status 800000000000000E"
ACCESS_DENIED = "status 800000000000000F"
WRITE_PROTECTED = "status 8000000000000008"
VOLUME_FULL = "status 800000000000000B"
# As the shell's %lasterror% shows them, without the error bit.
OUT_OF_RESOURCES = 9
INPUT_ENDED = 2


class Facade(ProgramTest):
    HALTS = False

    @classmethod
    def setUpClass(cls):
        cls.make_stick(None, "PROBE.EFI")
        cls.stick.put(BUILD / "OLDSHELL.EFI")
        cls.stick.write("keys.txt", b"\xff\xfe" + "ab".encode("utf-16-le"))
        cls.stick.make_folder("Long named folder")
        small = Stick(cls.folder / "small.img", small=True)
        small.write("on fs1.txt", b"second volume")
        locked = Stick(cls.folder / "locked.img", small=True)
        locked.write("locked.txt", b"read only")
        devices = [
            "-drive", f"if=none,id=small,format=raw,file={small.image}", "-device", "virtio-blk-pci,drive=small",
            "-drive", f"if=none,id=locked,format=raw,readonly=on,file={locked.image}",
            "-device", "virtio-blk-pci,drive=locked"]
        # Three times what `leak` takes is more than there is.
        cls.run_machine(devices + ["-m", "128"], {
            "arguments": 'PROBE args /d fru "two words" -x "" a/b\\c',
            "no arguments": "PROBE args",
            "console": "PROBE text",
            "to file": "PROBE text > text.txt",
            "more to file": "PROBE args more >> text.txt",
            "to 8-bit file": "PROBE args >a text8.txt",
            "keys": Command("PROBE keys 3", [("keys?", "xY\x1b[A")]),
            "prompt": Command("PROBE prompt", [("[M]ore", "qm"), ("[M]ore", "S"), ("[M]ore", "x\x1b[An")]),
            "keys from file": "PROBE keys 3 < keys.txt",
            "keys from nowhere": "PROBE keys 1 < NUL",
            "variable": "PROBE variable board",
            "no variable": "PROBE variable nothing",
            "clock": "PROBE clock",
            "tables": "PROBE tables",
            "write": "PROBE files write new.txt first append new.txt -second read new.txt",
            "rewrite": "PROBE files write new.txt xy read new.txt append appended.txt z read appended.txt",
            "missing": "PROBE files read none.txt read no\\none.txt write no\\none.txt x",
            "folder": 'PROBE files read "Long named folder" write "Long named folder" x',
            "long name": 'PROBE files write "Long named folder/A name of many words.text" deep '
                         'read ".\\long NAMED folder\\..\\Long named folder\\A name of many words.text"',
            "from root": 'PROBE files read "\\Long named folder\\A name of many words.text"',
            "other volume": 'PROBE files read "fs1:\\on fs1.txt" read "fs1:/on fs1.txt" read fs9:\\x',
            "in folder": "cd \"Long named folder\"\r\n\\PROBE files write here.txt h read here.txt read ..\\new.txt\r\ncd \\",
            "read-only": "PROBE files read fs2:\\locked.txt write fs2:\\locked.txt x append fs2:\\locked.txt x "
                         "write fs2:\\new.txt x read fs2:\\locked.txt",
            "full": 'PROBE files fill fs1:\\fill.bin write fs1:\\no-room.txt x read "fs1:\\on fs1.txt"',
            "old shell": 'OLDSHELL \\ \\PROBE.EFI args "two words" x',
            "old shell, variable": "OLDSHELL \\ PROBE.EFI variable board",
            "old shell, files": "OLDSHELL \\ PROBE.EFI files write old.txt o append old.txt p read old.txt read none.txt",
            "old shell, folder": 'OLDSHELL "\\Long named folder" \\PROBE.EFI files write local.txt q read \\old.txt '
                                 'read fs0:/old.txt read fs7:\\old.txt',
            "after old shell": "PROBE variable board",
            "alignment": "PROBE alignment",
            "exhaustion": "PROBE exhaustion",
            "after exhaustion": "PROBE leak",
            "again": "PROBE leak", "and once more": "PROBE leak",
        }, setup=["set board VARNOK-1"])

    def test_arguments_arrive_narrowed_and_ended(self):
        self.assertEqual(self.lines("arguments"), ["count: 6", "</d>", "<fru>", "<two words>", "<-x>", "<>",
                                                   "<a/b\\c>", "end: null"])
        self.assertEqual(self.lines("no arguments"), ["count: 0", "end: null"])

    def test_line_ends_are_shown_as_cr_lf(self):
        self.assertTrue(self.boot.results["console"].text.startswith("one\r\ntwo\r\nthree\r\nfour\r\n\r\nfive"))

    def test_redirected_output_is_readable(self):
        text = self.stick.read_text("text.txt")
        self.assertTrue(self.stick.read("text.txt").startswith(b"\xff\xfe"))
        self.assertTrue(text.startswith("one\r\ntwo\r\nthree\r\nfour\r\n\r\nfive\tsix\r\n\u00e9\r\n"), repr(text[:60]))
        self.assertTrue(text.endswith("count: 1\r\n<more>\r\nend: null\r\n"), repr(text[-60:]))
        self.assertEqual(self.stick.read("text8.txt"), b"count: 0\r\nend: null\r\n")
        self.assertEqual(self.lines("to file"), [])

    def test_keys(self):
        self.assertEqual(self.lines("keys"), ["keys?", "key: 120", "key: 89", "key: 0"])

    def test_paging_prompt(self):
        prompt = ["", "[S]top, [N]on-stop, or [M]ore"]
        self.assertEqual(self.lines("prompt"), prompt + ["", "go on: 1"] + prompt[:1] + [prompt[1] + "go on: 0"]
                         + prompt + ["", "go on: 1", "paging: 0"])

    def test_input_from_a_file_ends_the_program_at_its_end(self):
        self.assertEqual(self.lines("keys from file")[:3], ["keys?", "key: 97", "key: 98"])
        for name in ("keys from file", "keys from nowhere"):
            self.assertIn("The input has ended.", self.lines(name))
            self.assertEqual(self.boot.results[name].status, INPUT_ENDED)

    def test_environment(self):
        self.assertEqual(self.lines("variable"), ["value: VARNOK-1"])
        self.assertEqual(self.lines("no variable"), ["no variable"])

    def test_clock_and_stall(self):
        year, seconds, without_clock = self.lines("clock")
        self.assertGreaterEqual(int(year.split()[1]), 2024)
        self.assertIn(int(seconds.split()[1]), (2, 3))
        self.assertEqual(without_clock, "seconds without a clock: 2")

    def test_tables_and_physical_memory(self):
        self.assertEqual(self.lines("tables"), ["SMBIOS: found", "unknown: missing", "readable: 31",
                                                "past the top: 0", "image handle: 1"])

    def test_files(self):
        self.assertEqual(self.lines("write"), ["write: status 0", "append: status 0", "read: first-second"])
        self.assertEqual(self.lines("rewrite"), ["write: status 0", "read: xy", "append: status 0", "read: z"])
        self.assertEqual(self.lines("missing"), [f"read: {NOT_FOUND}"] * 2 + [f"write: {NOT_FOUND}"])
        self.assertEqual(self.lines("folder"), [f"read: {ACCESS_DENIED}", f"write: {ACCESS_DENIED}"])
        self.assertEqual(self.stick.read("new.txt"), b"xy")

    def test_paths(self):
        self.assertEqual(self.lines("long name"), ["write: status 0", "read: deep"])
        self.assertEqual(self.lines("from root"), ["read: deep"])
        self.assertEqual(self.lines("other volume"), ["read: second volume"] * 2 + [f"read: {NOT_FOUND}"])
        self.assertEqual(self.lines("in folder"), ["write: status 0", "read: h", "read: xy"])
        self.assertEqual(self.stick.read("Long named folder/here.txt"), b"h")

    def test_volume_that_takes_nothing(self):
        self.assertEqual(self.lines("read-only"),
                         ["read: read only"] + [f"{action}: {WRITE_PROTECTED}" for action in ("write", "append", "write")]
                         + ["read: read only"])
        self.assertEqual(self.lines("full"), [f"fill: {VOLUME_FULL}", f"write: {VOLUME_FULL}", "read: second volume"])

    def test_older_shell(self):
        self.assertEqual(self.lines("old shell"), ["count: 2", "<two words>", "<x>", "end: null"])
        self.assertEqual(self.lines("old shell, variable"), ["value: OLD-1"])
        self.assertEqual(self.lines("old shell, files"),
                         ["write: status 0", "append: status 0", "read: op", f"read: {NOT_FOUND}"])
        self.assertEqual(self.lines("old shell, folder"),
                         ["write: status 0", "read: op", "read: op", f"read: {NOT_FOUND}"])
        self.assertEqual(self.stick.read("Long named folder/local.txt"), b"q")
        self.assertEqual(self.lines("after old shell"), ["value: VARNOK-1"])

    def test_memory_is_aligned_and_returned(self):
        self.assertEqual(self.lines("alignment"), ["odd bits: 0", "too much: refused"])
        self.assertIn("Out of memory.", self.lines("exhaustion"))
        self.assertEqual(self.boot.results["exhaustion"].status, OUT_OF_RESOURCES)
        for name in ("after exhaustion", "again", "and once more"):
            self.assertEqual(self.lines(name), ["memory: given", "open: status 0", "write: status 0"], name)
        self.assertEqual(self.stick.read("leak.txt"), b"LLL")
        self.assertEqual(self.stick.read("exhausted.txt"), b"E")


if __name__ == "__main__":
    unittest.main(verbosity=2)
