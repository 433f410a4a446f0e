"""The stick image and the archive that go to the board."""

import shutil
import unittest
import zipfile

from machine import BUILD, Machine, Path, Stick, own_bmc, temporary_folder


class StickImage(unittest.TestCase):
    def test_firmware_boots_it_and_the_archive_holds_the_same(self):
        with temporary_folder() as name:
            folder = Path(name)
            shutil.copyfile(BUILD / "varnok.img", folder / "stick.img")
            stick = Stick.of_partition(folder / "stick.img", "1M")
            # Without a package the menu is the usual one.
            shown = Machine(folder, stick, own_bmc())._drive([("your choice: ", "2"), ("for the menu.", " "), ("your choice: ", "8")])
            self.assertIn("VARNOK: done.", shown)
            with zipfile.ZipFile(BUILD / "varnok.zip") as archive:
                files = {entry.filename: archive.read(entry) for entry in archive.infolist() if not entry.is_dir()}
            self.assertLessEqual({"VARNOK.EFI", "START.EFI", "EFI/BOOT/BOOTX64.EFI", "ipmi.efi", "README.TXT"}, set(files))
            for file, content in files.items():
                self.assertEqual(stick.read(file), content, file)
            lines = files["README.TXT"].split(b"\r\n")
            self.assertGreater(len(lines), 10)
            self.assertFalse(any(b"\n" in line or b"\r" in line for line in lines))
            self.assertEqual(files["VARNOK.EFI"], (BUILD / "VARNOK.EFI").read_bytes())


if __name__ == "__main__":
    unittest.main(verbosity=2)
