"""Reads and writes of objects, beside the process data."""
from __future__ import annotations

import struct
from ctypes import byref, c_bool, c_uint32, create_string_buffer
from typing import TYPE_CHECKING, Any, Sequence, Tuple, Union

from ._output import captured, log
from .types import EthercatError, Type

if TYPE_CHECKING:
    from ._objects import Objects

Place = Tuple[int, int, int, bool]  # slave, index, subindex, complete access
Value = Union[int, float, bytes, Sequence[int], Sequence[float]]


class SdoRequest:
    """One object of a slave, to be read or written as often as one likes: `start_read()` or `start_write(value)`,
    exchange until `done`, then `value`. `read()` and `write(value)` do all of it. On an active master only of an object
    that was announced, see Master.announce().

    All users of one object must name the same size; the object is transferred as bytes and converted here, so that
    LINT and ULINT work as well. Python's own struct.error tells of a value that does not fit its type.
    """

    def __init__(self, master: Objects, slave: int, index: int, sub: int, type: Type = Type.RAW, count: int = 1,
                 complete: bool = False) -> None:
        self._place: Place = (slave, index, sub, complete)
        announces = master._announce(self._place, type, count)
        self._master, self._scan = master, master.scans
        self.layout = (type, count)
        self._text = f"slave {slave}, object 0x{index:04X}:{sub:02X}"
        self._type, self._count = type, count
        self._format = f"<{count}{type.format}"
        self._size = struct.calcsize(self._format)
        self._data = create_string_buffer(max(self._size, 1))
        self._done = c_bool(True)
        self._directions = [True, False]
        self._handle = 0
        try:
            for read in self._directions:
                self._create(read)
        except EthercatError:
            if announces:
                master._announced.pop(self._place)
            raise
        master._requests.add(self)  # the library writes to the buffers until the request is closed

    def _create(self, read: bool) -> None:
        slave, index, sub, complete = self._place
        handle = c_uint32()
        name, place = ("create_raw_sdo_request_complete", ()) if complete else ("create_raw_sdo_request", (sub,))
        self._master._set_up(name, slave, index, *place, self._size, 0, read, byref(handle),
                             hint=f"{self._text}: the master refused a request")
        self._handle = handle.value

    def __enter__(self) -> SdoRequest:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Withdraws what is pending and gives the request back."""
        directions, self._directions = self._directions, []
        if self._done.value:  # else another user of the object may keep the library at it: the buffers stay
            self._master._requests.discard(self)
        if self._scan == self._master.scans and not self._master.closed:
            for read in directions:
                self._master._set_up("destroy_sdo_request", self._handle, read)
            held = self._master._held.get(self._place)
            if held is not None and not self._done.value:
                held._let_go()

    def _let_go(self) -> None:
        """The library withdraws a transfer when its direction has no user for a moment."""
        for read in self._directions:
            self._master._set_up("destroy_sdo_request", self._handle, read)
            self._create(read)

    @property
    def valid(self) -> bool:
        """Neither closed, nor void since the bus was scanned again."""
        return bool(self._directions) and self._scan == self._master.scans

    def _start(self, name: str) -> None:
        if not self.valid:
            raise EthercatError(f"{self._text}: closed, or void since the bus was scanned again")
        self._master._set_up(name, self._handle, self._data, self._size, byref(self._done),
                             hint=f"{self._text}: a transfer is pending already")

    def start_read(self) -> None:
        self._start("raw_sdo_recv")

    def start_write(self, value: Value) -> None:
        """`value` is bytes for Type.RAW, else a number, or as many of them as `count` says."""
        values: Any = [value] if isinstance(value, (bytes, int, float)) else value
        self._data.raw = struct.pack(self._format, *values).ljust(len(self._data), b"\0")
        self._start("raw_sdo_send")

    @property
    def done(self) -> bool:
        """No transfer is pending."""
        with self._master.lock:
            return self._done.value

    @property
    def value(self) -> Any:
        """What the last read brought: bytes, a number, or a list of them."""
        if not self.done:
            raise EthercatError(f"{self._text}: the transfer is not done")
        values = struct.unpack(self._format, self._data.raw[:self._size])
        return values[0] if self._count == 1 or self._type is Type.RAW else list(values)

    def _finish(self, timeout: float) -> None:
        reached = False
        try:
            with captured(output=False) as printed:
                reached = self._master._until(lambda: self.done, timeout)
        finally:
            if not reached:
                self.close()  # or it would go on, and hold up all others
        lines = printed.err.splitlines()
        said = [line for line in lines if line.startswith("Received ")]  # of the IgH library, once for each try
        printed.err = "\n".join(line for line in lines if line not in said)  # of others, who printed meanwhile
        log(printed)
        if not reached:
            why = said[-1] if said else "a slave that refuses is asked again and again; `igh_bus sdo` tells why"
            raise EthercatError(f"{self._text}: no answer within {timeout:g} s ({why})")

    def read(self, timeout: float = 2.0) -> Any:
        """Reads, cycling meanwhile. What takes longer than `timeout` seconds is withdrawn, and the request closed."""
        self.start_read()
        self._finish(timeout)
        return self.value

    def write(self, value: Value, timeout: float = 2.0) -> None:
        """Writes, as read() reads."""
        self.start_write(value)
        self._finish(timeout)
