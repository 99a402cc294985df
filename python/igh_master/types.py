"""Records, numbers and the exception of the package."""
from enum import IntEnum, IntFlag
from typing import NamedTuple, Optional


class EthercatError(RuntimeError):
    """A call of the library failed; the text is the library's own where it gave one."""


class AlState(IntFlag):
    """AL states; of a whole bus those of all its slaves, ORed. 0: nobody answers, or no scan yet."""
    NONE = 0
    INIT = 1
    PREOP = 2
    SAFEOP = 4
    OP = 8


class ErrorCode(IntEnum):
    """What an exchange found wrong. None of these stops the cycle."""
    NONE = 0
    WORKING_COUNTER = 1  # a frame came back incomplete or not at all
    LINK_DOWN = 2
    SLAVE_STATE = 3  # a slave refused a state change or stopped answering
    SLAVE_ADDED = 4
    SLAVE_LOST = 5


class Type(IntEnum):
    """Types of SDO objects."""
    RAW = 0  # bytes
    SINT = 1
    USINT = 2
    INT = 3
    UINT = 4
    DINT = 5
    UDINT = 6
    LINT = 7
    ULINT = 8
    REAL = 9
    LREAL = 10

    @property
    def format(self) -> str:
        """The letter of `struct`, little endian on the wire; "s" for bytes."""
        return "sbBhHiIqQfd"[self]


class BusError(NamedTuple):
    """One problem that an exchange found; slave None: the master as a whole."""
    slave: Optional[int]
    code: ErrorCode


class Slots(NamedTuple):
    """What a description says of the module slots of its slave."""
    number: int
    index_increment: int  # of the object index, from slot to slot
    pdo_increment: int  # of the PDO index


class Timing(NamedTuple):
    """Costs of one exchange in microseconds; a phase that did not run is 0."""
    cycle: int  # since activation, from 0
    receive_us: int  # in exchange mode the whole wait for the frame
    sdo_us: int
    send_us: int  # queue, clock synchronisation, send
    callback_us: int
    total_us: int


class Timings(NamedTuple):
    """The exchange with the smallest total since activation, the latest, and the one with the largest total."""
    fastest: Timing
    last: Timing
    slowest: Timing
