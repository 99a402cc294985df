"""The fixture `simulated_bus`: `pytest_plugins = ["igh_master.pytest_plugin"]` in conftest.py or in the test itself."""
from typing import Iterator

import pytest

from . import simulation
from ._calls import close_all as close_masters


@pytest.fixture
def simulated_bus() -> Iterator[simulation.Bus]:
    """The bus of master 0, empty, nothing left of earlier tests. At the end masters that are still open are closed; the
    test fails for what an observer has raised, and for misuse of the interface by the application."""
    close_masters()
    simulation.reset()
    bus = simulation.Bus(0)
    try:
        yield bus
        close_masters()
        assert bus.misuse == []  # or what an observer has raised
    finally:
        close_masters()
        simulation.reset()
