import os
import pathlib

import pytest

DATA = pathlib.Path(os.environ.get("ZVTP_TEST_DATA", pathlib.Path(__file__).parents[2] / "tests" / "data" / "detect"))


@pytest.fixture
def data():
    return DATA
