"""ESC registers and AL states of single slaves."""
from __future__ import annotations

from ctypes import POINTER, c_uint8, cast, create_string_buffer
from typing import Any, Callable, Optional

from ._calls import Calls
from ._output import Printed, captured
from .types import EthercatError


class Registers(Calls):
    """Without start() an active bus is cycled meanwhile, because the calls wait for that."""

    def _blocking(self, name: str, *arguments: Any) -> Printed:
        self._check_call()
        call: Callable[..., bool] = getattr(self._library, "igh_master_" + name)
        with captured() as printed:
            result = self._cycling.beside(lambda: call(self.id, *arguments)) if self._active else call(self.id, *arguments)
        if printed.err or not result:
            raise EthercatError(printed.err or f"the device file of master {self.id} is not open")
        return printed

    def register_read(self, slave: int, address: int, size: int = 1) -> bytes:
        """`size` bytes of the ESC registers from `address` on."""
        for fill in (b"\x55", b"\xAA"):  # the library leaves the buffer alone when it has no device file
            data = create_string_buffer(fill * size, size)
            self._blocking("read_esc_reg", slave, address, cast(data, POINTER(c_uint8)), size)
            if data.raw != fill * size:
                return data.raw
        raise EthercatError(f"the device file of master {self.id} is not open")

    def register_clear(self, slave: int, address: int, size: int = 1) -> None:
        """Writes zeros: the library can write nothing else."""
        data = create_string_buffer(size)
        if not self._blocking("write_esc_reg", slave, address, cast(data, POINTER(c_uint8)), size).out:
            raise EthercatError(f"the device file of master {self.id} is not open")

    def clear_error_counters(self, slave: Optional[int] = None) -> None:
        """Clears registers 0x0300 to 0x0313 of one slave, or of all."""
        for position in range(len(self._slaves)) if slave is None else [slave]:
            self._blocking("clear_esc_error_regs", position)

    def request_state(self, slave: int, state: int) -> None:
        """Asks one slave for an AL state (3 is BOOT), and does not wait for it."""
        self._blocking("request_esc_state", slave, state)
