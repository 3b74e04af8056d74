"""Fingers of a touch display, felt by a window of another toolkit."""

import unittest

from fixtures import Felt, OneFinger


class WithoutDriver(OneFinger, Felt):
    """A machine whose driver does not run has a plain touch screen."""


if __name__ == "__main__":
    unittest.main()
