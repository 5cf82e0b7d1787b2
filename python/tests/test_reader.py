import ctypes
import io
import pathlib

import numpy as np
import pandas as pd
import pytest

import zvtextparser as zv
from conftest import DATA

NEWLINES = DATA / "npm-csv-suite__newlines.csv"


# (types asked for, cells of the column, dtype, values as pandas shows them)
DTYPES = [
    ("double", ["1.5", "2"], "float64", [1.5, 2.0]),
    ("double", ["1.5", ""], "float64", [1.5, np.nan]),
    ("int64", ["7", "-3"], "int64", [7, -3]),
    ("int64", ["7", ""], "Int64", [7, pd.NA]),
    ("logical", ["true", "false"], "bool", [True, False]),
    ("logical", ["true", ""], "boolean", [True, pd.NA]),
    ("datetime", ["2018-01-28", ""], "datetime64[ns]", [pd.Timestamp("2018-01-28"), pd.NaT]),
    ("datetime", ["2018-01-28T10:00:00+02:00", "2018-01-29T00:00:00Z"], "datetime64[ns, UTC]",
     [pd.Timestamp("2018-01-28T08:00Z"), pd.Timestamp("2018-01-29T00:00Z")]),
    ("duration", ["01:30:00", ""], "timedelta64[ns]", [pd.Timedelta(minutes=90), pd.NaT]),
    ("string", ["x", ""], "object", ["x", None]),
]


@pytest.mark.parametrize("type_name, cells, dtype, expected", DTYPES)
def test_dtypes(type_name, cells, dtype, expected):
    data = ("k,v\n" + "".join("%d,%s\n" % (i, c) for i, c in enumerate(cells))).encode()
    column = zv.read_table(data, types=[None, type_name])["v"]
    assert str(column.dtype) == dtype
    assert column.tolist() == expected or all(
        (pd.isna(a) and pd.isna(b)) or a == b for a, b in zip(column.tolist(), expected))
    assert len(column) == len(expected)


def test_types_by_name_and_detected():
    data = b"a,b,c\n1,2,x\n3,4,y\n"
    frame = zv.read_table(data, types={"b": "int32"})
    assert [str(t) for t in frame.dtypes] == ["float64", "int32", "object"]
    with pytest.raises(ValueError, match="unknown type 'int'"):
        zv.read_table(data, types=["int"])


class Unseekable(io.RawIOBase):
    def __init__(self, data):
        self._data = io.BytesIO(data)

    def readable(self):
        return True

    def readinto(self, buffer):
        return self._data.readinto(buffer)


def peeked(file):
    file.peek(1)  # the buffer is filled: the descriptor is past the start, tell() is 0
    return file


SOURCES = [
    ("str path", lambda p: str(p)),
    ("PathLike", lambda p: pathlib.Path(p)),
    ("bytes", lambda p: p.read_bytes()),
    ("bytearray", lambda p: bytearray(p.read_bytes())),
    ("memoryview", lambda p: memoryview(p.read_bytes())),
    ("file object", lambda p: open(p, "rb")),
    ("file object read ahead", lambda p: peeked(open(p, "rb"))),
    ("in-memory file", lambda p: io.BytesIO(p.read_bytes())),
    ("unseekable stream", lambda p: Unseekable(p.read_bytes())),
]


@pytest.mark.parametrize("kind, make", SOURCES, ids=[s[0] for s in SOURCES])
def test_every_source_reads_the_same_table(kind, make):
    source = make(NEWLINES)
    frame = zv.read_table(source)
    if hasattr(source, "close"):
        source.close()
    assert frame.columns.tolist() == ["a", "b", "c"]
    assert frame["a"].tolist() == ["1", "Once upon \na time", "7"]
    assert frame["c"].tolist() == [3.0, 6.0, 9.0]


def test_text_file_object_is_refused(tmp_path):
    path = tmp_path / "t.csv"
    path.write_text("a\n1\n")
    with open(path) as text, pytest.raises(TypeError, match="binary"):
        zv.read_table(io.StringIO("a\n1\n"))


PREAMBLE = DATA / "derived__stackloss_preamble_footnotes.csv"
DECIMAL_COMMA = DATA / "derived__longley_semicolon_decimal_comma.csv"

# (file, options given, what detection must leave as given)
SPELLINGS = [
    (PREAMBLE, {"num_header_lines": 5, "delimiter": ","}, {"num_header_lines": 5, "delimiter": [","]}),
    (PREAMBLE, {"NumHeaderLines": 5, "Delimiter": ","}, {"num_header_lines": 5, "delimiter": [","]}),
    (PREAMBLE, {"numheaderlines": 5, "delimiter": [","]}, {"num_header_lines": 5, "delimiter": [","]}),
    (DECIMAL_COMMA, {"decimal_separator": "."}, {"decimal_separator": "."}),
    (DECIMAL_COMMA, {"DecimalSeparator": "."}, {"decimal_separator": "."}),
]


@pytest.mark.parametrize("path, options, kept", SPELLINGS)
def test_option_spellings_are_kept_by_detection(path, options, kept):
    found = zv.detect(path, **options)
    for field, value in kept.items():
        assert found["options"][field] == value
    assert not [r for r in found["detected"]["reasons"] if zv._snake(r) in kept]
    if path == PREAMBLE:
        assert zv.read_table(path, **options).columns.tolist() == ["STACKLOSS", "AIRFLOW", "WATERTEMP", "ACIDCONC"]


def test_detect_gives_what_the_tool_prints():
    found = zv.detect(NEWLINES)
    assert set(found) == {"options", "detected", "arguments"}
    assert {"encoding", "quote", "escape", "variable_names", "names_generated", "variable_types", "missing_markers",
            "date_order_unsettled", "table_end_line", "confidence", "doubts", "reasons"} <= set(found["detected"])
    assert found["detected"]["variable_names"] == ["a", "b", "c"]
    assert found["detected"]["variable_types"] == ["string", "double", "double"]


# (call, exception class, identifier, arguments, text in the message)
ERRORS = [
    (lambda: zv.read_table(NEWLINES, num_hedaer_lines=1), zv.OptionError,
     "ZORVEK:textio:textio:UnknownParameter", ["num_hedaer_lines"], "Did you mean 'NumHeaderLines'?"),
    (lambda: zv.read_table(NEWLINES, missing_rule="sometimes"), zv.OptionError,
     "ZORVEK:textio:textio:BadTextFlag", None, "MissingRule"),
    (lambda: zv.read_table(NEWLINES, delimiter=5), zv.OptionError,
     "ZORVEK:textio:textio:DelimiterType", None, "Delimiter: The value of 'Delimiter'"),
    (lambda: zv.read_table(NEWLINES, delimiter=5), zv.OptionError, None, None, "Pass a str"),
    (lambda: zv.read_table(NEWLINES.with_name("no such file")), zv.InputError,
     "ZORVEK:textio:reader:CannotReadFile", None, "no such file"),
    (lambda: zv.read_table(b"a,b\n1,\n", missing_rule="error"), zv.ReadError,
     "ZORVEK:textio:reader:MissingValue", [2, 3], None),
    (lambda: zv.read_table(b"\x00\x01\x02\x03binary\x00\xff" * 40), zv.ReadError,
     "ZORVEK:textio:reader:NotText", None, None),
    (lambda: zv.read_table(NEWLINES, quote="ab"), ValueError, None, None, "quote takes one ASCII character"),
    (lambda: zv.read_table(NEWLINES, delimiter={"$class": "nothing"}), ValueError, None, None, "$class"),
    (lambda: zv.read_table(12.5), TypeError, None, None, "float"),
]


@pytest.mark.parametrize("call, cls, identifier, arguments, text", ERRORS)
def test_errors(call, cls, identifier, arguments, text):
    with pytest.raises(cls) as caught:
        call()
    error = caught.value
    if identifier is not None:
        assert error.identifier == identifier
    if isinstance(error, (zv.OptionError, zv.ReadError)):
        assert error.identifier.startswith("ZORVEK:textio:")
        assert error.message
    if arguments is not None:
        assert error.arguments == arguments
    if text is not None:
        assert text in str(error)
    if cls is zv.InputError:
        assert isinstance(error, OSError) and not isinstance(error, zv.OptionError)


def test_numbers_share_the_readers_buffer():
    table = zv.read(NEWLINES)
    first, _ = table.to_arrays()["c"]
    again, _ = table.to_arrays()["c"]
    assert np.shares_memory(first, again) and not first.flags.writeable
    frame = table.to_pandas()
    assert np.shares_memory(frame["c"].to_numpy(), first)
    del table, frame, again
    assert first.tolist() == [3.0, 6.0, 9.0]  # the array keeps the table alive

    # Several batches: concatenated once, in order, with the missing values where they were.
    rows = 150_000
    data = "n,x\n" + "".join("%d,%s\n" % (i, "" if i % 70_001 == 5 else i) for i in range(rows))
    columns = zv.read(data.encode(), types=["int64", "double"]).to_arrays()
    assert columns["n"][0].tolist() == list(range(rows)) and columns["n"][1] is None
    x, mask = columns["x"]
    assert mask.nonzero()[0].tolist() == [5, 70_006, 140_007] and np.isnan(x[mask]).all()
    assert (x[~mask] == np.arange(rows)[~mask]).all()

    # A missing value: a copy with NaN in its place.
    missing = zv.read(b"a,b\n1,2\n,4\n")
    values, mask = missing.to_arrays()["a"]
    assert not np.shares_memory(values, missing.to_arrays()["a"][0])
    assert np.isnan(values[1]) and mask.tolist() == [False, True]


# ---- the Arrow PyCapsule interface, consumed through ctypes -----------------

class ArrowSchema(ctypes.Structure):
    pass


ArrowSchema._fields_ = [
    ("format", ctypes.c_char_p), ("name", ctypes.c_char_p), ("metadata", ctypes.c_void_p),
    ("flags", ctypes.c_int64), ("n_children", ctypes.c_int64),
    ("children", ctypes.POINTER(ctypes.POINTER(ArrowSchema))), ("dictionary", ctypes.POINTER(ArrowSchema)),
    ("release", ctypes.CFUNCTYPE(None, ctypes.POINTER(ArrowSchema))), ("private_data", ctypes.c_void_p)]


class ArrowArray(ctypes.Structure):
    pass


ArrowArray._fields_ = [
    ("length", ctypes.c_int64), ("null_count", ctypes.c_int64), ("offset", ctypes.c_int64),
    ("n_buffers", ctypes.c_int64), ("n_children", ctypes.c_int64),
    ("buffers", ctypes.POINTER(ctypes.c_void_p)), ("children", ctypes.POINTER(ctypes.POINTER(ArrowArray))),
    ("dictionary", ctypes.POINTER(ArrowArray)),
    ("release", ctypes.CFUNCTYPE(None, ctypes.POINTER(ArrowArray))), ("private_data", ctypes.c_void_p)]


class ArrowArrayStream(ctypes.Structure):
    pass


ArrowArrayStream._fields_ = [
    ("get_schema", ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(ArrowArrayStream), ctypes.POINTER(ArrowSchema))),
    ("get_next", ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(ArrowArrayStream), ctypes.POINTER(ArrowArray))),
    ("get_last_error", ctypes.CFUNCTYPE(ctypes.c_char_p, ctypes.POINTER(ArrowArrayStream))),
    ("release", ctypes.CFUNCTYPE(None, ctypes.POINTER(ArrowArrayStream))), ("private_data", ctypes.c_void_p)]

_get_pointer = ctypes.pythonapi.PyCapsule_GetPointer
_get_pointer.restype = ctypes.c_void_p
_get_pointer.argtypes = [ctypes.py_object, ctypes.c_char_p]


def take(capsule, name, struct):
    """Moves the struct out of the capsule, as a consumer does."""
    pointer = ctypes.cast(_get_pointer(capsule, name), ctypes.POINTER(struct))
    moved = struct()
    ctypes.memmove(ctypes.byref(moved), pointer, ctypes.sizeof(struct))
    pointer.contents.release = type(pointer.contents.release)()  # NULL: the capsule leaves it alone
    return moved


def released(struct):
    struct.release(ctypes.byref(struct))
    return not struct.release


def test_arrow_capsules():
    table = zv.read(b"name,x,day\na,1.5,2018-01-28\nb,,2018-01-29\n")
    schema = take(table.__arrow_c_schema__(), b"arrow_schema", ArrowSchema)
    assert schema.format == b"+s" and schema.n_children == 3
    children = [schema.children[i].contents for i in range(3)]
    assert [(c.name, c.format) for c in children] == [(b"name", b"u"), (b"x", b"g"), (b"day", b"tsu:")]
    assert released(schema)

    stream = take(table.__arrow_c_stream__(), b"arrow_array_stream", ArrowArrayStream)
    schema = ArrowSchema()
    assert stream.get_schema(ctypes.byref(stream), ctypes.byref(schema)) == 0
    assert schema.n_children == 3 and released(schema)
    rows, xs, nulls = 0, [], 0
    while True:
        batch = ArrowArray()
        assert stream.get_next(ctypes.byref(stream), ctypes.byref(batch)) == 0
        if not batch.release:
            break
        assert batch.n_children == 3
        x = batch.children[1].contents
        values = ctypes.cast(x.buffers[1], ctypes.POINTER(ctypes.c_double))
        validity = ctypes.cast(x.buffers[0], ctypes.POINTER(ctypes.c_uint8))
        for i in range(x.length):
            present = not x.buffers[0] or (validity[(x.offset + i) >> 3] >> ((x.offset + i) & 7)) & 1
            xs.append(values[x.offset + i] if present else None)
        rows += batch.length
        nulls += x.null_count
        assert released(batch)
    assert (rows, xs, nulls) == (2, [1.5, None], 1)
    assert released(stream)
    # Capsules that nobody consumed release their structs themselves.
    table.__arrow_c_schema__()
    table.__arrow_c_stream__()
