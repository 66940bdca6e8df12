import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parent.parent.parent / "scripts"


class Tree(unittest.TestCase):
    """A case with an empty folder, on which it runs the script that its class names."""

    script = ""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)

    def write(self, path, *lines):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("".join(line + "\n" for line in lines), encoding="utf-8")

    def run_script(self, *arguments):
        return subprocess.run(
            [sys.executable, "-B", SCRIPTS / self.script, *arguments],
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            timeout=60,
        )

    def check(self):
        """What the script prints, line by line. Its exit status is 1 when there is anything."""
        result = self.run_script(self.root)
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.returncode, 1 if result.stdout else 0)
        return result.stdout.splitlines()

    def check_usage(self):
        """--help prints the head of the script; an unknown option is refused with the same text."""
        asked = self.run_script("--help")
        self.assertEqual((asked.returncode, asked.stderr), (0, ""))
        self.assertIn(f"scripts/{self.script} [ROOT]", asked.stdout)
        refused = self.run_script("--what")
        self.assertEqual((refused.returncode, refused.stdout), (2, ""))
        self.assertEqual(refused.stderr, asked.stdout)
