"""The control side of the simulated master from Python, and the fixture."""
import ctypes
import os
import pathlib
import re
import subprocess
import sys

import pytest

from igh_master import AlState, EthercatError, Master, _simulation, simulation

pytest_plugins = ["igh_master.pytest_plugin"]
SOURCE = pathlib.Path(__file__).parents[2]
MACHINE = SOURCE / "examples/machine"
fails = lambda text, call, kind=EthercatError: pytest.raises(kind, call).match(text)


@pytest.fixture(name="bus")
def load(simulated_bus):
    simulated_bus.load(MACHINE / "motion.json", timing="fast", cycle_us=1000)
    return simulated_bus


def test_types_are_those_of_the_header():
    header = (SOURCE / "simulation/include/ethercat_simulation.h").read_text()
    own = {"uint8_t*": ctypes.c_void_p, "char*": ctypes.c_char_p, "void*": ctypes.c_void_p, "unsigned": ctypes.c_uint,
           "size_t": ctypes.c_size_t, "ethercat_simulation_observer": _simulation.ObserverCallback, "uint64_t*": ctypes.POINTER(ctypes.c_uint64)}
    of = lambda name: own.get(name) or getattr(ctypes, "c_" + name.removesuffix("_t"))
    declared = re.findall(r"API (\w+)\s+ethercat_simulation_(\w+)\(([^)]*)\);", header)
    for result, name, arguments in declared:
        kinds = re.findall(r"(?:const )?(\w+\*?)(?: int)? \w+(?:,|$)", " ".join(arguments.split()))
        expected = [ctypes.c_void_p if kind == "char*" and "size_t" in kinds else of(kind) for kind in kinds]
        assert [getattr(kind, "kind", kind) for kind in _simulation.FUNCTIONS[name]] == expected, name
        assert (result == "int64_t") == (name in _simulation.WIDE), name
    assert len(declared) == len(_simulation.FUNCTIONS)


def test_a_slave_shows_what_it_received_and_sends_what_it_is_told(bus, tmp_path):
    bus.set_tracing(True)
    bus.record(tmp_path / "x.csv")
    with Master(0, objects=[(1, 0x6065, 0, 0, 4)]) as m:
        axis = m.bring_up(MACHINE / "motion_drive.xml")[1]
        y = bus[1]
        axis["Target position"] = -2
        y.set_input(0x6064, 0, -3)
        m.cycle(3)
        assert y.output(0x607A) == 0xFFFFFFFE and y.outputs[2:6] == b"\xfe\xff\xff\xff" == y.object(0x607A)
        assert axis["Position actual value"] == -3 and y.inputs[2:6] == b"\xfd\xff\xff\xff"
        y.inputs = bytes(15)
        y.set_object(0x6065, 0, bytearray(b"\1\2\3\4"))
        fails("bytes-like", lambda: y.set_object(0x6065, 0, "abcd"), TypeError)
        m.cycle(2)
        assert axis["Position actual value"] == 0 and m.sdo_read(1, 0x6065, 0, count=4, timeout=100) == b"\1\2\3\4"
        assert bus.frames_sent == bus.call_count("ecrt_master_send") > 10 and len(bus.trace) > 30 and bus.active
        for off, on, missing in [(lambda: y.set_responding(False), lambda: y.set_responding(True), 3),
                                 (lambda: bus.add_fault("lost_frame", every=1), bus.clear_faults, 3),
                                 (lambda: bus.drop_frames(99), lambda: bus.drop_frames(0), 3)]:
            off()
            m.cycle(4)
            on()
            m.cycle(2)
            assert sum(m.errors.values()) >= missing
            m.wait_for(AlState.OP)
            m.clear_errors()
        y.set_al_error(AlState.SAFEOP, 0x1B)
        m.cycle(9)
        assert (y.al_state, y.registers(0x134)) == (AlState.SAFEOP, b"\x1b")
    rows = (tmp_path / "x.csv").read_text().splitlines()
    assert len(rows) > 30 and rows[-1].split(",")[5] == "20" and rows[2].startswith("2,0.001000000,")
    bus.fail_next("ecrt_master_activate")
    fails("was not activated", lambda: Master(0).bring_up(MACHINE / "motion_drive.xml"))
    fails("master 0 has no slave 2", lambda: bus[2], IndexError)
    fails("/faults/0/kind: must be one of", lambda: bus.add_fault("mischief", at=1))
    fails("there is no slave|has no slave", lambda: simulation.Slave(0, 9).al_state)


def test_what_an_observer_raises_comes_with_the_next_call(bus):
    cycles = []

    @bus.observe
    def once(_, cycle):
        cycles.append(cycle)
        bus.unobserve(once)

    @bus.observe
    def fail(seen, cycle):
        assert seen[0].al_state == AlState.INIT, f"cycle {cycle}"

    with Master(0) as m:
        m.bring_up(MACHINE / "motion_drive.xml")
        fails("cycle 1\n", lambda: len(bus), AssertionError)
        m.cycle(2)
        assert cycles == [1] and len(bus) == 2


def test_the_fixture_fails_a_test_for_misuse_and_for_observers(tmp_path):
    (tmp_path / "test_application.py").write_text(f"""
import ctypes, igh_master
pytest_plugins = ["igh_master.pytest_plugin"]
def load(bus):
    assert len(bus) == 0
    bus.load("{MACHINE}/motion.json", timing="fast")
    master = igh_master.Master(0)
    master.bring_up("{MACHINE}/motion_drive.xml")
    return master
def test_good(simulated_bus): load(simulated_bus)
def test_misuse(simulated_bus):
    load(simulated_bus)
    igh_master._library.library().ecrt_master_send(None)
def test_observer(simulated_bus):
    simulated_bus.observe(lambda *_: 1 / 0)
    load(simulated_bus)
""")
    command = [sys.executable, "-B", "-m", "pytest", "-p", "no:cacheprovider", str(tmp_path)]
    printed = subprocess.run(command, check=False, capture_output=True, text=True, env=os.environ).stdout
    assert "3 passed, 2 errors" in printed and "ZeroDivisionError" in printed and "ecrt_master_send" in printed, printed
