"""Text tables as dask DataFrames: many files, and large files in parts.

Detection and types are settled once, from the first file; every file is
then read with the same options, format and types. A file is cut into parts
of about `blocksize` bytes at record starts (a quoted field with line breaks
that crosses a cut belongs to the part where its record starts); finding
those starts reads each file once on the calling process. Each part is one
partition, read on a worker.
"""

import glob
import json
import os

import dask.dataframe as dd
import pandas as pd
from dask.utils import parse_bytes

from . import _frames, _zvtextparser
from . import _option_pairs

__all__ = ["read_table"]

# Partitions differ in which values are missing; their dtypes must not.
_STEADY = {"int8": "Int8", "int16": "Int16", "int32": "Int32", "int64": "Int64", "uint8": "UInt8",
           "uint16": "UInt16", "uint32": "UInt32", "uint64": "UInt64", "bool": "boolean"}

# Bytes read for the frame's dtypes (the first records of the first file).
_META_BYTES = 1 << 16


def _paths(paths):
    if isinstance(paths, (str, os.PathLike)):
        paths = [paths]
    files = []
    for p in paths:
        p = os.fsdecode(os.fspath(p))
        matched = sorted(glob.glob(p)) if glob.has_magic(p) else [p]
        if not matched:
            raise FileNotFoundError("no file matches '%s'" % p)
        files.extend(matched)
    if not files:
        raise ValueError("no files to read")
    return files


def _types_json(types):
    if types is None:
        return None
    if isinstance(types, dict):
        return json.dumps(types)
    return json.dumps(["auto" if t is None else t for t in types])


def _steady(frame):
    """Integers and logicals as nullable dtypes, whether or not a value is missing."""
    for name, dtype in frame.dtypes.items():
        steady = _STEADY.get(str(dtype).lower())
        if steady and str(dtype) != steady:
            frame[name] = frame[name].astype(steady)
    return frame


def _conform(frame, meta):
    if len(frame.columns) != len(meta.columns):
        raise ValueError("a part has %d columns where the first file has %d" % (len(frame.columns),
                                                                                 len(meta.columns)))
    frame.columns = meta.columns
    out = {}
    for i, (name, dtype) in enumerate(meta.dtypes.items()):
        column = frame.iloc[:, i]
        if column.dtype != dtype:
            if isinstance(dtype, pd.DatetimeTZDtype) and column.dtype.kind == "M":
                column = column.dt.tz_localize("UTC")
            elif isinstance(column.dtype, pd.DatetimeTZDtype) and dtype.kind == "M":
                column = column.dt.tz_convert("UTC").dt.tz_localize(None)
            else:
                column = column.astype(dtype)
        out[i] = column
    conformed = pd.concat(out.values(), axis=1, copy=False) if out else pd.DataFrame(index=frame.index)
    conformed.columns = meta.columns
    return conformed


class _PartReader:
    """Reads one part (path, start, stop) with the plan; pickles to workers."""

    def __init__(self, plan, meta):
        self.plan = plan
        self.meta = meta

    def __call__(self, part):
        path, start, stop = part
        native = _zvtextparser.read_part(path, self.plan, start, stop)
        return _conform(_steady(_frames.to_pandas(native)), self.meta)


def read_table(paths, *, blocksize="64MiB", types=None, detect=True, encoding=None, quote=None, escape=None,
               table_end=None, all_lines=False, variable_names=None, **options):
    """Reads files (a path, a glob, or a list of them) into a dask DataFrame.

    blocksize: bytes a partition holds about (an int or "64MiB"); None: one
    partition a file. The other arguments are those of
    zvtextparser.read_table. Integer and logical columns are the nullable
    Int64 and boolean in every partition.
    """
    files = _paths(paths)
    block = 0 if blocksize is None else parse_bytes(blocksize)
    plan = _zvtextparser.plan_read(files[0], _option_pairs(options), bool(detect), encoding, quote, escape,
                                   table_end, bool(all_lines), list(variable_names or []), _types_json(types))
    parts = []
    for path in files:
        starts = _zvtextparser.part_starts(path, plan, block) if block else [(0, 1, None)]
        for i, start in enumerate(starts):
            parts.append((path, start, starts[i + 1][0] if i + 1 < len(starts) else None))
    head = _zvtextparser.read_part(files[0], plan, (0, 1, None), _META_BYTES)
    meta = _steady(_frames.to_pandas(head)).iloc[:0]
    return dd.from_map(_PartReader(plan, meta), parts, meta=meta, label="zvtextparser-read-table",
                       enforce_metadata=False)
