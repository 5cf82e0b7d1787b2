import re

import pandas as pd
import pytest

import zvtextparser as zv
from conftest import DATA

dd = pytest.importorskip("dask.dataframe")
distributed = pytest.importorskip("distributed")
zd = pytest.importorskip("zvtextparser.dask")

BLOCK = 100


@pytest.fixture(scope="module")
def files(tmp_path_factory):
    """Two files of the records of a real file with quoted line breaks, over
    and over, so that block boundaries fall inside quoted fields."""
    head, body = (DATA / "npm-csv-suite__newlines.csv").read_bytes().split(b"\n", 1)
    folder = tmp_path_factory.mktemp("parts")
    paths = []
    for n, repeat in enumerate((40, 25)):
        path = folder / ("part%d.csv" % n)
        path.write_bytes(head + b"\n" + body * repeat)
        paths.append(path)
    text = paths[0].read_bytes()
    quoted = [m.span() for m in re.finditer(rb'"[^"]*"', text)]
    crossing = [b for b in range(BLOCK, len(text), BLOCK) if any(s < b < e for s, e in quoted)]
    assert crossing, "no block boundary falls inside a quoted field"
    return paths


@pytest.fixture(scope="module")
def client():
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
        with distributed.Client(cluster) as c:
            yield c


@pytest.mark.parametrize("blocksize", [BLOCK, None])
def test_partitions_on_a_cluster_equal_one_read(files, client, blocksize):
    frame = zd.read_table([str(p) for p in files], blocksize=blocksize)
    if blocksize:
        assert frame.npartitions > 2 * len(files)
    assert frame.dtypes.tolist() == frame._meta.dtypes.tolist()
    got = client.compute(frame).result().reset_index(drop=True)
    expected = pd.concat([zv.read_table(p) for p in files], ignore_index=True)
    pd.testing.assert_frame_equal(got, expected)
    assert got["a"].str.contains("\n").sum() == 65


def test_globs_types_and_missing_files(files, client):
    frame = zd.read_table(str(files[0].parent / "part*.csv"), blocksize=BLOCK, types={"b": "int64"})
    assert str(frame.dtypes["b"]) == "Int64"
    got = client.compute(frame).result()
    assert len(got) == 3 * 65 and got["b"].sum() == 65 * 15
    with pytest.raises(FileNotFoundError):
        zd.read_table(str(files[0].parent / "none*.csv"))
    with pytest.raises(zv.OptionError):
        zd.read_table(str(files[0]), num_hedaer_lines=1)
