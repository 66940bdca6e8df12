"""The rooms of the kit import in one direction only."""
import ast
import unittest
from pathlib import Path

KIT = Path(__file__).resolve().parents[2] / "training" / "scribokit"
MAY_IMPORT = {
    "common": set(),
    "drawing": {"common"},
    "network": {"common", "drawing"},
    "measuring": {"common", "drawing", "network"},
    "collecting": {"common"},
}


def imported_rooms(path):
    """The other rooms that a module imports from, by its relative imports."""
    tree = ast.parse(path.read_text(encoding="utf-8"))
    return {
        node.module.split(".")[0]
        for node in ast.walk(tree)
        if isinstance(node, ast.ImportFrom) and node.level == 2
    }


class Rooms(unittest.TestCase):
    def test_every_folder_is_a_known_room(self):
        rooms = {path.parent.name for path in KIT.glob("*/__init__.py")}
        self.assertEqual(rooms, set(MAY_IMPORT))
        self.assertEqual([path.name for path in KIT.glob("*.py")], ["__init__.py"])

    def test_imports_go_one_way(self):
        for room, allowed in MAY_IMPORT.items():
            modules = sorted((KIT / room).glob("*.py"))
            self.assertGreater(len(modules), 1)
            for path in modules:
                with self.subTest(module=f"{room}/{path.name}"):
                    self.assertLessEqual(imported_rooms(path), allowed)

    def test_no_module_names_the_package_by_its_full_name(self):
        for path in KIT.glob("*/*.py"):
            with self.subTest(module=path.name):
                self.assertNotIn("scribokit", path.read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
