#!/usr/bin/env python3
"""scripts/check-layering on a small checkout: a clean one passes, and each planted
fault fails with its own message naming the file, line and rule broken."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).resolve().parents[2] / "scripts" / "check-layering"

TABLE = "app:      Qt6::Core\ndb:       app\nrecords:  app db\n"
CLEAN_FILES = {
    "src/app/text.cpp": '#include "app/text.h"\n',
    "src/db/database.cpp": '#include "db/database.h"\n#include "app/text.h"\n',
    "src/records/record.cpp": '#include <string>\n#include "db/database.h"\n#include "app/text.h"\n',
    "tests/db/database_test.cpp": '#include "test_support.h"\n#include "db/database.h"\n#include "app/text.h"\n',
}
CLEAN_LINKS = {
    "app": "app soilbench_app: Qt6::Core",
    "db": "db soilbench_db: soilbench_app",
    "records": "records soilbench_records: soilbench_db soilbench_app",
    "test": "tests/db test_db: soilbench_db GTest::gtest Qt6::Test",
}

CASES = [
    # name, files to add or replace, link lines to replace, expected problems
    ("clean", {}, {}, []),
    ("wrong-way include", {"src/db/database.cpp": '#include "db/database.h"\n#include "records/record.h"\n'}, {},
     ['src/db/database.cpp:2: #include "records/record.h": db may not use records '
      "(db may use only app besides itself)"]),
    ("test includes above its folder", {"tests/db/database_test.cpp": '#include <records/record.h>\n'}, {},
     ['tests/db/database_test.cpp:1: #include "records/record.h": tests/db may not use records '
      "(tests/db may use only app besides itself)"]),
    ("relative include", {"src/records/record.cpp": '#include "../db/database.h"\n'}, {},
     ['src/records/record.cpp:1: #include "../db/database.h" reaches out by a relative path; '
      'include "folder/file.h" from the folder\'s root instead']),
    ("folder missing from the table", {"src/extra/x.cpp": "\n"}, {},
     ['src/extra/x.cpp: folder "extra" is not in scripts/layers.txt']),
    ("include without a declared link", {}, {"records": "records soilbench_records: soilbench_db"},
     ["src/records/record.cpp:3: records uses app, but no CMake target of records links soilbench_app "
      "(declare it with target_link_libraries)"]),
    ("wrong-way link makes a circle", {}, {"db": "db soilbench_db: soilbench_app soilbench_records"},
     ["CMake target soilbench_db (db) links soilbench_records (records): db may not use records "
      "(db may use only app besides itself)",
      "CMake's declared links run in a circle: db -> records -> db"]),
    ("a GUI module in the core", {}, {"app": "app soilbench_app: Qt6::Core Qt6::Widgets"},
     ["CMake target soilbench_app (app) links Qt6::Widgets, which app may not use (it may use Qt6::Core)"]),
    ("folder without a target", {}, {"records": ""},
     ["src/records: no CMake target is declared for this folder"]),
    ("folder left out of the build", {}, {"records": "records -:"}, []),
]


def run_checker(files, links):
    with tempfile.TemporaryDirectory() as root:
        for path, text in {"scripts/layers.txt": TABLE, **CLEAN_FILES, **files}.items():
            (Path(root) / path).parent.mkdir(parents=True, exist_ok=True)
            (Path(root) / path).write_text(text)
        graph = Path(root) / "links.txt"
        graph.write_text("\n".join(line for line in {**CLEAN_LINKS, **links}.values() if line) + "\n")
        result = subprocess.run([sys.executable, str(CHECKER), "--root", root, "--links", str(graph)],
                                capture_output=True, text=True)
        return result.returncode, result.stdout.splitlines()


class CheckLayering(unittest.TestCase):
    def test_cases(self):
        for name, files, links, expected in CASES:
            with self.subTest(name):
                code, lines = run_checker(files, links)
                if not expected:
                    self.assertEqual((code, lines),
                                     (0, ["layering: every include and declared link follows scripts/layers.txt"]))
                else:
                    summary = f"layering: {len(expected)} problem(s); the allowed directions are in scripts/layers.txt"
                    self.assertEqual((code, lines), (1, expected + [summary]))


if __name__ == "__main__":
    unittest.main()
