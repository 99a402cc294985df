"""A master: one bus."""
from __future__ import annotations

import collections
import os
import threading
from ctypes import byref, c_int32, c_uint32, c_uint64
from typing import Any, Callable, Counter, Iterable, Iterator, List, Optional, Sequence, Union

from ._library import WHOLE_MASTER, DiagInfo, ErrorCallback, ExchangeCallback
from ._objects import Objects
from ._registers import Registers
from .slave import Slave
from .types import AlState, BusError, ErrorCode, EthercatError, Timing, Timings

PathLike = Union[str, "os.PathLike[str]"]


class Master(Objects, Registers):
    """The master `id`, which is the index of the IgH master, with `period` seconds between two exchanges.

    distributed_clocks  use them where a description has an operation mode named "DC"
    follow_reference    the master's time follows the reference clock of the bus, instead of setting it
    exchange_mode       an exchange sends and waits for its own frame, instead of taking that of the one before
    objects             arguments of announce() for each object that sdo_read() and sdo_write() will be used for

    As a context manager, or with close(), it deactivates the bus in the end. One bus may be cycled by one thread: the
    caller's, with exchange(), cycle() and whatever waits, or one in the background between start() and stop(). All
    methods may be called beside the latter; those that are no more than a look or a value also from callbacks.
    """

    def __init__(self, id: int = 0, period: float = 1e-3, *, distributed_clocks: bool = True,
                 follow_reference: bool = False, exchange_mode: bool = False,
                 objects: Iterable[Sequence[Any]] = ()) -> None:
        super().__init__(id, period, self.exchange)
        self.exchange_mode = exchange_mode
        self.listing = ""  # the configuration that the last scan printed, as source-like tables
        self.inputs_received = 0  # exchanges that brought inputs, since the beginning
        self.errors: Counter[BusError] = collections.Counter()
        self.on_error: Optional[Callable[[BusError], None]] = None
        self._configured = False
        self._callback: Optional[Callable[[], None]] = None
        self._raised: Optional[BaseException] = None
        # Kept for as long as the library may call them.
        self._error_callback = ErrorCallback(self._take_error)
        self._exchange_callback = ExchangeCallback(self._take_exchange)
        self._reservation = self._open_master(distributed_clocks, follow_reference).err
        try:
            self._set_up("set_error_callback", self._error_callback, None)
            self._set_up("set_exchange_mode", exchange_mode)
            for each in objects:
                self.announce(*each)
        except BaseException:
            self.close()  # the caller gets nothing that could be closed
            raise

    def __enter__(self) -> Master:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    # ---- Bus

    def load(self, *paths: PathLike) -> None:
        """Loads device-description files; before scan()."""
        for path in paths:
            self._set_up("append_eni", os.fsencode(path), hint=os.fspath(path))

    def scan(self) -> List[Slave]:
        """The slaves on the bus, matched to their descriptions. Slaves, entries and requests of before are void."""
        hint = self._reservation or f"no slaves on the bus, or no IgH master {self.id}"
        self._check_call()
        self.scans += 1
        self._slaves, self._configured = [], False
        count = c_uint32()
        try:
            self.listing = self._set_up("scan", byref(count), hint=hint).out
        finally:
            self._forget_requests()
        self._slaves = [Slave(self, position) for position in range(count.value)]
        return list(self._slaves)

    def configure(self, slave: Optional[int] = None) -> None:
        """Hands the layout of one slave, or of all, to the master."""
        if slave is None:
            self._set_up("config_all_slave")
            self._configured = True
        else:
            self._set_up("config_slave", slave, hint=f"there is no slave {slave}")

    def activate(self) -> None:
        """Configures what scan() found, unless configure() has, and activates; cycling then takes the bus to OP."""
        if not self._configured and self._slaves:
            self.configure()
        if self._slaves:
            self._make_announced()
        self._active = False
        self._set_up("active", hint=f"master {self.id} was not activated" + ("" if self._slaves else ": scan() first"))
        self._active = True

    def bring_up(self, *paths: PathLike, timeout: float = 20.0) -> List[Slave]:
        """Loads, scans, activates, and cycles until all slaves are in OP; at most `timeout` seconds of that."""
        self.load(*paths)
        slaves = self.scan()
        self.activate()
        self.wait_for(AlState.OP, timeout)
        return slaves

    def __getitem__(self, position: int) -> Slave:
        try:
            return self._slaves[position]
        except IndexError:
            found = f"the scan found {len(self)}" if self.scans else "scan() first"
            raise IndexError(f"there is no slave {position}: {found}") from None

    def __len__(self) -> int:
        return len(self._slaves)

    def __iter__(self) -> Iterator[Slave]:
        return iter(self._slaves)

    # ---- Cycle

    def exchange(self, callback: Optional[Callable[[], None]] = None) -> None:
        """One cycle, in SAFEOP and OP with `callback` between inputs and outputs. What a callback raises comes out."""
        self._check_call()
        with self.lock:
            if self.terminated:
                raise EthercatError(f"master {self.id}: its end was requested")
            self._callback, self._exchanging = callback, threading.get_ident()
            try:
                self._library.igh_master_exchange(self.id, self._exchange_callback, None)
            finally:
                self._callback = self._exchanging = None
            raised, self._raised = self._raised, None
        if raised is not None:
            raise raised

    def _take_exchange(self, _: object) -> None:
        self.inputs_received += 1
        if self._callback is not None:
            self._guarded(self._callback)

    def _take_error(self, _id: int, slave: int, code: int, _: object) -> None:
        error = BusError(None if slave == WHOLE_MASTER else slave, ErrorCode(code))
        self.errors[error] += 1
        if self.on_error is not None:
            self._guarded(self.on_error, error)

    def _guarded(self, callback: Callable[..., None], *arguments: Any) -> None:
        try:
            callback(*arguments)
        except BaseException as raised:  # pylint: disable=broad-except
            self._raised = self._raised or raised

    def cycle(self, count: int = 1) -> None:
        """`count` exchanges, a period apart; beside start() as many periods of waiting."""
        left = iter(range(count))
        self._until(lambda: next(left, None) is None, None)

    @property
    def may_cycle(self) -> bool:
        """The master is active, and the caller is not inside an exchange."""
        return self._active and self._exchanging != threading.get_ident()

    def wait_for(self, state: AlState = AlState.OP, timeout: float = 20.0) -> None:
        """Cycles until all slaves are in this state; at most `timeout` seconds."""
        state = AlState(state)
        if not self._until(lambda: self.state == state, timeout):
            raise EthercatError(f"the bus is in {self.state!r}, not in {state!r}, after {timeout:g} s")

    @property
    def state(self) -> AlState:
        """AL states of all slaves, ORed, up to 0.4 s old."""
        state = c_uint32()
        self._in_cycle("get_state", byref(state))
        return AlState(state.value)

    @property
    def last_error(self) -> ErrorCode:
        code = c_int32()
        self._in_cycle("get_last_error", byref(code))
        return ErrorCode(code.value)

    def clear_errors(self) -> None:
        """Forgets the last error and the counts in `errors`."""
        self._in_cycle("clear_error")
        self.errors.clear()

    @property
    def clock_offset_ns(self) -> int:
        """By how many ns the master's time has been moved to follow the reference clock."""
        offset = c_uint64()
        self._in_cycle("get_system_base_offset", byref(offset))
        return offset.value - (offset.value >> 63 << 64)

    @property
    def timings(self) -> Timings:
        infos = [DiagInfo() for _ in range(3)]
        for index, info in enumerate(infos):
            self._in_cycle("get_comm_diag_info", index, byref(info))
        return Timings(*(Timing(i.time, i.receive, i.sdo, i.send, i.callback, i.total) for i in infos))

    def request_terminate(self) -> None:
        """Ends cycling, from any thread or signal handler, until the next activation: exchange() raises."""
        self._library.igh_master_request_terminate(self.id)

    @property
    def terminated(self) -> bool:
        return bool(self._library.igh_master_is_request_terminate(self.id))

    def clock_debug(self, enable: bool) -> None:
        """Lets the clock controller print what it does, from inside the cycle."""
        self._set_up("set_dc_debug_enable", enable)
