"""Two ends of a slow line, in network namespaces of their own, where nothing else can disturb.

Needs the right to make network namespaces. The delay is that of the kernel (tc's netem) where it
has one; elsewhere packets go through this process, which keeps each of them for the time.
"""

import collections
import concurrent.futures
import ctypes
import fcntl
import os
import select
import struct
import subprocess
import threading
import time

from stage import random_address

CLONE_NEWNET = 0x40000000
TUNSETIFF = 0x400454CA
IFF_TUN, IFF_NO_PI = 0x0001, 0x1000
CLIENT, SERVER = "10.77.0.1", "10.77.0.2"
LARGEST_PACKET = 65536


class Unavailable(Exception):
    """There is no slow line to be had on this machine."""


def command(*words):
    try:
        run = subprocess.run(words, capture_output=True, text=True, check=False)
    except OSError as failure:
        raise Unavailable(f"{words[0]}: {failure.strerror}") from failure
    if run.returncode:
        raise Unavailable(f"{' '.join(words)}: {run.stderr.strip()}")


def enter_new_namespace():
    if ctypes.CDLL(None, use_errno=True).unshare(CLONE_NEWNET):
        raise Unavailable(f"network namespace: {os.strerror(ctypes.get_errno())}")
    command("ip", "link", "set", "lo", "up")


class Namespace:
    """A network namespace and the thread that lives in it, as do the processes that it starts."""

    def __init__(self):
        self._thread = concurrent.futures.ThreadPoolExecutor(1)
        try:
            self.call(enter_new_namespace)
        except BaseException:
            self.leave()
            raise

    def call(self, function, *arguments):
        return self._thread.submit(function, *arguments).result()

    def leave(self):
        self._thread.shutdown()


class Line:
    """Forwards packets between two devices, each after `delay` seconds."""

    def __init__(self, first, second, delay):
        self._other = {first: second, second: first}
        self._delay = delay
        self._stop_reader, self._stop_writer = os.pipe()
        self._thread = threading.Thread(target=self._forward, daemon=True)
        self._thread.start()

    def cut(self):
        os.close(self._stop_writer)
        self._thread.join()
        for descriptor in [self._stop_reader, *self._other]:
            os.close(descriptor)

    def _forward(self):
        waiting = collections.deque()  # in the order in which they are due
        while True:
            pause = max(0, waiting[0][0] - time.monotonic()) if waiting else None
            ready, _, _ = select.select([self._stop_reader, *self._other], [], [], pause)
            if self._stop_reader in ready:
                return
            for device in ready:
                packet = os.read(device, LARGEST_PACKET)
                waiting.append((time.monotonic() + self._delay, self._other[device], packet))
            while waiting and waiting[0][0] <= time.monotonic():
                _, device, packet = waiting.popleft()
                os.write(device, packet)


def new_device(name, own, peer):
    """A device of the namespace of the calling thread, whose packets the descriptor carries."""
    try:
        device = os.open("/dev/net/tun", os.O_RDWR | os.O_CLOEXEC)
        fcntl.ioctl(device, TUNSETIFF, struct.pack("16sH22x", name.encode(), IFF_TUN | IFF_NO_PI))
    except OSError as failure:
        raise Unavailable(f"/dev/net/tun: {failure.strerror}") from failure
    command("ip", "address", "add", own, "peer", peer, "dev", name)
    command("ip", "link", "set", name, "up")
    return device


class SlowNetwork:
    """`client` and `server` are namespaces, `address` the server's; everything ends with `with`."""

    def __init__(self, delay):
        self._line = None
        self.client = Namespace()
        self.server = self.client
        try:
            self._delay_loopback(delay)
        except BaseException:
            self.__exit__()
            raise

    def _delay_loopback(self, delay):
        words = ["tc", "qdisc", "add", "dev", "lo", "root", "netem", "delay", f"{delay * 1000:g}ms"]
        try:
            self.client.call(command, *words)
            self.address, self.means = random_address(), "netem"
        except Unavailable:
            self._connect_by_hand(delay)

    def _connect_by_hand(self, delay):
        self.server = Namespace()
        near = self.client.call(new_device, "slow0", CLIENT, SERVER)
        far = self.server.call(new_device, "slow0", SERVER, CLIENT)
        self._line = Line(near, far, delay)
        self.address, self.means = SERVER, "tun devices"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.client.leave()  # first, as without an answer a run there would not end for minutes
        if self._line:
            self._line.cut()
        self.server.leave()
