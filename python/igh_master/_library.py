"""The C interface, igh_master.h, for ctypes."""
import ctypes
import functools
import operator
import os
import pathlib
from ctypes import (CFUNCTYPE, POINTER, Structure, c_bool, c_char_p, c_double, c_int, c_int32, c_uint, c_uint8, c_uint16,
                    c_uint32, c_uint64, c_void_p)
from typing import Any

from .types import EthercatError

SONAME = "libigh_master.so.1"
WHOLE_MASTER = 0xFFFFFFFF

ErrorCallback = CFUNCTYPE(None, c_uint, c_uint, c_int, c_void_p)
ExchangeCallback = CFUNCTYPE(None, c_void_p)


class DiagInfo(Structure):
    """_ETHERCAT_COMM_DIAG_INFO"""
    _fields_ = [("time", c_uint64), ("receive", c_int32), ("sdo", c_int32), ("send", c_int32), ("callback", c_int32),
                ("total", c_int32)]


class Unsigned:
    """An argument that must fit: ctypes would take its low bits."""

    def __init__(self, kind: Any) -> None:
        self.kind, self._end = kind, 1 << 8 * ctypes.sizeof(kind)

    def from_param(self, value: Any) -> Any:
        if not 0 <= operator.index(value) < self._end:
            raise ValueError(f"{value} is not in the range 0 to {self._end - 1}")
        return self.kind(value)


U8, U16, U32 = Unsigned(c_uint8), Unsigned(c_uint16), Unsigned(c_uint32)

_REQUEST = (U32, U16, U8, U32, c_int32, c_bool, POINTER(c_uint32))
_TYPED_REQUEST = (U32, U16, U8, c_int, c_int32, c_bool, POINTER(c_uint32))
_SLAVE_NUMBER = (U32, POINTER(c_uint32))
_REGISTER = (U16, U16, POINTER(c_uint8), U32)

# Arguments behind the id of the master, which is always the first.
FUNCTIONS = {
    "initialize_ex": (U32, c_bool, c_bool),
    "initialize": (U32, c_bool),
    "uninitialize": (),
    "set_exchange_mode": (c_bool,),
    "set_error_callback": (ErrorCallback, c_void_p),
    "get_period": (POINTER(c_uint32),),
    "get_system_base_offset": (POINTER(c_uint64),),
    "append_eni": (c_char_p,),
    "get_state": (POINTER(c_uint32),),
    "request_terminate": (),
    "is_request_terminate": (),
    "clear_error": (),
    "get_last_error": (POINTER(c_int32),),
    "enable_eoe_function": (U32, c_bool),
    "scan": (POINTER(c_uint32),),
    "get_slave_product_code": _SLAVE_NUMBER,
    "get_slave_revision_code": _SLAVE_NUMBER,
    "config_slave": (U32,),
    "config_all_slave": (),
    "get_slot_number": _SLAVE_NUMBER,
    "get_slot_index_increment": _SLAVE_NUMBER,
    "get_slot_pdo_increment": _SLAVE_NUMBER,
    "active": (),
    "exchange": (ExchangeCallback, c_void_p),
    "create_pdo_info": (U32, c_char_p, c_bool, POINTER(c_uint32)),
    "destroy_pdo_info": (U32, c_bool),
    "pdo_recv": (U32, POINTER(c_double)),
    "pdo_send": (U32, c_double),
    "create_raw_sdo_request": _REQUEST,
    "create_raw_sdo_request_complete": (U32, U16, U32, c_int32, c_bool, POINTER(c_uint32)),
    "create_sdo_request_ex": (*_TYPED_REQUEST[:4], U32, *_TYPED_REQUEST[4:]),
    "create_sdo_request": _TYPED_REQUEST,
    "destroy_sdo_request": (U32, c_bool),
    "raw_sdo_recv": (U32, c_void_p, U32, POINTER(c_bool)),
    "sdo_recv_ex": (U32, POINTER(c_double), U32, POINTER(c_bool)),
    "sdo_recv": (U32, POINTER(c_double), POINTER(c_bool)),
    "raw_sdo_send": (U32, c_void_p, U32, POINTER(c_bool)),
    "sdo_send_ex": (U32, POINTER(c_double), U32, POINTER(c_bool)),
    "sdo_send": (U32, c_double, POINTER(c_bool)),
    "process_sdo_immediately": (U32,),
    "read_esc_reg": _REGISTER,
    "write_esc_reg": _REGISTER,
    "clear_esc_error_regs": (U16,),
    "clear_all_esc_error_regs": (),
    "request_esc_state": (U16, U8),
    "output_comm_diag_info": (c_char_p, POINTER(DiagInfo)),
    "get_comm_diag_info": (U32, POINTER(DiagInfo)),
    "set_dc_debug_enable": (c_bool,),
}
_WITHOUT_RESULT = ("destroy_pdo_info", "destroy_sdo_request")


@functools.lru_cache(maxsize=None)
def library() -> ctypes.CDLL:
    """The library with its functions typed, loaded once. In a prefix that was moved it lies beside this package."""
    beside = pathlib.Path(__file__).resolve().parents[3] / SONAME
    name = os.environ.get("IGH_MASTER_LIBRARY") or (str(beside) if beside.exists() else SONAME)
    try:
        loaded = ctypes.CDLL(name)
        for function, arguments in FUNCTIONS.items():
            prototype = getattr(loaded, "igh_master_" + function)
            prototype.argtypes = [U16, *arguments]
            prototype.restype = None if function in _WITHOUT_RESULT else c_bool
    except (OSError, AttributeError) as error:
        raise EthercatError(f"{error} (IGH_MASTER_LIBRARY names the library where it lies elsewhere)") from None
    return loaded
