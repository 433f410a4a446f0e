"""What firmware asks of the shipped images: inspect_images.py OBJDUMP FOLDER."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
OBJDUMP, FOLDER = sys.argv[1], Path(sys.argv[2])


class Images(unittest.TestCase):
    def inspect(self, name: str, subsystem: str, limit: int):
        image = FOLDER / name
        dump = subprocess.run([OBJDUMP, "-p", str(image)], check=True, capture_output=True, text=True).stdout
        self.assertRegex(dump, r"file format pei-x86-64")
        self.assertRegex(dump, r"Magic\s+020b\s+\(PE32\+\)")
        self.assertRegex(dump, rf"Subsystem\s+{subsystem}\s")
        self.assertNotIn("DLL Name", dump)
        imports = re.search(r"^Entry 1 (\w+) (\w+) Import Directory", dump, re.MULTILINE)
        self.assertEqual((int(imports[1], 16), int(imports[2], 16)), (0, 0), "the image has an import table")
        relocations = re.search(r"^Entry 5 (\w+) (\w+) Base Relocation", dump, re.MULTILINE)
        self.assertNotEqual(int(relocations[2], 16), 0, "the image has no relocations")
        self.assertNotRegex(dump, r"relocations stripped")
        self.assertLessEqual(image.stat().st_size, limit * 1024)
        # What differs from build to build: its time, and the place of the tree.
        content = image.read_bytes()
        header = int.from_bytes(content[0x3C:0x40], "little")
        self.assertEqual(content[header + 8:header + 12], bytes(4), "the time of the build")
        self.assertNotIn(bytes(ROOT), content)

    def test_program(self):
        self.inspect("VARNOK.EFI", "0000000a", 240)

    def test_snapshot(self):
        self.inspect("SNAPSHOT.EFI", "0000000a", 96)

    def test_start(self):
        self.inspect("START.EFI", "0000000a", 48)

    def test_driver(self):
        self.inspect("ipmi.efi", "0000000b", 8)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
