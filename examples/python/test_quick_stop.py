"""A test for pytest: two axes stop together when the drive of one of them fails."""
import pathlib

from igh_master import Input, Master, Output, Slave

pytest_plugins = ["igh_master.pytest_plugin"]
MACHINE = pathlib.Path(__file__).parents[1] / "machine"
X, Y = 0, 1  # positions of the drives
SHUTDOWN, SWITCH_ON, ENABLE, QUICK_STOP = 0x06, 0x07, 0x0F, 0x02


class Axis(Slave):
    controlword, statusword = Output("Controlword"), Input("Statusword")

    def is_enabled(self):
        return int(self.statusword) & 0x6F == 0x27

    def next_step(self):
        return {0x40: SHUTDOWN, 0x21: SWITCH_ON}.get(int(self.statusword) & 0x6F, ENABLE)


def application(master, cycles):
    """What is tested: enables both axes, and stops both when one is not enabled any more."""
    axes = [Axis(master, X), Axis(master, Y)]
    moving = False

    def step():  # between inputs and outputs
        nonlocal moving
        enabled = all(axis.is_enabled() for axis in axes)
        moving = moving or enabled
        for axis in axes:
            axis.controlword = axis.next_step() if enabled or not moving else QUICK_STOP

    for _ in range(cycles):
        master.exchange(step)


def test_a_fault_of_y_stops_x_within_2_cycles(simulated_bus):
    stopped = []

    @simulated_bus.observe
    def watch(bus, cycle):
        if cycle > 200 and bus[X].output(0x6040) == QUICK_STOP:
            stopped.append(cycle)

    simulated_bus.load(MACHINE / "motion.json", timing="fast")
    simulated_bus.add_fault("drive_fault", slave=Y, at=200)
    with Master(0) as master:
        master.bring_up(MACHINE / "motion_drive.xml")
        application(master, 250)
    assert stopped[0] - 200 <= 2
