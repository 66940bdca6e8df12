import unittest

from tree import Tree


class CheckPaths(Tree):
    script = "check-paths"

    def setUp(self):
        super().setUp()
        self.write("docs/testing.md", "# Testing")
        self.write("runtime/plan/plan.h")

    def test_finds_nothing_where_every_path_is_there(self):
        self.write(
            "README.md",
            "See docs/testing.md, `runtime/plan/plan`, runtime/plan/ and runtime/plan.",
            "[Testing](docs/testing.md#fuzzing), [a site](https://example.org/docs/none),",
            "[here](#below), build/docs/none, ~/docs/none, and/or, $OUT/docs/none",
        )
        self.write("docs/more.md", "[Testing](testing.md) ![plan](../runtime/plan/plan.h)")
        self.assertEqual(self.check(), [])

    def test_finds_a_path_that_is_missing(self):
        self.write("README.md", "# Read me", "", "See docs/tests.md, runtime/plan/plan.")
        self.write("runtime/plan/notes.md", "`runtime/kernels/plan` and docs/testing.md")
        self.assertEqual(
            self.check(),
            [
                "README.md:3: there is no docs/tests.md",
                "runtime/plan/notes.md:1: there is no runtime/kernels/plan",
            ],
        )

    def test_finds_a_link_that_leads_nowhere(self):
        self.write("docs/more.md", "[Testing](docs/testing.md) and [more](evenmore.md)")
        self.assertEqual(self.check(), ["docs/more.md:1: there is no evenmore.md"])

    def test_leaves_out_pages_that_a_build_has_brought(self):
        self.write("build/page.md", "docs/none.md")
        self.write(".cache/page.md", "docs/none.md")
        self.write("node_modules/peer/page.md", "docs/none.md")
        self.assertEqual(self.check(), [])

    def test_says_how_it_is_used(self):
        self.check_usage()


if __name__ == "__main__":
    unittest.main()
