"""Runs the package's pytest suite; exits 77 (skipped) when pytest, NumPy or
pandas cannot be imported. Guarded by __main__: the Dask tests start worker
processes that import the main module again."""
import sys


def main():
    try:
        import numpy  # noqa: F401
        import pandas  # noqa: F401
        import pytest
    except ImportError as missing:
        print("skipped: %s" % missing)
        return 77
    return pytest.main(["-q", "-p", "no:cacheprovider", *sys.argv[1:]])


if __name__ == "__main__":
    sys.exit(main())
