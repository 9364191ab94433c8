#!/usr/bin/env python3
"""Shows that tools/itf/check_table.py agrees with the table, and that it sees each kind of mistake.

    check_table_test.py LAPACK_H ARPACK_H
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TABLE = ROOT / "src/numerics/routines.txt"
SOURCE = """\
      SUBROUTINE DRSCL( N, SA, SX, INCX )
*> \\param[in] N
*> \\param[in] SA
*> \\param[in,out] SX
*> \\param[in] INCX
      INTEGER            INCX, N
      DOUBLE PRECISION   SA
      DOUBLE PRECISION   SX( * )
      SX( 1 ) = SX( 1 ) / SA
      END
"""

LAPACK_H, ARPACK_H = sys.argv.pop(1), sys.argv.pop(1)


def check(*options, text=None):
    with tempfile.TemporaryDirectory() as folder:
        table = pathlib.Path(folder) / "table.txt"
        table.write_text(text or TABLE.read_text())
        done = subprocess.run([sys.executable, "-B", ROOT / "tools/itf/check_table.py", "--table", table, *options],
                              stdout=subprocess.PIPE, text=True)
    return done.returncode, done.stdout


class CheckTable(unittest.TestCase):
    def changed(self, old, new):
        text = TABLE.read_text()
        self.assertIn(old, text)
        return text.replace(old, new, 1)

    def assert_found(self, expected, old, new, *options):
        code, output = check(*options, text=self.changed(old, new))
        self.assertEqual(code, 1)
        self.assertIn(expected, output)

    def test_agrees_with_the_headers(self):
        code, output = check("--lapack-h", LAPACK_H, "--arpack-h", ARPACK_H)
        self.assertEqual(code, 0, output)
        self.assertRegex(output, r"lapack.h: 7\d\d of 1208")
        self.assertIn("arpack.h: 6 of 1208", output)

    def test_sees_a_missing_and_an_added_name(self):
        self.assert_found("cdotu: only in the frozen list", "c           ITF_Complex dotu(", "c           ITF_Complex dotx(")
        self.assert_found("cdotx: only in the table", "c           ITF_Complex dotu(", "c           ITF_Complex dotx(")

    def test_sees_a_swapped_kind(self):
        self.assert_found("lapack.h: dgetrf: m: R, not integer", "getrf(int m,", "getrf(R m,", "--lapack-h", LAPACK_H)

    def test_sees_a_missing_argument(self):
        self.assert_found("dgetrf: 5 arguments, not 6", "getrf(int m, int n,", "getrf(int m,", "--lapack-h", LAPACK_H)

    def test_sees_an_output_taken_by_value(self):
        self.assert_found("dgetrf: info: an input in the table", "getrf(int m, int n, T *a, int lda, int *ipiv, int *info",
                          "getrf(int m, int n, T *a, int lda, int *ipiv, int info", "--lapack-h", LAPACK_H)

    def test_sees_a_missing_hidden_length(self):
        self.assert_found("dpotrf: uplo: int, not character", "potrf(char uplo", "potrf(int uplo", "--lapack-h", LAPACK_H)

    def test_sees_an_address_where_arpack_has_a_value(self):
        self.assert_found("dsaupd: n: by address in the table", "saupd(int *ido, char bmat, int n,",
                          "saupd(int *ido, char bmat, int *n,", "--arpack-h", ARPACK_H)

    def test_reads_reference_sources(self):
        with tempfile.TemporaryDirectory() as tree:
            path = pathlib.Path(tree) / "SRC/drscl.f"
            path.parent.mkdir()
            path.write_text(SOURCE)
            code, output = check("--sources", tree)
            self.assertEqual(code, 0, output)
            path.write_text(SOURCE.replace("in] SA", "out] SA"))
            code, output = check("--sources", tree)
        self.assertEqual(code, 1)
        self.assertIn("sources: drscl: sa: value, documented as out", output)


if __name__ == "__main__":
    unittest.main()
