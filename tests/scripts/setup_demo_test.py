#!/usr/bin/env python3
"""The README's first command, `scripts/setup demo DIR`, run as written in the
build tree given as the argument (nothing is installed and an up-to-date tree is
not rebuilt): it must end well, say its messages before its summary, and leave a
project whose records hold annual and monthly outputs and a chart."""
import os
import sqlite3
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SETUP = Path(__file__).resolve().parents[2] / "scripts" / "setup"
BUILD_DIR = sys.argv.pop(1) if len(sys.argv) > 1 else str(SETUP.parents[1] / "build")


class SetupDemo(unittest.TestCase):
    def test_demo_as_the_readme_writes_it(self):
        with tempfile.TemporaryDirectory() as tmp:
            demo = Path(tmp) / "demo"
            env = dict(os.environ, SB_BUILD_DIR=BUILD_DIR, SB_SETUP_NO_INSTALL="1")
            done = subprocess.run([str(SETUP), "demo", str(demo)], env=env, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, timeout=900)
            out = done.stdout
            self.assertEqual(done.returncode, 0, out[-3000:])
            self.assertIn("24 records run: 24 good, 0 failed", out)
            self.assertNotIn("Installing:", out)

            # Every message of the runs comes before the summary table.
            summary = out.index("   ID  Years  Final soil C")
            self.assertEqual(out.count("records read, from years"), 24, out[-3000:])
            self.assertLess(out.rindex("records read, from years"), summary)
            self.assertLess(out.rindex("Year Summary: "), summary)

            self.assertEqual((demo / "demo-chart.png").read_bytes()[1:4], b"PNG")
            with sqlite3.connect(demo / "demo.sbproj") as con:
                counts = {table: con.execute(f'SELECT COUNT(*) FROM "{table}" WHERE "ID" = 1').fetchone()[0]
                          for table in ("Output Annual", "Output Monthly")}
                n2o = con.execute('SELECT SUM("n2oflux") FROM "Output Annual" WHERE "ID" = 24').fetchone()[0]
                # The annual rows come from the year summary, which has no soil
                # carbon column: stored as missing (NULL), not as 0.
                no_somtc = con.execute('SELECT COUNT(*) FROM "Output Annual" WHERE "ID" = 1 AND "somtc" IS NULL'
                                       ).fetchone()[0]
                last = con.execute('SELECT "Description" FROM "Control Records" WHERE "ID" = 24').fetchone()[0]
            self.assertEqual(last, "clay loam, maize, N135")
            self.assertGreater(counts["Output Annual"], 0, counts)
            self.assertGreater(counts["Output Monthly"], counts["Output Annual"], counts)
            self.assertGreater(n2o, 0)
            self.assertEqual(no_somtc, counts["Output Annual"])


if __name__ == "__main__":
    unittest.main()
