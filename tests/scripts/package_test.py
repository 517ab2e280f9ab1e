#!/usr/bin/env python3
"""The Debian package, made as a user makes it (cpack) and taken apart:
what it holds, what it depends on, and that its programs run from the unpacked
tree alone: the version, the demo through the packaged stand-in model, the
manual page and the desktop entry.

  package_test.py --build BUILD --source CHECKOUT [--gui]
"""
import argparse
import gzip
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ARGS = None


def run(command, **kwargs):
    return subprocess.run(command, capture_output=True, text=True, **kwargs)


class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.tmp = Path(tempfile.mkdtemp(prefix="soilbench-package-"))
        made = run(["cpack", "-G", "DEB", "--config", str(ARGS.build / "CPackConfig.cmake"), "-B", str(cls.tmp)])
        if made.returncode != 0:
            raise AssertionError("cpack failed:\n" + made.stdout + made.stderr)
        debs = list(cls.tmp.glob("soilbench_*.deb"))
        if len(debs) != 1:
            raise AssertionError(f"expected one soilbench_*.deb in {cls.tmp}, found {debs}")
        cls.deb = debs[0]
        cls.root = cls.tmp / "root"
        subprocess.run(["dpkg-deb", "-x", str(cls.deb), str(cls.root)], check=True)
        listing = run(["dpkg-deb", "-c", str(cls.deb)]).stdout.splitlines()
        # "-rwxr-xr-x root/root 123 2024-01-01 00:00 ./usr/bin/soilbench" ("... -> target" for links)
        cls.entries = {}
        for line in listing:
            name = line.split(None, 5)[5]
            path, _, target = name.partition(" -> ")
            cls.entries[path.rstrip("/")] = (line[0], target)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.tmp, ignore_errors=True)

    def env(self):
        env = {k: v for k, v in os.environ.items() if not k.startswith("SOILBENCH_")}
        env.update(HOME=str(self.tmp / "home"), QT_QPA_PLATFORM="offscreen",
                   SOILBENCH_PROFILE=str(self.tmp / "profile.ini"))
        return env

    def test_holds_the_programs_data_and_desktop_files_under_usr(self):
        expected = {
            "./usr/bin/soilbench": ("-", ""),
            "./usr/libexec/soilbench/tellura-standin": ("-", ""),
            "./usr/libexec/soilbench/list100-standin": ("l", "tellura-standin"),
            "./usr/libexec/soilbench/README.md": ("-", ""),
            "./usr/share/man/man1/soilbench.1.gz": ("-", ""),
        }
        if ARGS.gui:
            expected.update({
                "./usr/bin/soilbench-gui": ("-", ""),
                "./usr/share/applications/soilbench.desktop": ("-", ""),
                "./usr/share/icons/hicolor/scalable/apps/soilbench.svg": ("-", ""),
            })
        # Every shipped data file (data/ of the checkout, less its own README).
        data = ARGS.source / "data"
        for file in data.rglob("*"):
            if file.is_file() and file != data / "README.md":
                expected["./usr/share/soilbench/" + file.relative_to(data).as_posix()] = ("-", "")
        for path, kind in expected.items():
            self.assertEqual(self.entries.get(path), kind, path)
        programs = [p for p in self.entries if p.startswith("./usr/bin/") and self.entries[p][0] != "d"]
        self.assertEqual(sorted(programs), sorted(p for p in expected if p.startswith("./usr/bin/")),
                         "nothing else on the command path (no tests, no stand-in)")
        outside = [p for p in self.entries if p not in (".", "./usr") and not p.startswith("./usr/")]
        self.assertEqual(outside, [])

    def test_depends_on_the_qt_runtime_and_no_development_package(self):
        depends = run(["dpkg-deb", "-f", str(self.deb), "Depends"]).stdout
        names = {re.split(r"[\s(]", d.strip())[0] for d in depends.split(",") if d.strip()}
        needed = {"libc6", "libstdc++6", "libqt6core6", "libqt6sql6", "libqt6sql6-sqlite"}
        if ARGS.gui:
            needed |= {"libqt6gui6", "libqt6widgets6", "libqt6charts6", "libqt6printsupport6"}
        self.assertLessEqual(needed, names, depends)
        self.assertEqual([n for n in names if n.endswith("-dev")], [], depends)
        info = run(["dpkg-deb", "-I", str(self.deb)]).stdout
        self.assertIn("Package: soilbench\n", info)
        self.assertIn("Architecture: amd64\n", info)

    def test_unpacked_programs_report_the_builds_version(self):
        built = run([str(ARGS.build / "bin" / "soilbench"), "--version"])
        packed = run([str(self.root / "usr/bin/soilbench"), "--version"], env=self.env())
        self.assertEqual(packed.returncode, 0, packed.stderr)
        self.assertEqual(packed.stdout, built.stdout)
        self.assertRegex(packed.stdout, r"^soilbench \d+\.\d+\.\d+")
        if ARGS.gui:
            gui = run([str(self.root / "usr/bin/soilbench-gui"), "--version"], env=self.env())
            self.assertEqual(gui.returncode, 0, gui.stderr)
            self.assertEqual(gui.stdout.split(" ", 1)[1], packed.stdout.splitlines()[0].split(" ", 1)[1] + "\n")

    def test_unpacked_demo_runs_with_the_packaged_data_and_stand_in(self):
        demo = self.tmp / "demo"
        ran = run([str(self.root / "usr/bin/soilbench"), "demo", str(demo)], env=self.env(), cwd=self.tmp)
        self.assertEqual(ran.returncode, 0, ran.stdout[-2000:] + ran.stderr[-2000:])
        self.assertIn(f"Set-up files: {self.root}/usr/share/soilbench/demo\n", ran.stdout)
        self.assertIn("24 records run: 24 good, 0 failed", ran.stdout)
        self.assertEqual((demo / "demo-chart.png").read_bytes()[1:4], b"PNG")
        self.assertEqual(os.readlink(demo / "model" / "tellura-standin"),
                         str(self.root / "usr/libexec/soilbench/tellura-standin"))
        # The stand-in found the packaged layouts from libexec/soilbench.
        self.assertIn(f"Variable layout: {self.root}/usr/libexec/soilbench/../../share/soilbench/binary-layouts/",
                      (demo / "run-log.txt").read_text())

    def test_manual_page_has_every_command_and_is_clean_roff(self):
        page = gzip.decompress((self.root / "usr/share/man/man1/soilbench.1.gz").read_bytes()).decode()
        help_text = run([str(ARGS.build / "bin" / "soilbench"), "--help"]).stdout
        listed = help_text.split("Subcommands:\n", 1)[1].split("\n\n", 1)[0]
        commands = re.findall(r"^  (\S+) {2,}", listed, re.M)
        self.assertGreaterEqual(len(commands), 10, help_text)
        headings = re.findall(r'^\.SS "soilbench (\S+)', page, re.M)
        for command in commands:
            self.assertIn(command.replace("-", "\\-"), headings)
        self.assertIn('.SS "soilbench import run\\-files [OPTIONS] PROJECT DIR"\n', page)
        for section in ("NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "ENVIRONMENT", "FILES", "EXIT STATUS"):
            self.assertIn("\n.SH " + section + "\n", page)
        self.assertIn("\n.B SOILBENCH_DATA_DIR\n", page)
        if shutil.which("groff"):
            checked = run(["groff", "-man", "-ww", "-z"], input=page)
            self.assertEqual(checked.stderr, "")

    def test_desktop_entry_is_valid(self):
        if not ARGS.gui:
            self.skipTest("the desktop application is not built")
        validator = shutil.which("desktop-file-validate")
        if not validator:
            self.skipTest("desktop-file-validate is not installed (package desktop-file-utils)")
        checked = run([validator, str(self.root / "usr/share/applications/soilbench.desktop")])
        self.assertEqual(checked.returncode, 0, checked.stdout + checked.stderr)
        self.assertEqual(checked.stdout + checked.stderr, "")


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=Path, required=True)
    parser.add_argument("--source", type=Path, required=True)
    parser.add_argument("--gui", action="store_true")
    ARGS, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
