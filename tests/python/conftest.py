"""The example machine on the simulated master, fast, with what a test adds to its bus file."""
import ctypes
import json
import os
import pathlib

import pytest

from igh_master.master import Master, _close_all as close_all

SOURCE = pathlib.Path(__file__).resolve().parents[2]
MACHINE = SOURCE / "examples/machine"
DESCRIPTIONS = [MACHINE / name for name in ("coupler.xml", "terminals.xml", "modular_head.xml", "servo_drive.xml")]
DRIVE = 5


@pytest.fixture
def bus(tmp_path, monkeypatch):
    """bus(objects=..., faults=...) gives an open master; objects are those of the drive."""
    simulation = ctypes.CDLL(os.environ["SIMULATION"])
    simulation.reset = simulation["_ZN19ethercat_simulation5resetEv"]

    def make(objects=(), faults=(), **options):
        machine = json.loads((MACHINE / "machine.json").read_text())
        master = machine["masters"][0]
        master["slaves"][DRIVE]["objects"] += objects
        master["faults"] = list(faults)
        master["timing"] = "fast"
        (tmp_path / "bus.json").write_text(json.dumps(machine))
        monkeypatch.setenv("ETHERCAT_SIMULATION_BUS", str(tmp_path / "bus.json"))
        simulation.reset()
        return Master(0, **options)

    yield make
    close_all()
