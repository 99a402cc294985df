"""The control side of the simulated master, ethercat_simulation.h, for ctypes."""
from __future__ import annotations

import ctypes
import functools
import threading
from ctypes import CFUNCTYPE, c_char_p, c_int, c_int64, c_uint, c_uint64, c_void_p
from typing import Any, Dict, List

from ._library import SONAME, U8, U16, U32, Unsigned, library
from .types import EthercatError

ObserverCallback = CFUNCTYPE(None, c_uint, c_uint64, c_void_p)
_U64, _SIZE = Unsigned(c_uint64), ctypes.c_size_t
_SLAVE, _BYTES = (U32, U32), (c_void_p, _SIZE)
_OBJECT = (*_SLAVE, U16, U8)

# Arguments of the functions of ethercat_simulation.h; results are int, or what stands in WIDE.
FUNCTIONS = {
    "reset": (), "load": (c_char_p,), "build": (c_char_p,), "configure": (U32, c_char_p),
    "insert_slave": (*_SLAVE, c_char_p), "remove_slave": _SLAVE,
    "pass_time": (U32, _U64), "set_frame_timeout": (U32, _U64), "set_clock_offset_cycles": (U32, U32),
    "clear_faults": (U32,), "drop_frames": (U32, U32), "delay_frames": (U32, U32), "set_link": (U32, c_int),
    "set_wire_broken": (*_SLAVE, c_int), "set_powered": (*_SLAVE, c_int), "set_al_error": (*_SLAVE, U8, U16),
    "set_error_flag": (*_SLAVE, c_int), "set_responding": (*_SLAVE, c_int), "set_maximum_state": (*_SLAVE, U8),
    "set_sdo_fault": (*_OBJECT, c_char_p), "set_drive_trouble": (*_SLAVE, c_char_p, c_int, U16),
    "add_error_count": (*_SLAVE, U16, U32), "step_clock": (U32, c_int64), "set_image_never_mapped": (U32, c_int),
    "fail_next": (U32, c_char_p, c_int, U32),
    "slave_count": (U32,), "al_state": _SLAVE, "outputs": (*_SLAVE, *_BYTES),
    "output_value": (*_OBJECT, ctypes.POINTER(c_uint64)), "inputs": (*_SLAVE, *_BYTES), "set_inputs": (*_SLAVE, *_BYTES),
    "set_input_value": (*_OBJECT, _U64), "object": (*_OBJECT, *_BYTES), "set_object": (*_OBJECT, *_BYTES),
    "registers": (*_SLAVE, U16, *_BYTES), "set_registers": (*_SLAVE, U16, *_BYTES),
    "is_reserved": (U32,), "is_active": (U32,), "open_device_files": (U32,), "frames_sent": (U32,),
    "call_count": (U32, c_char_p), "reference_time": (U32, ctypes.POINTER(c_uint64)), "misuse": (U32,),
    "misuse_text": (U32, *_BYTES), "set_tracing": (U32, c_int), "trace_text": (U32, *_BYTES),
    "record": (U32, c_char_p), "add_observer": (U32, ObserverCallback, c_void_p), "remove_observer": (U32, c_int),
}
WIDE = ("frames_sent", "call_count", "misuse")

raised_by_observers: List[BaseException] = []  # for the next call from outside
inside = threading.local()


@functools.lru_cache(maxsize=None)
def _functions() -> Dict[str, Any]:
    loaded, functions = library(), {}
    try:
        for name, arguments in FUNCTIONS.items():
            functions[name] = getattr(loaded, "ethercat_simulation_" + name)  # of what the library was linked with
            functions[name].argtypes = arguments
            functions[name].restype = c_int64 if name in WIDE else c_int
        functions["last_error"] = loaded.ethercat_simulation_last_error
        functions["last_error"].restype = c_char_p
    except AttributeError:
        raise EthercatError(f"this {SONAME} stands on a real master: there is nothing to simulate") from None
    return functions


def call(name: str, *arguments: Any) -> int:
    raise_observed()
    functions = _functions()
    result = functions[name](*arguments)
    if result < 0:
        raise EthercatError(functions["last_error"]().decode(errors="replace"))
    return int(result)


def read_bytes(name: str, *arguments: Any) -> bytes:
    buffer = ctypes.create_string_buffer(256)
    length = call(name, *arguments, buffer, len(buffer))
    while length >= len(buffer):
        buffer = ctypes.create_string_buffer(length + 256)
        length = call(name, *arguments, buffer, len(buffer))
    return buffer.raw[:length]


def raise_observed() -> None:
    """Raises what an observer has raised since the last call of this module; those have no other way out."""
    if raised_by_observers and not getattr(inside, "observer", False):
        raised = raised_by_observers[0]
        raised_by_observers.clear()
        raise raised
