import json
import os
import shutil
import subprocess
import unittest

from tree import SCRIPTS, Tree

# Finds something in every file that holds the word "fault".
CLANG_TIDY = """#!/bin/sh
if [ "$1" = --dump-config ]; then
    grep wrong .clang-tidy >&2
    exit 0
fi
for file; do :; done
grep fault "$file" && exit 1
exit 0
"""


class Tidy(Tree):
    """A repository of its own, with stand-ins for clang-tidy and for what installs it."""

    def setUp(self):
        super().setUp()
        for name in ("tidy", "usage.sh"):
            (self.root / "scripts").mkdir(exist_ok=True)
            shutil.copy(SCRIPTS / name, self.root / "scripts" / name)
        self.write_program("scripts/install-packages", "#!/bin/sh\n")
        self.write_program("bin/clang-tidy", CLANG_TIDY)
        self.write(".clang-tidy", "Checks: all")
        self.write(".gitignore", "/build/", "/bin/", "/scripts/")
        self.git("init", "--quiet")
        self.files = ["a/one.cpp", "a/two.cpp", "b/three.cpp"]
        for file in self.files:
            self.write(file, "// a fault")
        self.write("a/one.h")
        self.write("build/compile_commands.json", *map(self.command, self.files))
        self.commit()

    def write_program(self, path, text):
        self.write(path, *text.splitlines())
        (self.root / path).chmod(0o755)

    def command(self, file):
        return json.dumps({"file": str(self.root.resolve() / file)})

    def git(self, *arguments):
        identity = ("-c", "user.name=test", "-c", "user.email=test@localhost")
        subprocess.run(["git", *identity, *arguments], cwd=self.root, check=True, timeout=60)

    def commit(self):
        self.git("add", "--all")
        self.git("commit", "--quiet", "--message", "test")

    def tidy(self, *arguments, seconds="60"):
        """(exit status, lines of the output, sorted but for the last one)."""
        path = f"{self.root / 'bin'}:{os.environ['PATH']}"
        result = subprocess.run(
            [self.root / "scripts" / "tidy", *arguments],
            env={**os.environ, "PATH": path, "SCRIBO_TIDY_SECONDS": seconds},
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            timeout=60,
        )
        lines = result.stdout.splitlines()
        return result.returncode, sorted(lines[:-1]), lines[-1]

    def test_checks_every_file_where_there_is_no_earlier_commit(self):
        self.assertEqual(
            self.tidy(),
            (1, ["// a fault"] * 3, "scripts/tidy: 3 files checked, 3 with findings"),
        )

    def test_checks_the_files_that_differ_from_the_commit_before(self):
        self.write("a/two.cpp", "// another fault")
        self.write("b/three.cpp", "// right")
        self.commit()
        self.assertEqual(
            self.tidy(),
            (1, ["// another fault"], "scripts/tidy: 2 files checked, 1 with findings"),
        )

    def test_checks_the_files_that_differ_from_the_named_commit(self):
        self.write("a/two.cpp", "// right")
        self.commit()
        self.write("b/three.cpp", "// right")
        self.commit()
        self.assertEqual(
            self.tidy("HEAD~1"), (0, [], "scripts/tidy: 1 files checked, 0 with findings")
        )
        self.assertEqual(
            self.tidy("HEAD~2"), (0, [], "scripts/tidy: 2 files checked, 0 with findings")
        )

    def test_checks_the_source_of_a_header_and_files_that_are_not_committed_yet(self):
        self.write("a/one.h", "// changed")
        self.write("c/four.cpp", "// right")
        commands = self.files + ["c/four.cpp"]
        self.write("build/compile_commands.json", *map(self.command, commands))
        self.assertEqual(
            self.tidy("HEAD"),
            (1, ["// a fault"], "scripts/tidy: 2 files checked, 1 with findings"),
        )

    def test_leaves_out_files_that_are_not_compiled_or_are_gone(self):
        self.write("d/five.cpp", "// a fault")
        (self.root / "a/one.cpp").unlink()
        self.commit()
        self.assertEqual(self.tidy(), (0, [], "scripts/tidy: 0 files checked, 0 with findings"))

    def test_names_the_files_for_which_there_is_no_time(self):
        self.assertEqual(
            self.tidy(seconds="0"),
            (
                0,
                ["  a/one.cpp", "  a/two.cpp", "  b/three.cpp"]
                + ["scripts/tidy: no time for these 3 of 3 files:"],
                "scripts/tidy: 0 files checked, 0 with findings",
            ),
        )

    def test_refuses_settings_that_cannot_be_read(self):
        self.write(".clang-tidy", "wrong")
        self.assertEqual(self.tidy(), (1, ["wrong"], "scripts/tidy: .clang-tidy cannot be read"))

    def test_asks_for_the_compile_commands(self):
        (self.root / "build/compile_commands.json").unlink()
        self.assertEqual(
            self.tidy(),
            (
                1,
                [],
                "scripts/tidy: configure and build build/ first (scripts/test does)",
            ),
        )


if __name__ == "__main__":
    unittest.main()
