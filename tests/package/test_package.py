"""The Debian package: put into a root that holds nothing but the C and C++ libraries, used there, and taken away."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

BUILD = pathlib.Path(os.environ["VARNOK_BUILD"])
AS_ROOT = [] if os.getuid() == 0 else ["unshare", "--map-root-user"]
os.environ["PATH"] = "/usr/sbin:/usr/bin:/sbin:/bin"
HOME = {"HOME": "/root", "PATH": os.environ["PATH"]}
KEYS = "1\nyyVWS226110042\nyASSET-2042\ny"


def run(*command, status=0, **options):
    done = subprocess.run(command, capture_output=True, text=True, check=False, **options)
    if done.returncode != status:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def files_of(root):
    return {str(path.relative_to(root)) for path in root.rglob("*")}


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        run("cpack", "-G", "DEB", "-B", cls.folder, cwd=BUILD)
        cls.package, = cls.folder.glob("*.deb")

    def make_root(self):
        root = self.folder / "root"
        for name in ("info", "updates", "triggers"):
            (root / "var/lib/dpkg" / name).mkdir(parents=True)
        (root / "var/lib/dpkg/status").touch()
        (root / "root").mkdir()
        for library in set(re.findall(r"(/\S+) \(0x", run("ldd", BUILD / "varnok", BUILD / "varnok-board"))):
            (root / library[1:]).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(library, root / library[1:])
        return root

    def test_is_put_in_works_and_leaves_nothing(self):
        root = self.make_root()
        before = files_of(root)
        dpkg = [*AS_ROOT, "dpkg", f"--root={root}", f"--log={self.folder}/log", "--force-depends"]
        run(*dpkg, "-i", self.package)
        inside = [*AS_ROOT, "chroot", root]
        shown = run(*inside, "/usr/bin/varnok", "/cfg", "usr/share/doc/varnok/examples/MASTER.CFG", input=KEYS,
                    env=HOME)
        self.assertIn("The system has been updated successfully.", shown)
        shown = run(*inside, "/usr/bin/varnok-board", "show", "/root/.local/state/varnok/board", env=HOME)
        self.assertIn("VWS226110042", shown)

        for manual in ("man1/varnok.1", "man1/varnok-board.1", "man5/varnok-scripts.5", "man5/varnok-fru.5",
                       "man5/varnok-sdr.5", "man5/varnok-board.json.5"):
            name = manual[5:-2]
            page = run("man", "-l", root / f"usr/share/man/{manual}.gz", env=os.environ | {"MANWIDTH": "80"})
            self.assertRegex(page, rf"NAME\n +{name} - \w+")
        for words, offered in [("varnok-board sh", "show"), ("varnok-board check --st", "--strict"),
                               ("varnok /d s", "sdr smb"), ("varnok-board show bo", "")]:
            program = words.split()[0]
            place = root / "usr/share/bash-completion/completions" / program
            script = f"source {place}; COMP_WORDS=({words}); COMP_CWORD={words.count(' ')}; " \
                f"_{program.replace('-', '_')}; echo ${{COMPREPLY[@]}}"
            self.assertEqual(run("bash", "-c", script), offered + "\n", words)

        run(*dpkg, "-P", "varnok")
        kept = {name for name in files_of(root) - before if not name.startswith(("var/lib/dpkg/", "root/.local"))}
        self.assertEqual(kept, set())

    def test_is_as_the_distribution_wants_it(self):
        run("lintian", "--allow-root", "--fail-on", "error,warning", self.package)

    def test_goes_below_any_prefix(self):
        run("cmake", "--install", BUILD, "--prefix", "/opt/tools", env=os.environ | {"DESTDIR": str(self.folder / "to")})
        self.assertEqual({"bin", "lib", "share"}, {path.name for path in (self.folder / "to/opt/tools").iterdir()})


if __name__ == "__main__":
    unittest.main()
