# SPDX-License-Identifier: MIT
"""Makes named tests of the rows of a table."""

from table import read_text_rows


def add_tests(test_case, method, rows):
    """Gives a test case a test for each row of a table, which calls the method with the row."""

    def add_test(label, row):
        setattr(test_case, f"test_{label}", lambda self: getattr(self, method)(*row))

    for label, row in rows.items():
        add_test(label, row)


def add_table(test_case, method, table):
    """Gives a test case a test for each row of a table of texts in tests/data, named by its "name"."""
    rows = read_text_rows(table)
    named = {row["name"]: [row] for row in rows}
    assert len(named) == len(rows), f"two rows of {table} have the same name"
    add_tests(test_case, method, named)
