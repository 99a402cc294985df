"""The simulated master, for tests and test benches: builds a bus, sets faults, looks at what the slaves received.

    from igh_master import Master, simulation

    simulation.reset()
    bus = simulation.Bus()
    bus.load("machine.json", timing="fast")
    with Master(0) as m:
        m.bring_up("machine.xml")
        bus[5].set_responding(False)         # the slave falls silent
        m.cycle(3)
        print(m.errors, bus[5].output(0x6040))

It works on the libethercat_simulation.so that the loaded libigh_master.so stands on, in this process; on a real master
everything here raises EthercatError, as everything that is refused does. For pytest there is the fixture
`simulated_bus` of igh_master.pytest_plugin. Slaves, times and faults have the keys of a bus file
(docs/simulated-master.md). Any thread may call, beside the cycle as well.
"""
from __future__ import annotations

import ctypes
import json
import os
from ctypes import c_uint64
from typing import Any, Callable, Dict, Iterator, List, Optional, Tuple, Union

from ._simulation import ObserverCallback, call, inside, raise_observed, raised_by_observers, read_bytes
from .types import AlState

__all__ = ["Bus", "Observer", "Slave", "raise_observed", "reset"]

Observer = Callable[["Bus", int], None]

_observers: Dict[Tuple[int, Observer], int] = {}  # the number of each, by master
_callbacks: List[Any] = []  # what C calls: kept until reset(), for one that removes itself still runs


def reset() -> None:
    """Ends all simulated masters: buses, faults, observers, records. A Master that is still open is dead then."""
    raised_by_observers.clear()
    call("reset")
    _observers.clear()
    _callbacks.clear()


def _given(data: bytes) -> Tuple[bytes, int]:
    """Anything that is made of bytes; of a text ctypes would take the wide characters."""
    given = memoryview(data).tobytes()
    return given, len(given)


class Slave:
    """A slave on the line of a simulated bus, by its position from 0. Entries and objects go by index and subindex."""

    def __init__(self, master: int, position: int) -> None:
        self.position = position
        self._place = (master, position)

    def __repr__(self) -> str:
        return f"<simulated slave {self.position} of master {self._place[0]}>"

    def _call(self, name: str, *arguments: Any) -> int:
        return call(name, *self._place, *arguments)

    @property
    def al_state(self) -> AlState:
        return AlState(self._call("al_state"))

    @property
    def outputs(self) -> bytes:
        """What the slave received last, all output sync managers in order."""
        return read_bytes("outputs", *self._place)

    def output(self, index: int, sub: int = 0) -> int:
        """One mapped output entry of them, without sign, its lower 64 bits."""
        value = c_uint64()
        self._call("output_value", index, sub, ctypes.byref(value))
        return value.value

    @property
    def inputs(self) -> bytes:
        """What the slave put into its last frame, all input sync managers in order; setting pins them: b"" for the
        model again."""
        return read_bytes("inputs", *self._place)

    @inputs.setter
    def inputs(self, data: bytes) -> None:
        self._call("set_inputs", *_given(data))

    def set_input(self, index: int, sub: int, value: int) -> None:
        """Pins one input entry, until `inputs` is set."""
        self._call("set_input_value", index, sub, value & 0xFFFFFFFFFFFFFFFF)

    def object(self, index: int, sub: int = 0) -> bytes:
        """The value of an object, little endian; of a drive also of what it maps."""
        return read_bytes("object", *self._place, index, sub)

    def set_object(self, index: int, sub: int, data: bytes) -> None:
        self._call("set_object", index, sub, *_given(data))

    def registers(self, address: int, size: int = 1) -> bytes:
        buffer = ctypes.create_string_buffer(size)
        self._call("registers", address, buffer, size)
        return buffer.raw

    def set_registers(self, address: int, data: bytes) -> None:
        self._call("set_registers", address, *_given(data))

    def add_errors(self, address: int, count: int = 1) -> None:
        """To an error counter, registers 0x0300 to 0x0313."""
        self._call("add_error_count", address, count)

    def set_powered(self, on: bool) -> None:
        """Off: it is gone, and all behind it."""
        self._call("set_powered", on)

    def set_wire_broken(self, broken: bool) -> None:
        """Behind it."""
        self._call("set_wire_broken", broken)

    def set_responding(self, responding: bool) -> None:
        """A silent slave lacks in the working counter, and stays listed."""
        self._call("set_responding", responding)

    def set_al_error(self, state: int, code: int) -> None:
        """Falls to INIT, PREOP or SAFEOP with an AL status code, and stays there until code 0."""
        self._call("set_al_error", state, code)

    def set_error_flag(self, on: bool) -> None:
        self._call("set_error_flag", on)

    def set_maximum_state(self, state: int) -> None:
        """Climbs no further, and falls back to it; OP: no limit."""
        self._call("set_maximum_state", state)

    def set_sdo_fault(self, index: int, sub: int, fault: str) -> None:
        """Of the transfers of an object: none, abort, time_out, short_answer, long_answer, busy_for_ever."""
        self._call("set_sdo_fault", index, sub, fault.encode())

    def set_trouble(self, trouble: str, on: bool = True, error_code: int = 0x2310) -> None:
        """Of a drive: drive_fault (with the error code), blocked_axis, positive_limit, negative_limit, quick_stop,
        safe_torque_off."""
        self._call("set_drive_trouble", trouble.encode(), on, error_code)


class Bus:
    """The simulated bus of the master `index`: a sequence of slaves. Made empty when it is first used; from then on the
    bus file of the environment is not read for it."""

    def __init__(self, index: int = 0) -> None:
        self.index = index
        self._call("slave_count")

    def __repr__(self) -> str:
        return f"<simulated bus of master {self.index}>"

    def _call(self, name: str, *arguments: Any) -> int:
        return call(name, self.index, *arguments)

    # ---- Building

    def load(self, path: Union[str, "os.PathLike[str]"], **keys: Any) -> None:
        """Builds what a bus file describes, also for other masters; then configure(**keys)."""
        call("load", os.fsencode(path))
        self.configure(**keys)

    def configure(self, **keys: Any) -> None:
        """Sets and adds, with the keys of a master in a bus file: configure(timing="fast", slaves=[…], faults=[…])."""
        self._call("configure", json.dumps(keys).encode())

    def insert(self, position: int, **slave: Any) -> None:
        """Plugs in a slave with the keys of a bus file."""
        self._call("insert_slave", position, json.dumps(slave).encode())

    def remove(self, position: int) -> None:
        """Unplugs a slave; later ones move up."""
        self._call("remove_slave", position)

    def __len__(self) -> int:
        return self._call("slave_count")

    def __getitem__(self, position: int) -> Slave:
        if not 0 <= position < len(self):
            raise IndexError(f"master {self.index} has no slave {position}")
        return Slave(self.index, position)

    def __iter__(self) -> Iterator[Slave]:
        return (self[position] for position in range(len(self)))

    # ---- Times

    def pass_time(self, seconds: float) -> None:
        """On a bus with virtual time ("cycle_us")."""
        self._call("pass_time", round(seconds * 1e9))

    def set_frame_timeout(self, seconds: float) -> None:
        self._call("set_frame_timeout", round(seconds * 1e9))

    def set_clock_offset_cycles(self, cycles: int) -> None:
        self._call("set_clock_offset_cycles", cycles)

    @property
    def reference_time_ns(self) -> int:
        """What the reference clock shows, ns since 2000-01-01."""
        time = c_uint64()
        self._call("reference_time", ctypes.byref(time))
        return time.value

    # ---- Faults

    def add_fault(self, kind: str, **keys: Any) -> None:
        """To the schedule, with the keys of a bus file: add_fault("power_off", slave=1, at=200, **{"for": 50})."""
        self.configure(faults=[{"kind": kind, **keys}])

    def clear_faults(self) -> None:
        """Ends what lasts of the schedule, and empties it."""
        self._call("clear_faults")

    def drop_frames(self, count: int) -> None:
        self._call("drop_frames", count)

    def delay_frames(self, count: int) -> None:
        self._call("delay_frames", count)

    def set_link(self, up: bool) -> None:
        self._call("set_link", up)

    def step_clock(self, ns: int) -> None:
        """Moves the reference time once."""
        self._call("step_clock", ns)

    def set_image_never_mapped(self, never: bool) -> None:
        self._call("set_image_never_mapped", never)

    def fail_next(self, call: str, result: int = -1, after: int = 0) -> None:
        """The next call of this name ("ecrt_master_activate", "ioctl") fails, behind `after` that pass."""
        self._call("fail_next", call.encode(), result, after)

    # ---- Looking

    @property
    def reserved(self) -> bool:
        return bool(self._call("is_reserved"))

    @property
    def active(self) -> bool:
        return bool(self._call("is_active"))

    @property
    def open_device_files(self) -> int:
        return self._call("open_device_files")

    @property
    def frames_sent(self) -> int:
        return self._call("frames_sent")

    def call_count(self, call: str) -> int:
        return self._call("call_count", call.encode())

    @property
    def misuse(self) -> List[str]:
        """Calls with dead or foreign handles and calls out of order, a sentence each, the first 100. Ought to be []."""
        return read_bytes("misuse_text", self.index).decode(errors="replace").splitlines()

    def set_tracing(self, on: bool) -> None:
        self._call("set_tracing", on)

    @property
    def trace(self) -> List[str]:
        """Every call of the application since set_tracing(True)."""
        return read_bytes("trace_text", self.index).decode(errors="replace").splitlines()

    # ---- Each cycle

    def record(self, path: Optional[Union[str, "os.PathLike[str]"]]) -> None:
        """Writes each cycle to a CSV file from the next one on; None: no more."""
        self._call("record", None if path is None else os.fsencode(path))

    def observe(self, observer: Observer) -> Observer:
        """Calls observer(bus, cycle) at the end of each send on the active master, in the thread that cycles; cycles
        count from 1 at activation, as "at" of a fault. What it changes concerns the next frame. It may use this module,
        but not Master. When it raises, it is not called any more, and the next call of this module from outside raises
        that. As a decorator, too."""
        def called(_master: int, cycle: int, _context: Any) -> None:
            inside.observer = True
            try:
                observer(self, cycle)
            except BaseException as raised:  # pylint: disable=broad-except
                raised_by_observers.append(raised)
                self.unobserve(observer)
            finally:
                inside.observer = False

        callback = ObserverCallback(called)
        _callbacks.append(callback)
        _observers[self.index, observer] = self._call("add_observer", callback, None)
        return observer

    def unobserve(self, observer: Observer) -> None:
        """Calls it no more; also from inside, and when it is gone already."""
        number = _observers.pop((self.index, observer), None)
        if number is not None:
            self._call("remove_observer", number)
