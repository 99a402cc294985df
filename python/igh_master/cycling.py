"""Exchanges a period apart, in the caller's thread or in one of their own."""
import threading
import time
from typing import Callable, List, Optional, TypeVar

from ._output import logger

Result = TypeVar("Result")


class Pace:
    """Wakes up once per period, in seconds; after a long delay it begins anew instead of hurrying."""

    def __init__(self, period: float) -> None:
        self._period = period
        self._next = time.monotonic()

    def wait(self) -> None:
        self._next += self._period
        now = time.monotonic()
        if self._next < now - self._period:
            self._next = now
        time.sleep(max(0.0, self._next - now))


class Cycling:
    """Runs `exchange` once per `period` seconds."""

    def __init__(self, exchange: Callable[[], None], period: float) -> None:
        self._exchange = exchange
        self._period = period
        self._thread: Optional[threading.Thread] = None
        self._stop = threading.Event()
        self._failure: Optional[BaseException] = None

    @property
    def in_background(self) -> bool:
        return self._thread is not None

    def start(self) -> None:
        if self._thread is None:
            self._stop.clear()
            self._thread = threading.Thread(target=self._run, name="igh_master", daemon=True)
            self._thread.start()

    def stop(self) -> None:
        """What ended the thread early is raised here."""
        thread, self._thread = self._thread, None
        if thread is not None:
            self._stop.set()
            thread.join()
        self._raise_failure()

    def _run(self) -> None:
        pace = Pace(self._period)
        try:
            while not self._stop.is_set():
                self._exchange()
                pace.wait()
        except BaseException as failure:  # pylint: disable=broad-except
            self._failure = failure
            logger.error("cycling in the background has ended: %r", failure)

    def _raise_failure(self) -> None:
        failure, self._failure = self._failure, None
        if failure is not None:
            self._thread = None
            raise failure

    def until(self, done: Callable[[], bool], timeout: Optional[float]) -> bool:
        """Cycles, or lets the thread cycle, until `done`; False when that took longer than `timeout` seconds."""
        deadline = None if timeout is None else time.monotonic() + timeout
        pace = Pace(self._period)
        while not done():
            if deadline is not None and time.monotonic() > deadline:
                return False
            self._raise_failure()
            if not self.in_background:
                self._exchange()
            pace.wait()
        return True

    def beside(self, call: Callable[[], Result]) -> Result:
        """The result of a call that blocks until others have cycled. When cycling fails, the call is left behind."""
        results: List[Result] = []
        thread = threading.Thread(target=lambda: results.append(call()), daemon=True)
        thread.start()
        self.until(lambda: not thread.is_alive(), None)
        return results[0]
