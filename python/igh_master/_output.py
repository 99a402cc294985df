"""What the library prints, caught at the file descriptors: it writes with C's own streams."""
import contextlib
import ctypes
import fcntl
import logging
import os
import threading
from typing import Iterator

logger = logging.getLogger("igh_master")
_libc = ctypes.CDLL(None)
streams = threading.RLock()  # there is one pair for the whole process


class Printed:
    """Standard output and error of a call, without surrounding blanks."""
    out = ""
    err = ""


def _behind_the_streams(descriptor: int) -> int:
    """A copy of it. Where a standard stream is closed, the system would hand out its number."""
    return fcntl.fcntl(descriptor, fcntl.F_DUPFD_CLOEXEC, 3)


class _Away:
    """A file descriptor that leads to memory until end(), where it is open at all."""

    def __init__(self, descriptor: int) -> None:
        self._descriptor = descriptor
        memory = os.memfd_create("igh_master")
        self._memory = _behind_the_streams(memory)
        os.close(memory)
        try:
            self._kept = _behind_the_streams(descriptor)
        except OSError:
            self._kept = -1
            return  # what is written there is lost, as ever
        os.dup2(self._memory, descriptor)

    def end(self) -> str:
        if self._kept >= 0:
            os.dup2(self._kept, self._descriptor)
            os.close(self._kept)
        with open(self._memory, "rb") as memory:
            memory.seek(0)
            return memory.read().decode(errors="replace").strip()


@contextlib.contextmanager
def captured(output: bool = True) -> Iterator[Printed]:
    """Gives the texts behind the block; without `output` those of standard error alone. One thread at a time; what
    others print meanwhile is caught as well."""
    printed = Printed()
    with streams:
        _libc.fflush(None)
        out, err = _Away(1) if output else None, _Away(2)
        try:
            yield printed
        finally:
            _libc.fflush(None)
            printed.out, printed.err = out.end() if out else "", err.end()


def log(printed: Printed) -> None:
    for line in printed.out.splitlines():
        logger.info("%s", line)
    for line in printed.err.splitlines():
        logger.warning("%s", line)
