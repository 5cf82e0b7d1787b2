"""Columns of the reader as NumPy arrays and pandas objects."""

import pandas as pd

_NULLABLE_INTEGERS = {
    "int8": pd.Int8Dtype, "int16": pd.Int16Dtype, "int32": pd.Int32Dtype, "int64": pd.Int64Dtype,
    "uint8": pd.UInt8Dtype, "uint16": pd.UInt16Dtype, "uint32": pd.UInt32Dtype, "uint64": pd.UInt64Dtype,
}


def arrays(native):
    """name -> (values, mask or None), mask True where a value is missing."""
    out = {}
    for i, name in enumerate(native.column_names):
        _, values, mask, _ = native.column(i)
        out[name] = (values, mask)
    return out


def series(kind, values, mask, timezone, name):
    if kind in _NULLABLE_INTEGERS and mask is not None:
        values = pd.arrays.IntegerArray(values, mask)
    elif kind == "bool" and mask is not None:
        values = pd.arrays.BooleanArray(values, mask)
    elif kind == "datetime" and timezone == "UTC":
        values = pd.DatetimeIndex(values).tz_localize("UTC")
    return pd.Series(values, name=name, copy=False)


def to_pandas(native):
    names = native.column_names
    if not names:
        return pd.DataFrame(index=pd.RangeIndex(native.num_rows))
    columns = [series(*native.column(i), name) for i, name in enumerate(names)]
    # concat keeps each column's array as it is (no consolidation into one
    # block, so shared reader buffers stay shared) and allows repeated names.
    return pd.concat(columns, axis=1, copy=False)
