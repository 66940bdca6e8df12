import unittest

from tree import Tree


class CheckIncludes(Tree):
    script = "check-includes"

    def write_table(self, *rows):
        lines = ["# Architecture", "", "| folder | includes from |", "| --- | --- |"]
        for folder, *targets in rows:
            names = ", ".join(f"`{target}`" for target in targets)
            lines.append(f"| `{folder}` | {names} |")
        self.write("docs/architecture.md", *lines, "", "Text.")

    def write_right_tree(self):
        """Three folders in one direction, with headers named by file, by folder and by schema."""
        self.write("top/main.cpp", '#include "plan/plan.h"', "#include <QString>")
        self.write("run/plan/plan.h", '#include "engine_generated.h"', '#include "step.h"')
        self.write("run/plan/step.h", "#pragma once")
        self.write("run/format/engine.fbs", "table Engine {}")
        self.write("run/format/file.h", "#pragma once")
        self.write_table(("top", "run/plan"), ("run/plan", "run/format"), ("run/format",))

    def test_finds_nothing_in_a_tree_as_its_table_says(self):
        self.write_right_tree()
        self.assertEqual(self.check(), [])

    def test_finds_an_include_against_the_direction_and_the_circle(self):
        self.write_right_tree()
        self.write("run/format/file.h", "#pragma once", "", "#  include <plan/step.h>")
        self.assertEqual(
            self.check(),
            [
                "run/format/file.h:3: includes plan/step.h: "
                "run/format does not include from run/plan",
                "circle: run/format -> run/plan -> run/format",
                "  run/format/file.h:3: includes plan/step.h",
                "  run/plan/plan.h:1: includes engine_generated.h",
            ],
        )

    def test_finds_a_circle_of_three_once(self):
        self.write_right_tree()
        self.write("run/format/file.h", '#include "main.h"')
        self.write("top/main.h")
        self.assertEqual(
            self.check()[1:],
            [
                "circle: run/format -> top -> run/plan -> run/format",
                "  run/format/file.h:1: includes main.h",
                "  top/main.cpp:1: includes plan/plan.h",
                "  run/plan/plan.h:1: includes engine_generated.h",
            ],
        )

    def test_finds_an_include_that_jumps_over_a_folder(self):
        self.write_right_tree()
        self.write("top/tool.cpp", "", '#include "file.h"')
        self.assertEqual(
            self.check(), ["top/tool.cpp:2: includes file.h: top does not include from run/format"]
        )

    def test_finds_a_folder_without_a_row(self):
        self.write_right_tree()
        self.write("run/plan/deep/new.cpp")
        self.assertEqual(
            self.check(),
            ["run/plan/deep: has C++ files and no row in the table of docs/architecture.md"],
        )

    def test_finds_rows_that_nothing_stands_behind(self):
        self.write_right_tree()
        self.write_table(
            ("top", "run/plan", "run/format"),
            ("run/plan", "run/format"),
            ("run/gone",),
            ("run/format",),
        )
        self.assertEqual(
            self.check(),
            [
                "docs/architecture.md:5: nothing in top includes from run/format",
                "docs/architecture.md:7: there is no folder run/gone with C++ files",
            ],
        )

    def test_finds_a_table_that_leads_upwards(self):
        self.write_right_tree()
        self.write_table(("run/plan", "run/format"), ("top", "run/plan"), ("run/format",))
        self.assertEqual(
            self.check(),
            ["docs/architecture.md:6: top includes from run/plan, which is not below it"],
        )

    def test_finds_a_second_row_of_a_folder(self):
        self.write_right_tree()
        self.write_table(
            ("top", "run/plan"), ("run/plan", "run/format"), ("run/format",), ("run/format",)
        )
        self.assertEqual(self.check(), ["docs/architecture.md:8: run/format has a row already"])

    def test_finds_that_the_table_or_its_page_is_missing(self):
        self.write("top/main.cpp")
        missing = [
            "docs/architecture.md:1: there is no table with the head '| folder | includes from |'",
            "top: has C++ files and no row in the table of docs/architecture.md",
        ]
        self.assertEqual(self.check(), missing)
        self.write("docs/architecture.md", "# Architecture")
        self.assertEqual(self.check(), missing)

    def test_lets_tests_include_everything_but_nothing_include_tests(self):
        self.write_right_tree()
        self.write("tests/run/plan_test.cpp", '#include "plan/step.h"', '#include "double.h"')
        self.write("tests/run/double.h")
        self.write("bench/bench.cpp", '#include "file.h"')
        self.write("fuzz/fuzz.cpp", '#include "file.h"')
        self.assertEqual(self.check(), [])
        self.write("top/main.h", '#include "double.h"')
        self.assertEqual(
            self.check(), ["top/main.h:1: includes double.h: top does not include from tests/run"]
        )

    def test_takes_the_header_beside_the_file_and_then_one_that_may_be_included(self):
        self.write_right_tree()
        self.write("top/step.h")
        self.write("top/tool.cpp", '#include "step.h"', "#include <step.h>")
        self.assertEqual(self.check(), [])
        self.write("run/other/step.h")
        self.write_table(
            ("top", "run/plan"), ("run/plan", "run/format"), ("run/other",), ("run/format",)
        )
        self.assertEqual(self.check(), [])

    def test_leaves_out_what_a_build_has_made(self):
        self.write_right_tree()
        self.write("build-asan/top/made.cpp", '#include "file.h"')
        self.write(".cache/made.h", '#include "file.h"')
        self.assertEqual(self.check(), [])

    def test_says_how_it_is_used(self):
        self.check_usage()


if __name__ == "__main__":
    unittest.main()
