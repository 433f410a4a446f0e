"""The images are the same bytes wherever the tree lies and whenever they are built."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["VARNOK_UEFI_BUILD"])
IMAGES = {"VARNOK.EFI": "varnok_efi", "SNAPSHOT.EFI": "snapshot_efi", "START.EFI": "start_efi", "ipmi.efi": "ipmi_efi"}


class SameBytes(unittest.TestCase):
    def test_a_tree_elsewhere_makes_the_same_images(self):
        tree = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()), "a tree", "elsewhere")
        listed = subprocess.run([ROOT / "tools/source-files", "*"], check=True, capture_output=True, text=True).stdout
        for name in listed.splitlines():
            (tree / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, tree / name)
        for command in (["cmake", "--preset", "uefi", "-DVARNOK_TESTS=OFF"],
                        ["cmake", "--build", "--preset", "uefi", "--target", *IMAGES.values()]):
            done = subprocess.run(command, cwd=tree, capture_output=True, text=True, check=False)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        for image in IMAGES:
            self.assertTrue((tree / "build/uefi" / image).read_bytes() == (BUILD / image).read_bytes(), image)


if __name__ == "__main__":
    unittest.main()
