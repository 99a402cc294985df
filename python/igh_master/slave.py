"""Slaves and the entries of their process data."""
from __future__ import annotations

import struct
from ctypes import byref, c_double, c_uint32
from typing import TYPE_CHECKING, Any, Dict, Optional, Tuple, Union, overload

from .types import EthercatError, Slots

if TYPE_CHECKING:
    from .master import Master

# A NaN that no bus is likely to carry: what is still there after a read was never converted.
_UNTOUCHED = struct.pack("<Q", 0x7FF8_16B5_3A5E_0B0B)


class Entry:
    """One entry of a slave in one direction. Values are those of the description's type, as float."""

    def __init__(self, slave: Slave, name: str, writes: bool) -> None:
        self.slave, self.name, self.writes = slave, name, writes
        self._master = slave.master
        self._sent = 0.0
        handle = c_uint32()
        arguments = (slave.position, name.encode())
        lacks = f"{self}: the description has no such entry"
        self._master._set_up("create_pdo_info", *arguments, True, byref(handle), hint=lacks)
        self._handle = handle.value
        untouched = c_double.from_buffer_copy(_UNTOUCHED)
        self._master._in_cycle("pdo_recv", self._handle, byref(untouched))
        converted = bytes(untouched) != _UNTOUCHED
        if converted and writes:
            self._master._set_up("create_pdo_info", *arguments, False, byref(handle))
        if writes or not converted:
            self._master._set_up("destroy_pdo_info", self._handle, True)
        if not converted:
            raise EthercatError(f"{self}: its type has no conversion, it would move nothing")
        self._made_at = self._master.inputs_received

    def __str__(self) -> str:
        return f"slave {self.slave.position}, entry '{self.name}'"

    @property
    def fresh(self) -> bool:
        """An exchange in SAFEOP or OP has brought this input since the entry was made."""
        return self._master.inputs_received > self._made_at

    @property
    def value(self) -> float:
        """Of an input what the last exchange received, of an output what was set last (0 at first)."""
        self.slave._check()
        if self.writes:
            return self._sent
        if not self.fresh:
            raise EthercatError(f"{self}: no exchange in SAFEOP or OP has brought it yet")
        value = c_double()
        if not self._master._in_cycle("pdo_recv", self._handle, byref(value)):
            raise EthercatError(f"{self}: the handle is void")
        return value.value

    @value.setter
    def value(self, value: float) -> None:
        """Leaves with the next exchange; rounded, and wrapped to the width of the entry's type."""
        self.slave._check()
        if not self.writes:
            raise EthercatError(f"{self}: an input cannot be set")
        if not self._master._in_cycle("pdo_send", self._handle, float(value)):
            raise EthercatError(f"{self}: the handle is void")
        self._sent = float(value)


class Slave:
    """A slave of the last scan, by its position on the bus.

    Entries go by their names in the description: `slave["Target position"] = 5` makes an output of it, and
    `slave["Position actual value"]` reads. An entry that this object has set gives what was set. Or as properties:

        class Axis(Slave):
            target = Output("Target position")
            actual = Input("Position actual value")

        axis = Axis(m, 5)
        axis.target = axis.actual + 100
    """

    def __init__(self, master: Master, position: int) -> None:
        self.master, self.position = master, position
        self._scan = master.scans
        self._entries: Dict[Tuple[str, bool], Entry] = {}
        self.product_code = self._number("get_slave_product_code")
        self.revision = self._number("get_slave_revision_code")
        for kind in reversed(type(self).__mro__):
            for face in vars(kind).values():
                if isinstance(face, Input):
                    self.entry(face.name, face.writes)

    def _number(self, name: str) -> int:
        number = c_uint32()
        self.master._set_up(name, self.position, byref(number), hint=f"there is no slave {self.position}")
        return number.value

    def _check(self) -> None:
        if self._scan != self.master.scans:
            raise EthercatError(f"slave {self.position}: void since the bus was scanned again")

    def __repr__(self) -> str:
        return f"<Slave {self.position}: product 0x{self.product_code:08X}, revision 0x{self.revision:08X}>"

    @property
    def slots(self) -> Slots:
        return Slots(self._number("get_slot_number"), self._number("get_slot_index_increment"),
                     self._number("get_slot_pdo_increment"))

    def entry(self, name: str, writes: bool = False) -> Entry:
        """The handle of an entry, made at the first call: an input, or with `writes` an output."""
        self._check()
        if (name, writes) not in self._entries:
            self._entries[name, writes] = Entry(self, name, writes)
        return self._entries[name, writes]

    def __getitem__(self, name: str) -> float:
        entry = self._entries.get((name, True)) or self.entry(name)
        if not entry.writes and not entry.fresh and self.master.may_cycle:
            self.master.cycle(2)  # the first value of an entry comes with the exchange behind its making
        return entry.value

    def __setitem__(self, name: str, value: float) -> None:
        self.entry(name, True).value = value

    def sdo_read(self, index: int, sub: int, *arguments: Any, **options: Any) -> Any:
        """Master.sdo_read of this slave."""
        return self.master.sdo_read(self.position, index, sub, *arguments, **options)

    def sdo_write(self, index: int, sub: int, *arguments: Any, **options: Any) -> None:
        """Master.sdo_write of this slave."""
        self.master.sdo_write(self.position, index, sub, *arguments, **options)


class Input:
    """An entry of a Slave class that is read."""
    writes = False

    def __init__(self, name: str) -> None:
        self.name = name

    @overload
    def __get__(self, slave: None, owner: type) -> Input: ...
    @overload
    def __get__(self, slave: Slave, owner: type) -> float: ...

    def __get__(self, slave: Optional[Slave], owner: type) -> Union[Input, float]:
        return self if slave is None else slave.entry(self.name, self.writes).value

    def __set__(self, slave: Slave, value: float) -> None:
        slave.entry(self.name, self.writes).value = value


class Output(Input):
    """An entry of a Slave class that is set; reading it gives what was set last."""
    writes = True
