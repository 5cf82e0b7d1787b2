"""Runs the package's pytest suite; exits 77 (skipped) when pytest, NumPy or
pandas cannot be imported."""
import sys

try:
    import numpy  # noqa: F401
    import pandas  # noqa: F401
    import pytest
except ImportError as missing:
    print("skipped: %s" % missing)
    sys.exit(77)

sys.exit(pytest.main(["-q", "-p", "no:cacheprovider", *sys.argv[1:]]))
