#!/usr/bin/env python3
"""The main job from Python: a machine to OP, a position to a drive and back, an SDO read.

    run_machine.py [--cycles N] DESCRIPTION.xml...

Needs the package igh_master, which finds the library; IGH_MASTER_LIBRARY names another one.
"""
import argparse
import sys

from igh_master import AlState, EthercatError, Input, Master, Output, Slave, Type

DRIVE_PRODUCT_CODE = 0x500


class Drive(Slave):
    """The entries of the drive that are used here, by the names in its description."""
    target = Output("Target position")  # counts
    actual = Input("Position actual value")


def run(master, descriptions, cycles):
    master.load(*descriptions)
    slaves = master.scan()
    position = next((slave.position for slave in slaves if slave.product_code == DRIVE_PRODUCT_CODE), None)
    if position is None:
        raise EthercatError("no drive on the bus")
    drive = Drive(master, position)
    master.announce(position, 0x6060, 0, Type.USINT)  # what will be read by SDO, before activation
    master.activate()
    master.wait_for(AlState.OP)
    for cycle in range(cycles):
        drive.target = cycle
        master.cycle()
    print(f"{len(slaves)} slaves, {sum(master.errors.values())} errors")
    print(f"Position actual value: {drive.actual:.0f}")
    print(f"Mode of operation: {drive.sdo_read(0x6060, 0, Type.USINT)}")
    print(f"AL state: {master.state:d}")
    return 0 if master.state == AlState.OP else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cycles", type=int, default=2000)
    parser.add_argument("descriptions", nargs="+", metavar="DESCRIPTION.xml")
    options = parser.parse_args()
    try:
        with Master(0, period=1e-3) as master:
            return run(master, options.descriptions, options.cycles)
    except EthercatError as error:
        print(f"run_machine: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
