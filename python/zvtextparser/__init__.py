"""zvtextparser: text tables read into pandas, NumPy and Arrow consumers.

Every call takes the source and the reading choices of the tool: option keys
as keyword arguments, in snake_case (``num_header_lines=2``) or spelled as
the tool spells them (``**{"NumHeaderLines": 2}``). An option given is never
changed by detection.
"""

import io
import json
import os
import re
import stat

from . import _zvtextparser
from ._errors import InputError, OptionError, ReadError
from . import _frames

__all__ = ["read", "read_table", "read_arrays", "detect", "Table", "OptionError", "ReadError", "InputError"]


def _snake(key):
    return re.sub(r"(?<!^)(?=[A-Z])", "_", key).lower()


# snake_case name -> the option table's key (NumHeaderLines: num_header_lines).
_KEYS = {_snake(key): key for key in _zvtextparser.option_keys()}


def _json_value(value):
    if hasattr(value, "item") and callable(value.item) and getattr(value, "ndim", None) == 0:
        value = value.item()  # a NumPy scalar
    if isinstance(value, tuple):
        value = list(value)
    return json.dumps(value, ensure_ascii=False)


def _option_pairs(options):
    pairs = []
    for name, value in options.items():
        pairs.append(_KEYS.get(name, name))
        pairs.append(_json_value(value))
    return pairs


def _source(source):
    """(source for the module, name for messages, object to keep alive)."""
    if isinstance(source, (bytes, bytearray, memoryview)):
        view = memoryview(source)
        if not view.c_contiguous:
            raise ValueError("a memory source must be contiguous")
        return view.cast("B") if view.ndim != 1 or view.format != "B" else view, "memory"
    if isinstance(source, (str, os.PathLike)):
        path = os.fspath(source)
        return (os.fsdecode(path) if isinstance(path, bytes) else path), None
    if hasattr(source, "read"):
        name = getattr(source, "name", None)
        name = name if isinstance(name, str) else "file object"
        try:
            fd = source.fileno()
            regular = stat.S_ISREG(os.fstat(fd).st_mode) and source.tell() == 0
        except (AttributeError, OSError, ValueError, io.UnsupportedOperation):
            regular = False
        if regular:
            # A buffered file may have read ahead: the reader starts at byte 0.
            os.lseek(fd, 0, os.SEEK_SET)
            return fd, name
        data = source.read()
        if isinstance(data, str):
            raise TypeError("the file object must be opened in binary mode ('rb')")
        return memoryview(data), name
    raise TypeError("source must be a path, bytes-like or a binary file object, not " + type(source).__name__)


def _call(function, source, types, detect, threads, encoding, quote, escape, table_end, all_lines,
          variable_names, options):
    target, name = _source(source)
    if types is not None and not isinstance(types, dict):
        types = list(types)
    return function(
        target, name if name is not None else target, _option_pairs(options), bool(detect),
        threads, encoding, quote, escape, table_end, bool(all_lines),
        list(variable_names) if variable_names is not None else [], types)


class Table:
    """A table as the reader read it, in Arrow's columnar layout.

    It implements the Arrow PyCapsule interface (__arrow_c_schema__,
    __arrow_c_stream__): Arrow consumers take its buffers without a copy.
    """

    __slots__ = ("_native",)

    def __init__(self, native):
        self._native = native

    @property
    def num_rows(self):
        return self._native.num_rows

    @property
    def column_names(self):
        return self._native.column_names

    @property
    def types(self):
        """The type each variable was read as ("double", "datetime", ...)."""
        return self._native.types

    @property
    def lines_left_unread(self):
        """Lines after a detected or given table end that were not read."""
        return self._native.lines_left_unread

    def to_pandas(self):
        return _frames.to_pandas(self._native)

    def to_arrays(self):
        return _frames.arrays(self._native)

    def __arrow_c_schema__(self):
        return self._native.__arrow_c_schema__()

    def __arrow_c_stream__(self, requested_schema=None):
        return self._native.__arrow_c_stream__(requested_schema)

    def __repr__(self):
        return "zvtextparser.Table(%d rows, columns %r)" % (self.num_rows, self.column_names)


def read(source, *, types=None, detect=True, threads=None, encoding=None, quote=None, escape=None,
         table_end=None, all_lines=False, variable_names=None, **options):
    """Reads `source` into a Table.

    source: a path (str or os.PathLike), bytes-like data, or a binary file
    object. types: a list of type names by position (None: detected) or a
    dict by variable name. detect: fill in what the options leave open from
    the start of the input. threads: threads to read with (default every
    core). encoding, quote (a character or "none"), escape ("double" or
    "backslash"): forced, never detected. table_end: stop before this line;
    all_lines: read past a detected or given table end. variable_names:
    names instead of those of the header. options: option keys.
    """
    return Table(_call(_zvtextparser.read, source, types, detect, threads, encoding, quote, escape, table_end,
                       all_lines, variable_names, options))


def read_table(source, **kwargs):
    """Reads `source` into a pandas.DataFrame (arguments as read)."""
    return read(source, **kwargs).to_pandas()


def read_arrays(source, **kwargs):
    """Reads `source` into {name: (values, mask)}: NumPy arrays, the mask True
    where a value is missing, or None when none is (arguments as read)."""
    return read(source, **kwargs).to_arrays()


def detect(source, *, detect=True, encoding=None, quote=None, escape=None, **options):
    """What `zvtextparser detect` prints for `source`: {"options": the record
    after detection, "detected": encoding, quote, escape, variable names and
    types, missing markers, table end, confidence and reasons, "arguments":
    the tool's arguments that read the same without detection}."""
    text = _call(_zvtextparser.detect, source, None, detect, None, encoding, quote, escape, None, False, None,
                 options)
    return json.loads(text.decode("utf-8", "replace"))
