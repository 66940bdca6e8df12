import os
import tempfile
import unittest
from pathlib import Path

import cv2
import numpy as np

from scribokit.collecting.archive import archived_pictures, reading_of
from scribokit.common.labels import label_of_name, load_rows, read_labels, write_labels
from scribokit.common.pictures import load_picture

PICTURE = cv2.imencode(".bmp", np.zeros((4, 4), np.uint8))[1].tobytes()


class ArchiveNames(unittest.TestCase):
    def test_hold_the_reading_after_the_time(self):
        self.assertEqual(reading_of("C1_T1ROI1_1121_075610_123_LOT-A4827.bmp"), "LOT-A4827")

    def test_may_hold_an_empty_reading(self):
        self.assertEqual(reading_of("C1_T1ROI3_1121_075610_123_.bmp"), "")

    def test_may_hold_a_reading_like_their_own_parts(self):
        self.assertEqual(
            reading_of("C1_T1ROI12_1121_075610_123_ROI7_1121_075610_123.bmp"),
            "ROI7_1121_075610_123",
        )
        self.assertEqual(reading_of("T_ROI_ROI2_0101_000000_000_A.B.bmp"), "A.B")

    def test_of_other_files_are_none(self):
        for name in (
            "A.bmp",
            "C1_T1ROI1_1121_0756_123_A.bmp",
            "C1_T1ROI1_1121_075610_123_A.png",
            "C1_T1_1121_075610_123_A.bmp",
        ):
            self.assertIsNone(reading_of(name), name)


class ArchiveTree(unittest.TestCase):
    def test_is_read_from_both_bases_and_all_verdict_folders(self):
        with tempfile.TemporaryDirectory() as root:
            name = "C1_T1ROI1_1121_075610_123_{}.bmp"
            places = {
                "AISavePic/m_p1_1_C1_T1/OK": "OK1",
                "AISavePic/m_p1_1_C1_T1/NG/ng": "NG1",
                "AISavePic_20261121/m_p1_1_C1_T1/NG/ng_notype": "NG2",
                "AISavePic/m_p1_1_C1_T1/other": "X",
                "AISavePic/m_p1_1_C1_T1/ng": "Y",
            }
            for place, reading in places.items():
                (Path(root) / place).mkdir(parents=True)
                (Path(root) / place / name.format(reading)).write_bytes(b"BM")
                (Path(root) / place / "notes.bmp").write_bytes(b"BM")
            found = archived_pictures(root)
        self.assertEqual(
            {(p.reading, p.verdict, p.source) for p in found},
            {
                ("OK1", "OK", "m_p1_1_C1_T1"),
                ("NG1", "NG", "m_p1_1_C1_T1"),
                ("", "NG", "m_p1_1_C1_T1"),
            },
        )

    def test_may_hold_names_that_are_not_utf_8(self):
        with tempfile.TemporaryDirectory() as root:
            folder = Path(root) / "AISavePic/m_p1_1_C1_T1/OK"
            folder.mkdir(parents=True)
            Path(
                os.fsdecode(os.fsencode(folder) + b"/C1_T1ROI1_1121_075610_123_A\xe41.bmp")
            ).write_bytes(PICTURE)
            found = archived_pictures(root)
            self.assertEqual([p.reading for p in found], ["A\ufffd1"])
            self.assertEqual(load_picture(found[0].path).shape, (4, 4, 3))

    def test_that_is_missing_holds_nothing(self):
        self.assertEqual(archived_pictures("/nowhere"), [])


class Labels(unittest.TestCase):
    def test_come_from_file_names_without_their_number(self):
        self.assertEqual(
            [label_of_name(n) for n in ("AB12.png", "AB12_3.png", "A_B_10.jpg", "LOT.5.bmp")],
            ["AB12", "AB12", "A_B", "LOT.5"],
        )

    def test_from_a_table_come_before_file_names_and_cleared_texts_are_left_out(self):
        with tempfile.TemporaryDirectory() as root:
            write_labels(Path(root) / "labels.csv", [("a.png", "X,1"), ("b.png", "")])
            self.assertEqual(read_labels(root), [(Path(root) / "a.png", "X,1")])

    def test_from_file_names_take_pictures_only(self):
        with tempfile.TemporaryDirectory() as root:
            cv2.imwrite(str(Path(root) / "AB_1.png"), np.zeros((4, 4), np.uint8))
            (Path(root) / "notes.txt").write_text("x")
            self.assertEqual(read_labels(root), [(Path(root) / "AB_1.png", "AB")])

    def test_missing_altogether_are_an_error(self):
        with tempfile.TemporaryDirectory() as root:
            with self.assertRaisesRegex(ValueError, "no labelled pictures"):
                read_labels(root)

    def test_are_read_from_what_spreadsheets_save(self):
        for content in (
            b"\xef\xbb\xbffile,text\r\na.png,A1\r\n",
            b"file;text;checked\na.png;A1;yes\n",
            b"text\tfile\nA1\ta.png\n",
            b'file,text\n"a.png","A1"\nb.png\n,\n',
            b"file,text\na.png,A1,surplus\n",
        ):
            with self.subTest(content), tempfile.TemporaryDirectory() as root:
                table = Path(root) / "labels.csv"
                table.write_bytes(content)
                self.assertEqual(read_labels(root), [(Path(root) / "a.png", "A1")])
                self.assertTrue(
                    all(
                        isinstance(value, str) for row in load_rows(table) for value in row.values()
                    )
                )

    def test_in_another_encoding_are_an_error(self):
        with tempfile.TemporaryDirectory() as root:
            (Path(root) / "labels.csv").write_bytes("file,text\na.png,Ä\n".encode("latin-1"))
            with self.assertRaisesRegex(ValueError, "labels.csv: not in UTF-8"):
                read_labels(root)

    def test_are_not_taken_from_file_names_in_the_place_of_a_missing_table(self):
        with tempfile.TemporaryDirectory() as root:
            (Path(root) / "AB.png").write_bytes(PICTURE)
            with self.assertRaisesRegex(OSError, "lables.csv"):
                read_labels(root, Path(root) / "lables.csv")

    def test_in_a_table_without_the_columns_are_an_error(self):
        with tempfile.TemporaryDirectory() as root:
            (Path(root) / "labels.csv").write_text("a.png,AB\n")
            with self.assertRaisesRegex(ValueError, "columns file and text"):
                read_labels(root)


if __name__ == "__main__":
    unittest.main()
