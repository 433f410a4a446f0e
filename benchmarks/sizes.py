"""The images' sizes, and VARNOK.EFI's by folder: what the compiler's debug information says of each symbol."""

import collections
import os
import re
import shlex
import subprocess
from pathlib import Path

NM = "x86_64-w64-mingw32-nm"
SYMBOL = re.compile(r"[0-9a-f]+ ([0-9a-f]+) (\w) .*?(?:\t(.*):\d+)?$")


def link_with_symbols(root: Path, folder: Path) -> Path:
    """The image once more, by the build's own command line, but with symbols and their places."""
    script = folder / "with-symbols.ld"
    script.write_text((root / "cmake/uefi-image.ld").read_text().replace(" *(.debug*)", ""))
    commands = subprocess.run(["ninja", "-C", folder, "-t", "commands", "varnok_efi"], check=True, capture_output=True,
                              text=True).stdout.splitlines()
    words = [word for word in shlex.split(commands[-1]) if word not in (":", "&&", "-s")]
    image = folder / "with-symbols.efi"
    words[words.index("-o") + 1] = image.name
    words = [f"-Wl,-T,{script}" if word.startswith("-Wl,-T,") else word for word in words]
    done = subprocess.run([*words, "-g"], cwd=folder, capture_output=True, text=True)
    if done.returncode != 0:  # the linker warns of the sections for the debugger
        raise SystemExit(done.stderr)
    return image


def by_folder(root: Path, folder: Path) -> dict[str, int]:
    image = link_with_symbols(root, folder)
    listed = subprocess.run([NM, "-l", "-S", "--size-sort", image], check=True, capture_output=True, text=True).stdout
    sizes = collections.Counter()
    for line in listed.splitlines():
        symbol = SYMBOL.match(line)
        if not symbol or symbol[2] in "NbB":
            continue
        is_known = symbol[3] and not symbol[3].endswith("<artificial>")
        place = os.path.relpath(os.path.normpath(symbol[3]), root) if is_known else ""
        place = re.sub(r"^build/[^/]+/|(/CMakeFiles)?/[^/]*$|/CMakeFiles/.*$", "", place)
        name = "texts and tables of the compiler" if not place else "standard library" if place.startswith("..") else place
        sizes[name] += int(symbol[1], 16)
    return dict(sizes.most_common())
