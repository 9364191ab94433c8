"""The check of the rooms finds what it is for, and the picture in docs/ shows today's table."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOL = ROOT / "tools/check_rooms.py"

TABLE = """
[[room]]
name = "low"
floor = 0
holds = "x"
headers = ["Low.h"]

[[room]]
name = "high"
floor = 1
holds = "y"
headers = ["High.h"]
"""


class CheckRooms(unittest.TestCase):
    def check(self, files):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in {"tools/rooms.toml": TABLE, "include/zarel/Low.h": "",
                               "include/zarel/High.h": "", "src/low/a.cpp": "", **files}.items():
                path = root / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            done = subprocess.run([sys.executable, TOOL, "--root", root], text=True, stdout=subprocess.PIPE)
            return done.returncode, done.stdout

    def test_looking_down_is_allowed(self):
        self.assertEqual(self.check({"src/high/a.cpp": "#include <zarel/Low.h>\n#include \"low/x.h\"\n"})[0], 0)

    def test_looking_up_is_a_violation_with_its_place(self):
        code, text = self.check({"src/low/a.cpp": "\n#include \"high/x.h\"\n"})
        self.assertEqual(code, 1)
        self.assertIn("src/low/a.cpp:2:", text)

    def test_a_public_header_belongs_to_its_room(self):
        self.assertEqual(self.check({"include/zarel/Low.h": "#include <zarel/High.h>\n"})[0], 1)

    def test_an_unknown_public_header_is_a_violation(self):
        self.assertEqual(self.check({"include/zarel/New.h": ""})[0], 1)

    def test_a_program_must_not_include_private_headers(self):
        self.assertEqual(self.check({"apps/x/main.cpp": "#include \"low/x.h\"\n"})[0], 1)
        self.assertEqual(self.check({"apps/x/main.cpp": "#include <zarel/High.h>\n"})[0], 0)

    def test_the_committed_picture_is_up_to_date(self):
        with tempfile.TemporaryDirectory() as folder:
            drawn = pathlib.Path(folder) / "rooms.svg"
            subprocess.run([sys.executable, TOOL, "--draw", drawn], check=True)
            self.assertEqual(drawn.read_text(), (ROOT / "docs/images/rooms.svg").read_text(),
                             "run tools/check_rooms.py --draw docs/images/rooms.svg")


if __name__ == "__main__":
    unittest.main()
