"""Secure Boot: signed images run, unsigned and changed ones are refused, the driver that VARNOK.EFI loads too."""

import re
import shutil
import subprocess
import unittest

from machine import BUILD, ROOT, Machine, Path, Stick, own_bmc, plain
from program import ProgramTest

FIRMWARE, VARIABLES = (f"/usr/share/OVMF/OVMF_{name}.fd" for name in ("CODE_4M.secboot", "VARS_4M.snakeoil"))
KEY, PASSWORD = "/usr/share/ovmf/PkKek-1-snakeoil.key", "snakeoil"  # the package's own, for tests
CERTIFICATE = "/usr/share/ovmf/PkKek-1-snakeoil.pem"
IMAGES = ["VARNOK.EFI", "SNAPSHOT.EFI", "START.EFI", "ipmi.efi"]
BOOT_FILE = "EFI/BOOT/BOOTX64.EFI"
REFUSED = "was not started: the firmware refuses it: Secure Boot is on"
CHOICE, GO_ON = "key of your choice: ", "Press a key for the menu."


class SecureMachine(Machine):
    """Firmware that knows the snake-oil certificate alone, and sticks that it tries one after the other."""

    LIMIT = 480

    def __init__(self, folder: Path, sticks: list[Stick], devices: list[str]):
        super().__init__(folder, sticks[0], devices)
        self.sticks = sticks

    def command_line(self) -> list[str]:
        variables = self.folder / "variables.fd"
        shutil.copyfile(VARIABLES, variables)
        drives = []
        for number, stick in enumerate(self.sticks):
            drives += ["-drive", f"if=none,id=d{number},format=raw,file={stick.image}",
                       "-device", f"virtio-blk-pci,drive=d{number},bootindex={number}"]
        return ["qemu-system-x86_64", "-machine", "q35,smm=on,accel=tcg", "-nodefaults", "-display", "none", "-net", "none",
                "-serial", "stdio", "-no-reboot", "-m", "256", "-global", "driver=cfi.pflash01,property=secure,value=on",
                "-drive", f"if=pflash,format=raw,unit=0,readonly=on,file={FIRMWARE}",
                "-drive", f"if=pflash,format=raw,unit=1,file={variables}"] + drives + self.devices


class SecureBoot(ProgramTest):
    def put(self, stick_files: dict[str, bytes]) -> Stick:
        stick = Stick(self.folder / f"stick{len(self.sticks)}.img")
        for folder in ("EFI", "EFI/BOOT"):
            stick.make_folder(folder)
        for name, content in stick_files.items():
            stick.write(name, content)
        self.sticks.append(stick)
        return stick

    def test_signed_images_run_and_others_do_not(self):
        self.make_folder()
        self.sticks = []
        key = self.folder / "plain.key"
        subprocess.run(["openssl", "rsa", "-in", KEY, "-passin", f"pass:{PASSWORD}", "-out", key], check=True,
                       capture_output=True)
        for name in IMAGES:
            shutil.copy(BUILD / name, self.folder)
        subprocess.run([ROOT / "tools/sign-stick", key, CERTIFICATE, self.folder], check=True, capture_output=True)
        unsigned = {name: (self.folder / name).read_bytes() for name in IMAGES}
        signed = {name: (self.folder / "signed" / name).read_bytes() for name in IMAGES}
        # One byte of the code.
        changed = {name: content[:0x500] + bytes([content[0x500] ^ 1]) + content[0x501:] for name, content in signed.items()}

        # Firmware goes on to the next stick when one is refused, or VARNOK ends with a status.
        self.put({BOOT_FILE: unsigned["START.EFI"]})
        self.put({BOOT_FILE: changed["START.EFI"]})
        self.put({BOOT_FILE: signed["VARNOK.EFI"], "ipmi.efi": unsigned["ipmi.efi"]})
        self.put({BOOT_FILE: signed["VARNOK.EFI"], "ipmi.efi": changed["ipmi.efi"]})
        entries, files = [], {BOOT_FILE: signed["START.EFI"], **signed}
        for kind, images in {"U": unsigned, "C": changed}.items():
            for name, content in images.items():
                files[kind + name[:4] + ".EFI"] = content
                entries.append(f'ENTRY "{kind}" {kind}{name[:4]}\n')
        entries += ['ENTRY "run" VARNOK /d sdr\n', 'ENTRY "run" SNAPSHOT /?\n', 'ENTRY "shell" SHELL\n',
                    'ENTRY "off" RESTART\n']
        files["START.CFG"] = "".join(entries).encode()
        self.put(files)
        keys = [pair for key in "123456789AB" for pair in ((CHOICE, key), (GO_ON, " "))] + [(CHOICE, "C")]
        shown = re.sub(r"\r+\n?", "\n", plain(SecureMachine(self.folder, self.sticks, own_bmc())._drive(keys)))

        self.assertEqual(len(re.findall(r"failed to load Boot\w+ .*: Access Denied", shown)), 2, shown)
        self.assertEqual(shown.count("ERROR:Failed to load IPMI protocol."), 2, shown)
        self.assertEqual(re.findall(rf"\n(\S+) {REFUSED}", shown), [kind + name[:4] for kind in "UC" for name in IMAGES])
        self.assertIn("Displaying SDR", shown)
        self.assertIn("The shell ended with 800000000000001A: the firmware does not allow it", shown)
        for program in ("VARNOK", "SNAPSHOT"):
            self.assertIn(f"{program}: done.", shown)


if __name__ == "__main__":
    unittest.main(verbosity=2)
