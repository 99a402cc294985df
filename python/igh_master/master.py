"""A master: one bus."""
from __future__ import annotations

import atexit
import collections
import contextlib
import os
import threading
from ctypes import POINTER, byref, c_int32, c_uint8, c_uint32, c_uint64, cast, create_string_buffer
from typing import Any, Callable, Counter, Dict, Iterator, List, Optional, Set, Tuple, Union

from ._library import WHOLE_MASTER, DiagInfo, ErrorCallback, ExchangeCallback, library
from ._output import Printed, captured, log, logger, streams
from .cycling import Cycling
from .sdo import SdoRequest, Value
from .slave import Slave
from .types import AlState, BusError, ErrorCode, EthercatError, Timing, Timings, Type

PathLike = Union[str, "os.PathLike[str]"]
_open: Dict[int, Master] = {}


class Master:
    """The master `id`, which is the index of the IgH master, with `period` seconds between two exchanges.

    distributed_clocks  use them where a description has an operation mode named "DC"
    follow_reference    the master's time follows the reference clock of the bus, instead of setting it
    exchange_mode       an exchange sends and waits for its own frame, instead of taking that of the one before

    As a context manager, or with close(), it deactivates the bus in the end. One bus may be cycled by one thread: the
    caller's, with exchange(), cycle() and whatever waits, or one in the background between start() and stop(). All
    methods may be called beside the latter; those that are no more than a look or a value also from callbacks.
    """

    def __init__(self, id: int = 0, period: float = 1e-3, *, distributed_clocks: bool = True,
                 follow_reference: bool = False, exchange_mode: bool = False) -> None:
        if id in _open:
            raise EthercatError(f"master {id} is open already in this process: close() it first")
        self.id, self.period, self.exchange_mode = id, period, exchange_mode
        self.closed = False
        self.listing = ""  # the configuration that the last scan printed, as source-like tables
        self.lock = threading.RLock()  # held by whoever uses the library for this master
        self.scans = 0
        self.inputs_received = 0  # exchanges that brought inputs, since the beginning
        self.errors: Counter[BusError] = collections.Counter()
        self.on_error: Optional[Callable[[BusError], None]] = None
        self._library = library()
        self._active = self._configured = False
        self._exchanging: Optional[int] = None  # the thread that does
        self._callback: Optional[Callable[[], None]] = None
        self._raised: Optional[BaseException] = None
        self._slaves: List[Slave] = []
        self._requests: Set[SdoRequest] = set()  # the library may write to their buffers
        self._used: Dict[Tuple[int, int, int, bool], SdoRequest] = {}  # by sdo_read and sdo_write
        self._reservation = ""
        self._cycling = Cycling(self.exchange, period)
        # Kept for as long as the library may call them.
        self._error_callback = ErrorCallback(self._take_error)
        self._exchange_callback = ExchangeCallback(self._take_exchange)
        with _alone():
            printed = self._set_up("initialize_ex", min(round(period * 1e9), 0xFFFFFFFF), distributed_clocks, follow_reference)
            self._reservation = printed.err
            _open[id] = self
        self._set_up("set_error_callback", self._error_callback, None)
        self._set_up("set_exchange_mode", exchange_mode)

    def __enter__(self) -> Master:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

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
                self.closed = True
                _open.pop(self.id, None)
                self._requests.clear()

    # ---- Calls

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
        if self.closed:
            raise EthercatError(f"master {self.id} is closed")
        with self.lock:
            return bool(getattr(self._library, "igh_master_" + name)(self.id, *arguments))

    def _check_call(self) -> None:
        if self.closed:
            raise EthercatError(f"master {self.id} is closed")
        if self._exchanging == threading.get_ident():
            raise EthercatError("this may not be called from inside an exchange")

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
            self._requests.clear()
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
        return self._slaves[position]

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

    def start(self) -> None:
        """Cycles in the background from now on. After a callback has raised, the bus is not cycled any more."""
        self._cycling.start()

    def stop(self) -> None:
        """Ends start(), and raises what has ended it before."""
        self._cycling.stop()

    @property
    def may_cycle(self) -> bool:
        """The master is active, and the caller is not inside an exchange."""
        return self._active and self._exchanging != threading.get_ident()

    def _until(self, done: Callable[[], bool], timeout: Optional[float]) -> bool:
        self._check_call()
        if not self._active:
            raise EthercatError(f"master {self.id} is not active, nothing moves on the bus")
        return self._cycling.until(done, timeout)

    def wait_for(self, state: AlState = AlState.OP, timeout: float = 20.0) -> None:
        """Cycles until all slaves are in this state; at most `timeout` seconds."""
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

    # ---- Objects

    def sdo_request(self, slave: int, index: int, sub: int = 0, type: Type = Type.RAW, count: int = 1,
                    complete: bool = False) -> SdoRequest:
        """A request for an object: `count` elements of `type`, of Type.RAW bytes; `complete` for the whole object."""
        return SdoRequest(self, slave, index, sub, type, count, complete)

    def _request(self, place: Tuple[int, int, int, bool], type: Type, count: int) -> SdoRequest:
        """One for each object, because the IgH master keeps what it has made until the deactivation."""
        request = self._used.get(place)
        if request is None or not request.valid or request.layout != (type, count):
            if request is not None:
                request.close()
            request = self._used[place] = SdoRequest(self, *place[:3], type, count, place[3])
        return request

    def sdo_read(self, slave: int, index: int, sub: int = 0, type: Type = Type.RAW, count: int = 1, *,
                 complete: bool = False, timeout: float = 2.0) -> Any:
        """Reads an object of a slave, cycling meanwhile: a number, a list of `count`, or of Type.RAW `count` bytes."""
        return self._request((slave, index, sub, complete), type, count).read(timeout)

    def sdo_write(self, slave: int, index: int, sub: int, value: Value, type: Type = Type.RAW, *,
                  complete: bool = False, timeout: float = 2.0) -> None:
        """Writes bytes, a number or several to an object of a slave, cycling meanwhile."""
        count = len(value) if not isinstance(value, (int, float)) else 1
        self._request((slave, index, sub, complete), type, count).write(value, timeout)

    # ---- Registers. Without start() an active bus is cycled meanwhile, because the calls wait for that.

    def _blocking(self, name: str, *arguments: Any) -> Printed:
        self._check_call()
        call = getattr(self._library, "igh_master_" + name)
        with captured() as printed:
            done = (lambda: call(self.id, *arguments))
            result = self._cycling.beside(done) if self._active else done()
        if printed.err or not result:
            raise EthercatError(printed.err or f"the device file of master {self.id} is not open")
        return printed

    def register_read(self, slave: int, address: int, size: int = 1) -> bytes:
        """`size` bytes of the ESC registers from `address` on."""
        for fill in (b"\x55", b"\xAA"):  # the library leaves the buffer alone when it has no device file
            data = create_string_buffer(fill * size, size)
            self._blocking("read_esc_reg", slave, address, cast(data, POINTER(c_uint8)), size)
            if data.raw != fill * size:
                return data.raw
        raise EthercatError(f"the device file of master {self.id} is not open")

    def register_clear(self, slave: int, address: int, size: int = 1) -> None:
        """Writes zeros: the library can write nothing else."""
        data = create_string_buffer(size)
        if not self._blocking("write_esc_reg", slave, address, cast(data, POINTER(c_uint8)), size).out:
            raise EthercatError(f"the device file of master {self.id} is not open")

    def clear_error_counters(self, slave: Optional[int] = None) -> None:
        """Clears registers 0x0300 to 0x0313 of one slave, or of all."""
        for position in range(len(self)) if slave is None else [slave]:
            self._blocking("clear_esc_error_regs", position)

    def request_state(self, slave: int, state: int) -> None:
        """Asks one slave for an AL state (3 is BOOT), and does not wait for it."""
        self._blocking("request_esc_state", slave, state)


@contextlib.contextmanager
def _alone() -> Iterator[None]:
    """Creating and destroying masters must not overlap a call for any of them."""
    with streams, contextlib.ExitStack() as stack:
        for _, master in sorted(_open.items()):
            stack.enter_context(master.lock)
        yield


@atexit.register
def _close_all() -> None:
    for master in list(_open.values()):
        try:
            master.close()
        except Exception as error:  # pylint: disable=broad-except
            logger.warning("%s", error)
