"""EtherCAT buses on the IgH EtherCAT Master, through libigh_master.

    from igh_master import Master

    with Master(0, period=1e-3, objects=[(5, 0x6041, 0, Type.UINT)]) as m:
        m.bring_up("servo_drive.xml")        # load, scan, configure, activate, cycle until OP
        drive = m[5]
        drive["Target position"] = 1000      # an output, by the name in the description
        m.cycle(10)                          # ten exchanges, a period apart
        print(drive["Position actual value"])
        print(m.sdo_read(5, 0x6041, 0, Type.UINT))

What fails raises EthercatError, with the words of the library. What the library prints without failing goes to
the logger "igh_master": its standard output as INFO, its standard error as WARNING. The library is
libigh_master.so.1; the environment variable IGH_MASTER_LIBRARY names another one.

Python is no real-time language: this is for commissioning, tests and trying things out.
"""
from .master import Master
from .sdo import SdoRequest
from .slave import Entry, Input, Output, Slave
from .types import (AlState, BusError, ErrorCode, EthercatError, Slots, Timing, Timings, Type)

__all__ = ["AlState", "BusError", "Entry", "ErrorCode", "EthercatError", "Input", "Master", "Output", "SdoRequest",
           "Slave", "Slots", "Timing", "Timings", "Type"]
