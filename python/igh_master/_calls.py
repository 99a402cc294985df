"""Calls of the library for one master, and what all masters of the process have in common."""
from __future__ import annotations

import atexit
import contextlib
import os
import threading
from typing import TYPE_CHECKING, Any, Callable, Dict, Iterator, List, Optional

from ._library import library
from ._output import Printed, captured, log, logger, streams
from .cycling import Cycling
from .types import EthercatError

if TYPE_CHECKING:
    from .slave import Slave

_open: Dict[int, Calls] = {}


class Calls:
    """A master of the library from open_master() to close()."""

    def __init__(self, id: int, period: float, exchange: Callable[[], None]) -> None:
        self.id, self.period = id, period
        self.closed = False
        self.lock = threading.RLock()  # held by whoever uses the library for this master
        self.scans = 0
        self._library = library()
        self._active = False
        self._slaves: List[Slave] = []
        self._exchanging: Optional[int] = None  # the thread that does
        self._cycling = Cycling(exchange, period)
        self._end = "is closed"

    def _open_master(self, distributed_clocks: bool, follow_reference: bool) -> Printed:
        if self.id in _open:
            raise EthercatError(f"master {self.id} is open already in this process: close() it first")
        with _alone():
            printed = self._set_up("initialize_ex", min(round(self.period * 1e9), 0xFFFFFFFF), distributed_clocks,
                                   follow_reference)
            _open[self.id] = self
        return printed

    def close(self) -> None:
        """Deactivates and releases the master. SDO transfers under way are first cycled to their end."""
        if self.closed:
            return
        self._check_call()
        try:
            self.stop()
        finally:
            with _alone():
                self._set_up("uninitialize")
                self._ended()

    def _ended(self) -> None:
        self.closed, self._active = True, False
        _open.pop(self.id, None)

    def start(self) -> None:
        """Cycles in the background from now on. After a callback has raised, the bus is not cycled any more."""
        self._check_call()
        self._cycling.start()

    def stop(self) -> None:
        """Ends start(), and raises what has ended it before."""
        self._check_outside()
        self._cycling.stop()

    def _set_up(self, name: str, *arguments: Any, hint: str = "") -> Printed:
        """A call that may print. A result of 0 raises: the library's words, else the hint."""
        self._check_call()
        with captured() as printed, self.lock:
            result = getattr(self._library, "igh_master_" + name)(self.id, *arguments)
        if result is False:
            said = "\n".join(filter(None, (printed.err, "" if name == "scan" else printed.out)))
            raise EthercatError(": ".join(filter(None, (hint, said))) or f"igh_master_{name} failed")
        if name != "scan":
            log(printed)
        return printed

    def _in_cycle(self, name: str, *arguments: Any) -> bool:
        self._check_open()
        with self.lock:
            return bool(getattr(self._library, "igh_master_" + name)(self.id, *arguments))

    def _until(self, done: Callable[[], bool], timeout: Optional[float]) -> bool:
        self._check_call()
        if not self._active:
            raise EthercatError(f"master {self.id} is not active, nothing moves on the bus")
        return self._cycling.until(done, timeout)

    def _check_call(self) -> None:
        self._check_open()
        self._check_outside()

    def _check_open(self) -> None:
        if self.closed:
            raise EthercatError(f"master {self.id} {self._end}")

    def _check_outside(self) -> None:
        if self._exchanging == threading.get_ident():
            raise EthercatError("this may not be called from inside an exchange")


@contextlib.contextmanager
def _alone() -> Iterator[None]:
    """Creating and destroying masters must not overlap a call for any of them."""
    with streams, contextlib.ExitStack() as stack:
        for _, master in sorted(_open.items()):
            stack.enter_context(master.lock)
        yield


@atexit.register
def close_all() -> None:
    for master in list(_open.values()):
        try:
            master.close()
        except Exception as error:  # pylint: disable=broad-except
            logger.warning("%s", error)


# A child of fork() shares the reservation with its parent: what it closed would be closed for both, and a lock
# that another thread held would stay taken.
_forking = contextlib.ExitStack()


def _before_fork() -> None:
    if not any(master._exchanging == threading.get_ident() for master in _open.values()):
        _forking.enter_context(_alone())


def _in_child() -> None:
    _forking.close()
    for master in list(_open.values()):
        master._end = "belongs to the process that opened it"
        master._ended()


os.register_at_fork(before=_before_fork, after_in_parent=_forking.close, after_in_child=_in_child)
