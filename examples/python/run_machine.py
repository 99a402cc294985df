#!/usr/bin/env python3
"""The main job from Python: a machine to OP, a position to a drive and back, an SDO read.

    run_machine.py [--library libigh_master.so] [--cycles N] DESCRIPTION.xml...

The library is the one of --library, else of the environment variable IGH_MASTER_LIBRARY, else
the installed one. Only Python's standard library is needed. Python is no real-time language: this
shows that the interface works from another language, and serves for trying things out.
"""
import argparse
import ctypes
import os
import sys
import time
from ctypes import (CFUNCTYPE, POINTER, byref, c_bool, c_char_p, c_double, c_int, c_int32, c_uint,
                    c_uint8, c_uint16, c_uint32, c_void_p)

MASTER = 0
PERIOD_NS = 1_000_000
DRIVE_PRODUCT_CODE = 0x500
USINT = 2  # DATA_TYPE_USINT
OP = 8

ErrorCallback = CFUNCTYPE(None, c_uint, c_uint, c_int, c_void_p)
ExchangeCallback = CFUNCTYPE(None, c_void_p)

# name: result, arguments after the id of the master
FUNCTIONS = {
    "initialize": (c_bool, c_uint32, c_bool),
    "uninitialize": (None,),
    "set_error_callback": (c_bool, ErrorCallback, c_void_p),
    "append_eni": (c_bool, c_char_p),
    "scan": (c_bool, POINTER(c_uint32)),
    "get_slave_product_code": (c_bool, c_uint32, POINTER(c_uint32)),
    "config_all_slave": (c_bool,),
    "create_pdo_info": (c_bool, c_uint32, c_char_p, c_bool, POINTER(c_uint32)),
    "pdo_send": (c_bool, c_uint32, c_double),
    "pdo_recv": (c_bool, c_uint32, POINTER(c_double)),
    "create_sdo_request": (c_bool, c_uint32, c_uint16, c_uint8, c_int, c_int32, c_bool,
                           POINTER(c_uint32)),
    "sdo_recv": (c_bool, c_uint32, POINTER(c_double), POINTER(c_bool)),
    "active": (c_bool,),
    "exchange": (c_bool, ExchangeCallback, c_void_p),
    "get_state": (c_bool, POINTER(c_uint32)),
}


class Master:
    """Calls igh_master_NAME(id, ...) as master.NAME(...); a false result is an exception."""

    def __init__(self, library):
        for name, (result, *arguments) in FUNCTIONS.items():
            function = getattr(library, "igh_master_" + name)
            function.restype = result
            function.argtypes = [c_uint16, *arguments]
            setattr(self, name, self._checked(name, function))

    @staticmethod
    def _checked(name, function):
        def call(*arguments):
            if function(MASTER, *arguments) is False:
                raise RuntimeError(f"igh_master_{name} failed")
        return call


def find_drive(master, slaves):
    code = c_uint32()
    for slave in range(slaves):
        master.get_slave_product_code(slave, byref(code))
        if code.value == DRIVE_PRODUCT_CODE:
            return slave
    raise RuntimeError("no drive on the bus")


def handle(create, *arguments):
    made = c_uint32()
    create(*arguments, byref(made))
    return made.value


def run(master, descriptions, cycles):
    errors = []
    callbacks = []
    # Python must keep the callbacks alive for as long as the library may call them.
    on_error = ErrorCallback(lambda _id, slave, code, _data: errors.append((slave, code)))
    on_exchange = ExchangeCallback(lambda _data: callbacks.append(None))

    master.set_error_callback(on_error, None)
    for path in descriptions:
        master.append_eni(os.fsencode(path))
    count = c_uint32()
    master.scan(byref(count))
    drive = find_drive(master, count.value)
    master.config_all_slave()
    target = handle(master.create_pdo_info, drive, b"Target position", False)
    actual = handle(master.create_pdo_info, drive, b"Position actual value", True)
    mode = handle(master.create_sdo_request, drive, 0x6060, 0, USINT, 500, True)
    master.active()

    position, mode_of_operation, done, state = c_double(), c_double(), c_bool(), c_uint32()
    master.sdo_recv(mode, byref(mode_of_operation), byref(done))
    wake = time.monotonic()
    for cycle in range(cycles):
        wake += PERIOD_NS / 1e9
        time.sleep(max(0.0, wake - time.monotonic()))
        master.pdo_send(target, float(cycle))
        master.exchange(on_exchange, None)
    master.pdo_recv(actual, byref(position))
    master.get_state(byref(state))
    print(f"{count.value} slaves, {len(callbacks)} callbacks, {len(errors)} errors")
    print(f"Position actual value: {position.value:.0f}")
    answer = f"{mode_of_operation.value:.0f}" if done.value else "no answer"
    print(f"Mode of operation: {answer}")
    print(f"AL state: {state.value}")
    return 0 if state.value == OP and done.value else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--library",
                        default=os.environ.get("IGH_MASTER_LIBRARY", "libigh_master.so"))
    parser.add_argument("--cycles", type=int, default=2000)
    parser.add_argument("descriptions", nargs="+", metavar="DESCRIPTION.xml")
    options = parser.parse_args()
    try:
        master = Master(ctypes.CDLL(options.library))
    except OSError as error:
        print(f"run_machine: {error}", file=sys.stderr)
        return 1
    try:
        master.initialize(PERIOD_NS, False)
        return run(master, options.descriptions, options.cycles)
    except RuntimeError as error:
        print(f"run_machine: {error}", file=sys.stderr)
        return 1
    finally:
        master.uninitialize()


if __name__ == "__main__":
    sys.exit(main())
