"""The package on the example machine, with fast timing and two faults, in both modes of the exchange."""
import ctypes
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import threading
import time

import pytest

from igh_master import AlState, BusError, ErrorCode, EthercatError, Input, Master, Output, Slave, Type, _library, simulation
from igh_master._calls import close_all

SOURCE = pathlib.Path(__file__).parents[2]
DESCRIPTIONS = [str(SOURCE / "examples/machine" / name) for name in ("terminals.xml", "modular_head.xml", "servo_drive.xml")]
DRIVE = 5
PATIENT = {"timeout": 100}  # of transfers that succeed: a loaded machine takes its time
fails = lambda text, call, kind=EthercatError: pytest.raises(kind, call).match(text)


@pytest.fixture(name="m", params=[False, True])
def open_master(request, tmp_path, monkeypatch):
    machine = json.loads((SOURCE / "examples/machine/machine.json").read_text())["masters"][0]
    machine.update(timing="fast", faults=[
        {"kind": "lost_frame", "at": 200, "for": 3}, {"kind": "sdo_abort", "every": 1, "slave": DRIVE, "index": "0x2001"}])
    machine["slaves"][DRIVE]["objects"] += [{"index": "0x2000", "bytes": "8877665544332211"}, {"index": "0x2001", "bytes": "01"},
                                            {"index": "0x2002", "bytes": "8877665544332211"}]
    (tmp_path / "bus.json").write_text(json.dumps({"masters": [machine]}))
    monkeypatch.setenv("ETHERCAT_SIMULATION_BUS", str(tmp_path / "bus.json"))
    simulation.reset()
    yield Master(0, exchange_mode=request.param, objects=[
        (DRIVE, 0x2001), (DRIVE, 0x2002), (DRIVE, 0x6060, 0, Type.USINT), (DRIVE, 0x1018, 0, Type.RAW, 18, True)])
    close_all()
    assert simulation.Bus(0).misuse == []


def test_types_are_those_of_the_header():
    header = (SOURCE / "include/igh_master.h").read_text()
    own = {"_ETHERCAT_COMM_DIAG_INFO": _library.DiagInfo, "ETHERCAT_DATA_TYPE": ctypes.c_int,
           "igh_master_error_callback": _library.ErrorCallback, "igh_master_exchange_callback": _library.ExchangeCallback}
    of = lambda name: (own.get(name) or getattr(ctypes, "c_" + name.replace("*", "_p").removesuffix("_t"), None)
                       or ctypes.POINTER(of(name[:-1])))
    for name, arguments in re.findall(r"^IGH_MASTER_API \w+ igh_master_(\w+)\(uint16_t id,?([^)]*)\);", header, re.M):
        expected = [of(kind) for kind in re.findall(r"(?:const )?(\S+) \w+(?:,|$)", arguments)]
        assert [getattr(kind, "kind", kind) for kind in _library.FUNCTIONS[name]] == expected, name


def test_values_callbacks_and_errors(m):
    kind = type("Axis", (Slave,), {"target": Output("Target position"), "actual": Input("Position actual value")})
    m.load(*DESCRIPTIONS)
    axis, seen = kind(m, m.scan()[DRIVE].position), []
    m.activate()
    axis.target = -70000.5
    fails("slave 5, entry 'Position actual value': no exchange .* has brought it yet", lambda: axis.actual)
    m.wait_for(AlState.OP)
    m.cycle(3)
    assert (axis.actual, axis.target, m[DRIVE]["Position actual value"]) == (-70001, -70000.5, -70001)
    axis.target = 3
    late = [m.cycle() or axis.actual for _ in range(4)].index(3)
    assert late == 2 - m.exchange_mode
    assert (len(m), axis.product_code, axis.revision, m[4].slots) == (8, 0x500, 0x20001, (3, 16, 1)) and "Target position" in m.listing

    def callback():
        seen.append(axis.actual)
        for use in (m.exchange, m.scan, m.close):
            fails("inside an exchange", use)
        time.sleep(0.002)
        raise ZeroDivisionError

    fails("", lambda: m.exchange(callback), ZeroDivisionError)
    assert m.timings.last.callback_us >= 2000 and axis.actual == 3
    m.on_error = seen.append
    m.cycle(200)
    lost = BusError(None, ErrorCode.WORKING_COUNTER)
    assert m.errors == {lost: 3} and seen == [3, lost, lost, lost] and m.last_error == ErrorCode.WORKING_COUNTER
    assert m.timings.fastest.total_us <= m.timings.slowest.total_us and m.timings.last.cycle >= 204
    m.scan()
    fails("scanned again", lambda: axis.actual)
    fails("scanned again", lambda: setattr(axis, "target", 1))


def test_failures_carry_the_words_of_the_library(m, tmp_path):
    kind = type("Lacking", (Slave,), {"nothing": Input("Nothing")})
    bits = tmp_path / "bits.xml"
    bits.write_text(open(DESCRIPTIONS[2]).read().replace("<DataType>SINT", "<DataType>BYTE", 1))
    for text, call in [("/nowhere.xml: Open file error", lambda: m.load("/nowhere.xml")),
                       (r"scan\(\) first", m.activate), ("is not active", m.cycle), ("open already", Master),
                       ("there is no slave 8", lambda: m.load(bits) or m.scan() and Slave(m, 8)),
                       ("entry 'Nothing': the description has no such", lambda: kind(m, DRIVE)),
                       ("'Modes of operation': its type", lambda: m[DRIVE].entry("Modes of operation", True)),
                       ("0x6041:00: the master refused a request: Failed", lambda: m.sdo_request(DRIVE, 0x6041)),
                       ("0x6041:00: the master refused a request", lambda: m.sdo_request(DRIVE, 0x6041, 0, Type.UINT)),
                       ("slave = 9, state = 2, errno = Invalid argument", lambda: m.request_state(9, 2)),
                       ("^Ethercat exchange period", lambda: ctypes.CDLL(None).puts(b"earlier") and Master(1, 5.0)),
                       ("slave = 9, address = 130", lambda: m.register_read(9, 0x130)),
                       ("device file of master 7 is not open", lambda: Master(7).register_read(0, 0)),
                       ("Failed to open master 8: there is no simulated", lambda: Master(8).scan())]:
        fails(text, call)
    fails("90209 is not in the range 0 to 65535", lambda: m.sdo_request(DRIVE, 0x16061), ctypes.ArgumentError)
    fails("there is no slave 8: the scan found 8", lambda: m[8], IndexError)
    fails("'OP' is not a valid AlState", lambda: m.wait_for("OP"), ValueError)
    fails("argument: 'index'", lambda: Master(3, objects=[(0,)]), TypeError)
    Master(3).close()  # nothing was left of it
    m.close()
    for use in (lambda: m.state, m.start, lambda: m.sdo_read(DRIVE, 0x2001)):
        fails("is closed", use)


def test_objects_registers_and_the_background(m, monkeypatch):
    def waits_for_a_cycle(*_):  # as the real master does
        cycle = m.timings.last.cycle
        while m.timings.last.cycle == cycle:
            time.sleep(0.001)
        return True

    monkeypatch.setattr(m._library, "igh_master_clear_esc_error_regs", waits_for_a_cycle)
    m.load(*DESCRIPTIONS)
    m.scan()
    m.configure()
    early = m.sdo_request(DRIVE, 0x2000, 0, Type.LINT)
    m.activate()
    early.start_read()
    fails("not done", lambda: early.value)
    m.clear_error_counters(DRIVE)
    assert m.register_read(DRIVE, 0, 2) == b"\x04\x03"
    threads = set()
    m.on_error = lambda _: threads.add(threading.current_thread())  # the lost frames may come while the child ends
    m.start()
    child = os.fork()
    if child == 0:  # what it has of the master is its parent's
        try:
            signal.alarm(20)
            m.close()
            fails("belongs to the process that opened it", lambda: m.state)
            os._exit(0)
        finally:
            os._exit(1)
    assert os.waitpid(child, 0)[1] == 0
    m.wait_for(AlState.OP)
    while not threads:
        m.cycle(20)
    assert len(threads) == 1 and threading.current_thread() not in threads
    assert early.value == 0x1122334455667788
    early.close()
    for value, type in [([-1] * 8, Type.SINT), ([255] * 8, Type.USINT), ([-1] * 4, Type.INT), ([65535] * 4, Type.UINT),
                        ([-1, 2], Type.DINT), ([2**32 - 1, 2], Type.UDINT), (-1, Type.LINT), (2**64 - 1, Type.ULINT),
                        ([.5, -2], Type.REAL), (-1.5, Type.LREAL), (b"ab345678", Type.RAW)]:
        m[DRIVE].sdo_write(0x2000, 0, value, type, **PATIENT)
        count = 1 if type in (Type.LINT, Type.ULINT, Type.LREAL) else len(value)
        assert m[DRIVE].sdo_read(0x2000, 0, type, count, **PATIENT) == value
    assert m.sdo_read(DRIVE, 0x1018, 0, count=18, complete=True, **PATIENT)[2:4] == b"\x0b\x0b"
    for timeout in (0.05, 1, 20):  # until there was a try that the library could say something of
        with pytest.raises(EthercatError, match="0x2002:00: no answer ") as refused:
            m.sdo_read(DRIVE, 0x2002, timeout=timeout)
        if "again and again" not in str(refused.value):
            break
    assert "(Received 8 bytes do not fit" in str(refused.value)
    for _ in range(2):
        fails("no answer within 0.05 s", lambda: m.sdo_write(DRIVE, 0x2001, 0, 7, Type.USINT, timeout=0.05))
    assert m.sdo_read(DRIVE, 0x6060, 0, Type.USINT, **PATIENT) == 8  # the failed ones hold up nobody
    fails(r"0x6502:00: not announced.* m.announce\(5, 0x6502, 0, Type.UDINT, 1\)", lambda: m.sdo_read(DRIVE, 0x6502, 0, Type.UDINT))
    fails("announced with 8 bytes, not 4", lambda: m.sdo_write(DRIVE, 0x2000, 0, 1, Type.DINT))
    m.register_clear(DRIVE, 0x310)
    m.request_state(DRIVE, AlState.PREOP)
    m.wait_for(AlState.OP | AlState.PREOP)
    m.request_terminate()
    fails("its end was requested", lambda: m.cycle(1000))
    m.close()
    # The kernel does not survive the end of a process in the middle of a transfer.
    program = f"""import logging, igh_master; logging.basicConfig(level=logging.INFO)
m = igh_master.Master(objects=[({DRIVE}, 0x2000, 0, igh_master.Type.RAW, 8)]); m.bring_up(*{DESCRIPTIONS})
m.sdo_request({DRIVE}, 0x2000, 0, count=8).start_read(); m.start()"""
    subprocess.run(["sh", "-c", 'exec "$@" >&- 2>&-', "sh", sys.executable, "-c", program], check=True)  # as a bare daemon
    printed = subprocess.run([sys.executable, "-c", program], check=True, capture_output=True, text=True).stderr
    assert printed.endswith("INFO:igh_master:ecrt_master_deactivate\nINFO:igh_master:ecrt_release_master\n")
