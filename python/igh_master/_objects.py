"""The objects of a master's slaves: announced before activation, transferred beside the process data."""
from __future__ import annotations

import struct
from typing import Any, Dict, Set

from ._calls import Calls
from ._output import logger
from .sdo import Place, SdoRequest, Value
from .types import EthercatError, Type


class Objects(Calls):
    """Master.announce(), sdo_read() and what belongs to them."""

    def __init__(self, *arguments: Any) -> None:
        super().__init__(*arguments)
        self._requests: Set[SdoRequest] = set()  # the library may write to their buffers
        self._used: Dict[Place, SdoRequest] = {}  # by sdo_read and sdo_write
        self._announced: Dict[Place, int] = {}  # bytes
        self._held: Dict[Place, SdoRequest] = {}  # one user of each, or the library would give it up with the last one

    def _ended(self) -> None:
        super()._ended()
        self._forget_requests()

    def _forget_requests(self) -> None:
        self._requests.clear()
        self._held.clear()

    def _make_announced(self) -> None:
        missing = [item for item in self._announced.items() if item[0] not in self._held]
        if missing and self._active:
            logger.warning("master %d was scanned while it was active: its announced objects are made late, which the IgH "
                           "master does not want; close() it and open it anew where that matters", self.id)
        for place, size in missing:
            self._held[place] = SdoRequest(self, *place[:3], Type.RAW, size, place[3])

    def announce(self, slave: int, index: int, sub: int = 0, type: Type = Type.RAW, count: int = 1,
                 complete: bool = False) -> None:
        """Before activate() and bring_up(), also before scan(): an object for sdo_read(), sdo_write() and sdo_request(),
        `count` elements of `type`. The IgH master wants its requests made before activation; activate() makes them. Type
        and count of a transfer may be others of the same length. A scan() of an active master ends them, and the next
        activate() makes them late, with a warning: where that matters, close the master and open it anew."""
        self._announce((slave, index, sub, complete), Type(type), count)

    def _announce(self, place: Place, type: Type, count: int) -> bool:
        """False when it is announced already, in this length."""
        self._check_open()
        size, known = struct.calcsize(f"<{count}{type.format}"), self._announced.get(place)
        slave, index, sub, complete = place
        what = f"slave {slave}, object 0x{index:04X}:{sub:02X}"
        if known is None and self._active:
            call = f"{slave}, 0x{index:04X}, {sub}, Type.{type.name}, {count}" + (", True" if complete else "")
            raise EthercatError(f"{what}: not announced, and master {self.id} is active. close() it, and before the next "
                                f"activate() or bring_up(): m.announce({call}), or Master({self.id}, objects=[({call})])")
        if known not in (None, size):
            raise EthercatError(f"{what}: announced with {known} bytes, not {size}")
        self._announced[place] = size
        return known is None

    def sdo_request(self, slave: int, index: int, sub: int = 0, type: Type = Type.RAW, count: int = 1,
                    complete: bool = False) -> SdoRequest:
        """A request for an object: `count` elements of `type`, of Type.RAW bytes; `complete` for the whole object.
        Made before activation it announces its object."""
        return SdoRequest(self, slave, index, sub, type, count, complete)

    def _request(self, place: Place, type: Type, count: int) -> SdoRequest:
        request = self._used.get(place)
        if request is None or not request.valid or request.layout != (type, count):
            if request is not None:
                request.close()
            request = self._used[place] = SdoRequest(self, *place[:3], type, count, place[3])
        return request

    def sdo_read(self, slave: int, index: int, sub: int = 0, type: Type = Type.RAW, count: int = 1, *,
                 complete: bool = False, timeout: float = 2.0) -> Any:
        """Reads an announced object of a slave, cycling meanwhile: a number, a list of `count`, or of Type.RAW `count`
        bytes."""
        return self._request((slave, index, sub, complete), type, count).read(timeout)

    def sdo_write(self, slave: int, index: int, sub: int, value: Value, type: Type = Type.RAW, *,
                  complete: bool = False, timeout: float = 2.0) -> None:
        """Writes bytes, a number or several to an announced object of a slave, cycling meanwhile."""
        count = len(value) if not isinstance(value, (int, float)) else 1
        self._request((slave, index, sub, complete), type, count).write(value, timeout)
