"""An HTTPS server that gives the replies of a case in order and keeps the requests it got."""

import os
import random
import socket
import ssl
import struct
import threading

PORT = 1556


class Request:
    """One request as it came: the head's lines and the body, byte for byte."""

    def __init__(self, head, body):
        lines = head.decode("utf-8", "surrogateescape").split("\r\n")
        self.line = lines[0]
        self.headers = [tuple(line.split(":", 1)) for line in lines[1:]]
        self.body = body

    def header_values(self):
        """The values by name in small letters; a repeated header's values stand in one text."""
        values = {}
        for name, *value in self.headers:
            text = value[0].removeprefix(" ") if value else "(no colon)"
            key = name.lower()
            values[key] = f"{values[key]}, and again {text}" if key in values else text
        return values


class Reply:
    """What goes out on the wire for one request, and what happens to the connection then.

    `endless` follows `data` again and again until the client goes. `drip` tells how the data come
    slowly: from the byte `from` on, `bytes` at a time with `seconds` between them.
    """

    AFTERWARDS = ("keep", "close", "abort", "reset", "clear text", "stall", "leave")

    def __init__(self, data, afterwards="keep", endless=b"", drip=None):
        if afterwards not in self.AFTERWARDS:
            raise ValueError(f"then = {afterwards!r} is none of {self.AFTERWARDS}")
        self.data = data
        self.afterwards = afterwards
        self.endless = endless
        self.drip = {"from": 0, "bytes": 1, "seconds": 0} | drip if drip else None


def random_address():
    return f"127.{random.randint(1, 254)}.{random.randint(0, 255)}.{random.randint(1, 254)}"


def listen(address):
    """A listening socket; OSError when the address is in use."""
    listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
    try:
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        listener.bind((address, PORT))
        listener.listen(8)
    except OSError:
        listener.close()
        raise
    return listener


def end(connection):
    """Ends both directions, whatever state the connection is in."""
    try:
        # Not SSLSocket's own, after which a recv in progress would give encrypted bytes.
        socket.socket.shutdown(connection, socket.SHUT_RDWR)
    except OSError:
        pass


class ScriptedServer:
    """Serves on `listener` until `stop`; each connection has a thread of its own.

    Without a TLS context it greets every connection in the clear and ends it. With `hello` it says no
    more than so many bytes of TLS.
    """

    def __init__(self, listener, context, replies, hello=None):
        self.connections = 0
        self.requests = []
        self.problems = []
        self.unused = list(replies)
        self._context = context
        self._hello = hello
        self._listener = listener
        self._lock = threading.Lock()
        self._stopping = threading.Event()
        self._sockets = []
        self._threads = [threading.Thread(target=self._accept, daemon=True)]
        self._threads[0].start()

    def stop(self):
        self._stopping.set()
        for connection in [self._listener, *self._sockets]:
            end(connection)
        for thread in self._threads:
            thread.join(10)
        self._listener.close()

    def _accept(self):
        while not self._stopping.is_set():
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            self.connections += 1
            self._sockets.append(connection)
            thread = threading.Thread(target=self._serve, args=(connection,), daemon=True)
            self._threads.append(thread)
            thread.start()

    def _serve(self, connection):
        try:
            if self._context is None:
                connection.sendall(b"HELLO\r\n")
                return
            if self._hello is not None:
                connection.sendall(self._first_flight(connection)[: self._hello])
                return
            with self._secured(connection) as secure:
                self._sockets.append(secure)
                self._handshake(secure)
                while self._answer(secure):
                    pass
        except OSError:  # also every ssl.SSLError: the client refused us, we it, or it went away
            pass
        finally:
            connection.close()

    def _first_flight(self, connection):
        """What TLS answers to the client's hello."""
        arrived, answer = ssl.MemoryBIO(), ssl.MemoryBIO()
        talk = self._context.wrap_bio(arrived, answer, server_side=True)
        while True:
            arrived.write(connection.recv(65536))
            try:
                talk.do_handshake()
            except ssl.SSLWantReadError:
                if answer.pending:
                    return answer.read()

    def _secured(self, connection):
        return self._context.wrap_socket(
            connection, server_side=True, do_handshake_on_connect=False
        )

    @staticmethod
    def _handshake(secure):
        """Reads on after a failure: closing before the client does could overtake the alert."""
        try:
            secure.do_handshake()
        except OSError:
            secure.settimeout(5)
            socket.socket.shutdown(secure, socket.SHUT_WR)
            while os.read(secure.fileno(), 65536):
                pass
            raise

    def _answer(self, secure):
        """Reads one request and replies; whether the connection goes on."""
        request = self._read_request(secure)
        if request is None:
            return False
        with self._lock:
            self.requests.append(request)
            reply = self.unused.pop(0) if self.unused else None
        if reply is None:
            secure.sendall(b"HTTP/1.1 503 No Reply Left\r\nContent-Length: 0\r\n\r\n")
            return False
        if reply.afterwards == "leave":  # before the reply, so that nobody can be quicker
            end(self._listener)
        self._send(secure, reply)
        if reply.afterwards == "stall":
            self._stopping.wait()
        elif reply.afterwards == "reset":
            secure.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        elif reply.afterwards == "clear text":
            socket.socket.sendall(secure, b"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n")
        elif reply.afterwards in ("close", "leave"):
            secure.unwrap()
        return reply.afterwards == "keep"

    def _send(self, secure, reply):
        start = reply.drip["from"] if reply.drip else len(reply.data)
        secure.sendall(reply.data[:start])
        for place in range(start, len(reply.data), reply.drip["bytes"] if reply.drip else 1):
            if self._stopping.wait(reply.drip["seconds"]):
                return
            secure.sendall(reply.data[place : place + reply.drip["bytes"]])
        while reply.endless and not self._stopping.is_set():
            secure.sendall(reply.endless)

    def _read_request(self, secure):
        data = b""
        while b"\r\n\r\n" not in data:
            piece = secure.recv(65536)
            if not piece:
                if data:
                    self.problems.append(f"a request that ends inside its head: {data!r}")
                return None
            data += piece
        head, body = data.split(b"\r\n\r\n", 1)
        request = Request(head, b"")
        length = int(request.header_values().get("content-length", "0"))
        while len(body) < length:
            piece = secure.recv(65536)
            if not piece:
                self.problems.append(f"a request that ends inside its body: {body!r}")
                return None
            body += piece
        if len(body) > length:
            self.problems.append(f"bytes after a request: {body[length:]!r}")
        request.body = body[:length]
        return request


class Bystander:
    """Listens where nobody has a reason to connect, until `stop`."""

    def __init__(self, listener):
        self.connections = 0
        self._listener = listener
        self._thread = threading.Thread(target=self._accept, daemon=True)
        self._thread.start()

    def stop(self):
        end(self._listener)
        self._thread.join(10)
        self._listener.close()

    def _accept(self):
        while True:
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            self.connections += 1
            connection.close()


def server_context(certificate, private_key, authorities, tls=None):
    """The server's side of TLS; every client must present a certificate of `authorities`."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, private_key)
    context.load_verify_locations(authorities)
    context.verify_mode = ssl.CERT_REQUIRED
    if tls == "1.1":
        context.set_ciphers("ALL:@SECLEVEL=0")
        context.minimum_version = ssl.TLSVersion.TLSv1_1
        context.maximum_version = ssl.TLSVersion.TLSv1_1
    elif tls == "1.2":
        context.maximum_version = ssl.TLSVersion.TLSv1_2
    return context
