import ctypes
import logging
import subprocess
import sys
import time

import pytest
from conftest import DESCRIPTIONS, DRIVE

from igh_master import AlState, BusError, ErrorCode, EthercatError, Input, Master, Output, Slave, Type


class Axis(Slave):
    target = Output("Target position")
    actual = Input("Position actual value")


@pytest.mark.parametrize("exchange_mode", [False, True])
def test_entries_by_name_and_as_properties(bus, exchange_mode):
    m = bus(exchange_mode=exchange_mode)
    m.load(*DESCRIPTIONS)
    axis = Axis(m, m.scan()[DRIVE].position)
    m.activate()
    axis.target = -70000.5
    with pytest.raises(EthercatError, match="slave 5, entry 'Position actual value': no exchange .* has brought it yet"):
        _ = axis.actual
    m.wait_for(AlState.OP)
    m.cycle(3)
    assert (axis.actual, axis.target, m[DRIVE]["Position actual value"]) == (-70001, -70000.5, -70001)
    m[DRIVE]["Target velocity"] = 33
    m.cycle(3)
    assert m[DRIVE]["Velocity actual value"] == 33 and m[DRIVE]["Target velocity"] == 33
    assert [len(m), m[DRIVE].revision, m[4].slots] == [8, 0x20001, (3, 16, 1)] and "Target position" in m.listing
    m.scan()
    for use in (lambda: axis.actual, lambda: setattr(axis, "target", 1), lambda: axis["Statusword"]):
        with pytest.raises(EthercatError, match="scanned again"):
            use()


def test_failures_carry_the_words_of_the_library(bus, caplog, tmp_path):
    m = bus()
    bits = tmp_path / "bits.xml"
    bits.write_text(DESCRIPTIONS[3].read_text().replace("<DataType>SINT", "<DataType>BYTE", 1))
    for text, call in [
            ("/nowhere.xml: Open file error", lambda: m.load("/nowhere.xml")),
            ("scan\\(\\) first", m.activate),
            ("is not active", m.cycle),
            ("there is no slave 8", lambda: m.load(bits) or m.scan() and Slave(m, 8)),
            ("entry 'Nothing': the description has no such", lambda: m[DRIVE]["Nothing"]),
            ("'Modes of operation': its type has no conversion", lambda: m[DRIVE].entry("Modes of operation", True)),
            ("an input cannot be set", lambda: setattr(m[DRIVE].entry("Statusword"), "value", 1)),
            ("object 0x6041:00: the master refused a request: Failed to create", lambda: m.sdo_request(DRIVE, 0x6041)),
            ("slave = 9, state = 2, errno = Invalid argument", lambda: m.request_state(9, 2)),
            ("slave = 9, address = 130", lambda: m.register_read(9, 0x130)),
            ("open already", Master),
            ("period should between", lambda: Master(1, 5.0)),
            ("device file of master 7 is not open", lambda: Master(7).register_read(0, 0)),
            ("Failed to open master 8: there is no simulated", lambda: Master(8).scan())]:
        with pytest.raises(EthercatError, match=text):
            call()
    with caplog.at_level(logging.INFO, "igh_master"):
        m.close()
    assert [record.message for record in caplog.records][-1] == "ecrt_release_master"
    with pytest.raises(EthercatError, match="is closed"):
        _ = m.state


LONG = {"index": "0x2000", "bytes": "88 77 66 55 44 33 22 F1"}


def test_objects(bus):
    m = bus([LONG, *({"index": "0x2001", "subindex": i, "bytes": f"0{i} 00"} for i in (0, 1, 2))],
            [{"kind": "sdo_abort", "every": 1, "slave": DRIVE, "index": "0x2001", "subindex": 2}])
    m.load(*DESCRIPTIONS)
    m.scan()
    m.configure()
    early = m.sdo_request(DRIVE, 0x2000, 0, Type.LINT)
    m.activate()
    early.start_read()
    while not early.done:
        with pytest.raises(EthercatError, match="not done"):
            _ = early.value
        m.exchange()
    assert early.value == int.from_bytes(bytes.fromhex("f122334455667788"), "big", signed=True)
    early.close()
    read = lambda *arguments, **options: m.sdo_read(DRIVE, 0x2000, 0, *arguments, **options)
    for value, *arguments in [(bytes.fromhex("88776655443322f1"), Type.RAW, 8), ([0x55667788, 0xF1223344], Type.UDINT, 2)]:
        assert read(*arguments) == value
    for value, type in [(-3, Type.LINT), (2**64 - 1, Type.ULINT), (-1.5, Type.LREAL), ([0.5, -2], Type.REAL), (b"ab345678",)
                        + (Type.RAW,)]:
        m[DRIVE].sdo_write(0x2000, 0, value, type)
        assert read(type, len(value) if isinstance(value, (list, bytes)) else 1) == value
    assert m.sdo_read(DRIVE, 0x2001, 0, count=6, complete=True)[2:] == bytes([1, 0, 2, 0])
    with pytest.raises(EthercatError, match=r"0x2000:00: no answer .*\(Received 8 bytes do not fit info"):
        read(Type.UDINT, timeout=0.05)
    with pytest.raises(EthercatError, match=r"slave 5, object 0x2001:02: no answer within 0.05 s"):
        m.sdo_write(DRIVE, 0x2001, 2, 7, Type.UINT, timeout=0.05)
    assert m.sdo_read(DRIVE, 0x6060, 0, Type.USINT) == 8  # the failed one holds up nobody
    with pytest.raises(EthercatError, match="closed"):
        early.start_read()
    with pytest.raises(ctypes.ArgumentError, match="90209 is not in the range 0 to 65535"):
        m.sdo_read(DRIVE, 0x16061)


def test_callbacks_errors_and_times(bus):
    m = bus(faults=[{"kind": "lost_frame", "at": 200, "for": 3}])
    m.bring_up(*DESCRIPTIONS)
    m.cycle(2)
    values = []
    m[DRIVE]["Modes of operation"] = 3
    m.cycle(3)

    def callback():
        values.append(m[DRIVE]["Modes of operation display"])
        m[DRIVE]["Modes of operation"] = 4
        for use in (m.exchange, m.scan, m.close, lambda: m.register_read(0, 0)):
            with pytest.raises(EthercatError, match="inside an exchange"):
                use()

    m[DRIVE].entry("Modes of operation display")
    m.exchange()
    m.exchange(callback)
    m.cycle(2)
    assert values == [3] and m[DRIVE]["Modes of operation display"] == 4
    with pytest.raises(ZeroDivisionError):
        m.exchange(lambda: 1 // 0)
    seen = []
    m.on_error = seen.append
    m.cycle(200)
    lost = BusError(None, ErrorCode.WORKING_COUNTER)
    assert m.errors == {lost: 3} and seen == [lost] * 3 and m.last_error == ErrorCode.WORKING_COUNTER
    m.clear_errors()
    assert not m.errors and m.last_error == ErrorCode.NONE
    fastest, last, slowest = m.timings
    assert fastest.total_us <= last.total_us <= slowest.total_us and last.cycle >= 204 > fastest.cycle
    assert m.clock_offset_ns == 0
    m.request_terminate()
    with pytest.raises(EthercatError, match="its end was requested"):
        m.exchange()


def test_cycling_in_the_background(bus):
    m = bus([LONG])
    m.load(*DESCRIPTIONS)
    m.scan()
    m.activate()
    assert m.register_read(DRIVE, 0, 2) == b"\x04\x03"  # without a thread it cycles by itself
    m.start()
    m.wait_for(AlState.OP)
    m[DRIVE]["Target position"] = 12
    assert m[DRIVE]["Position actual value"] in (0, 12)
    m.cycle(20)
    assert m[DRIVE]["Position actual value"] == 12
    assert m.sdo_read(DRIVE, 0x2000, 0, Type.RAW, 8) == bytes.fromhex(LONG["bytes"])
    m.register_clear(DRIVE, 0x310)
    m.clear_error_counters()
    m.request_state(DRIVE, AlState.PREOP)
    m.wait_for(AlState.OP | AlState.PREOP)
    m.request_terminate()
    with pytest.raises(EthercatError, match="its end was requested"):
        m.cycle(1000)
    m.start()
    time.sleep(0.1)
    with pytest.raises(EthercatError, match="its end was requested"):
        m.stop()


def test_an_exit_without_close_ends_in_order(bus):
    """The kernel does not survive the end of a process in the middle of a transfer."""
    bus([LONG]).close()
    program = f"""
from igh_master import Master
m = Master()
m.bring_up(*{[str(path) for path in DESCRIPTIONS]})
m.sdo_request({DRIVE}, 0x2000, 0, count=8).start_read()
m.start()
import logging; logging.basicConfig(level=logging.INFO)"""
    printed = subprocess.run([sys.executable, "-c", program], check=True, capture_output=True, text=True).stderr
    assert printed.endswith("INFO:igh_master:ecrt_master_deactivate\nINFO:igh_master:ecrt_release_master\n")
