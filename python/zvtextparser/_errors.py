"""The exceptions of the package: the library's and the reader's messages."""


class _MessageError:
    """What every message carries: its identifier, arguments and text."""

    def _fill(self, identifier, arguments, message, option, hint):
        self.identifier = identifier
        self.arguments = list(arguments)
        self.message = message
        self.option = option or None
        self.hint = hint or None

    def __str__(self):
        text = self.identifier + ": "
        if self.option:
            text += self.option + ": "
        text += " ".join(self.message.split())
        if self.hint:
            text += " " + self.hint
        return text


class OptionError(_MessageError, ValueError):
    """The library refused an option (identifiers ZORVEK:textio:textio:*)."""


class ReadError(_MessageError, ValueError):
    """The input could not be read as a table: its data holds an error
    (UnterminatedQuote, InvalidUtf8, NotText, ...), or it cannot be opened or
    read (then also an InputError, an OSError)."""


class InputError(ReadError, OSError):
    """The input cannot be opened or read (a missing file, an I/O error)."""


def make(kind, identifier, arguments, message, option, hint):
    cls = {"option": OptionError, "input": InputError}.get(kind, ReadError)
    error = cls(identifier)
    error._fill(identifier, arguments, message, option, hint)
    error.args = (str(error),)
    return error
