# SPDX-License-Identifier: MIT
"""Makes named tests of the rows of a table."""


def add_tests(test_case, method, rows):
    """Gives a test case a test for each row of a table, which calls the method with the row."""

    def add_test(label, row):
        setattr(test_case, f"test_{label}", lambda self: getattr(self, method)(*row))

    for label, row in rows.items():
        add_test(label, row)
