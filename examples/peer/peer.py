#!/usr/bin/env python3
"""The same process as peer.cpp, in Python, on the shared library."""

import ctypes
import signal
import sys

DONE, REPLACED, TIME_OUT, CREATE = 0, 3, 11, 1  # of shared_memory/peer_segment_c.h
LIBRARY = ctypes.CDLL("libpeer_segment.so.1")
LIBRARY.peer_segment_error.restype = ctypes.c_char_p
LIBRARY.peer_segment_close.argtypes = [ctypes.c_void_p]
CHANGE = ctypes.CFUNCTYPE(
    ctypes.c_int, ctypes.POINTER(ctypes.c_double), ctypes.c_size_t, ctypes.c_void_p)


class Peer:
    """Owns the attachment to the segment and the voltages of two channels, in V."""

    def __init__(self):
        self.segment = ctypes.c_void_p()
        self.voltages = (ctypes.c_double * 2)(24.0, 12.5)
        self.count = ctypes.c_size_t(2)

    def call(self, operation, *arguments, allowed=()):
        """Calls peer_segment_OPERATION; an outcome that is not allowed ends the program."""
        outcome = getattr(LIBRARY, "peer_segment_" + operation)(self.segment, *arguments)
        if outcome != DONE and outcome not in allowed:
            sys.exit("peer: " + LIBRARY.peer_segment_error().decode())
        return outcome

    def publish(self):
        """Attaches to the segment and puts into it what this process has to say."""
        LIBRARY.peer_segment_close(self.segment)
        if LIBRARY.peer_segment_open(ctypes.byref(self.segment), CREATE) != DONE:
            sys.exit("peer: " + LIBRARY.peer_segment_error().decode())
        identity = (ctypes.c_char_p * 1)(b"100_VOLTS_DEV_2CH")
        self.call("write_doubles", b"VOLTAGE_DATA_MEM", self.voltages, self.count)
        self.call("write_texts", b"CNF_DEV_TYP_MEM", identity, ctypes.c_size_t(1))

    def wait(self):
        """Waits for a change of the voltages for half a second."""
        return self.call(
            "wait_doubles", b"VOLTAGE_DATA_MEM", self.voltages, ctypes.byref(self.count),
            ctypes.c_size_t(2), 20, 500, allowed=(TIME_OUT, REPLACED))

    def limit(self, volts):
        """No channel above this, in one access."""
        def lower(values, count, _):
            for i in range(count):
                values[i] = min(values[i], volts)
            return 0
        self.call("update_doubles", b"VOLTAGE_DATA_MEM", CHANGE(lower), None)


def main():
    ended = []
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda *_: ended.append(True))
    peer = Peer()
    peer.publish()
    while not ended:
        outcome = peer.wait()
        if outcome == TIME_OUT:
            continue
        if outcome == REPLACED:  # somebody removed it: carry on in a new one
            peer.publish()
            print("attached again")
        peer.limit(100.0)
        values = peer.voltages[:peer.count.value]
        print("voltages:", " ".join(f"{value:g} V" for value in values), flush=True)
    print("ended")


main()
