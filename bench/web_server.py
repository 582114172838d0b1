"""nginx with prepared replies on a loopback address, and its log of the requests."""

import dataclasses
import os
import socket
import subprocess
import time

from runner import Failure

PORT = 1556
FIELDS = [
    "connection", "connection_requests", "ssl_session_reused", "status", "bytes_sent",
    "ssl_protocol", "request_method", "request_uri", "http_accept", "http_accept_encoding",
    "http_authorization", "http_content_type", "http_content_length",
    "http_x_arkeon_audit_reason",
]  # fmt: skip
CONFIGURATION = """
daemon off;
{user}
worker_processes 1;
pid {directory}/pid;
error_log {directory}/error.log warn;
events {{ worker_connections 64; }}
http {{
  client_body_temp_path {directory}/body;
  proxy_temp_path {directory}/proxy;
  fastcgi_temp_path {directory}/fastcgi;
  uwsgi_temp_path {directory}/uwsgi;
  scgi_temp_path {directory}/scgi;
  log_format fields escape=none '{fields}';
  access_log {directory}/access.log fields;
  keepalive_timeout 60;
  gzip off;
  gzip_static on;
  default_type application/vnd.arkeon+json;
  map $arg_mappedhostname $reply {{ "" listing.json; default found.json; }}
  server {{
    listen {address}:{port} ssl;
    root {directory}/replies;
    ssl_protocols TLSv1.2 TLSv1.3;
    ssl_certificate {certificate};
    ssl_certificate_key {key};
    ssl_client_certificate {ca};
    ssl_verify_client on;
    location = /arkeon/config/hosts/hostmappings {{ try_files /$reply =404; }}
    location ~ ^/arkeon/config/hosts/[^/]+$ {{ try_files /host.json =404; }}
    location ~ ^/arkeon/config/hosts/[^/]+/hostmappings/ {{
      if ($request_method = PUT) {{ return 201 '{{}}'; }}
      return 404;
    }}
  }}
}}
"""


@dataclasses.dataclass(frozen=True)
class Request:
    """One line of the access log."""

    connection: int  # all accepted connections are numbered, even those without a request
    connection_requests: int
    ssl_session_reused: str
    status: int
    bytes_sent: int
    ssl_protocol: str
    request_method: str
    request_uri: str
    http_accept: str
    http_accept_encoding: str
    http_authorization: str
    http_content_type: str
    http_content_length: str
    http_x_arkeon_audit_reason: str

    def content(self):
        """The part that is equal if two programs send the same request."""
        return dataclasses.astuple(self)[5:]


def parsed(line):
    values = dict(zip(FIELDS, line.split("\t"), strict=True))
    numbers = ("connection", "connection_requests", "status", "bytes_sent")
    return Request(**values | {name: int(values[name]) for name in numbers})


class WebServer:
    """Runs during a `with`, and serves the files that the workloads write to `replies`."""

    def __init__(self, workspace):
        self.directory = workspace.directory / "nginx"
        self.replies = self.directory / "replies"
        self.replies.mkdir(parents=True)
        self._address = workspace.address
        self._read = 0
        text = CONFIGURATION.format(
            user="" if os.geteuid() else "user root;", directory=self.directory,
            fields="\t".join(f"${field}" for field in FIELDS), address=workspace.address, port=PORT,
            certificate=workspace.server_certificate, key=workspace.server_key,
            ca=workspace.ca)  # fmt: skip
        (self.directory / "nginx.conf").write_text(text)

    def __enter__(self):
        command = ["nginx", "-p", self.directory, "-c", self.directory / "nginx.conf"]
        command += ["-e", self.directory / "error.log"]
        environment = os.environ | {"PATH": f"{os.environ['PATH']}:/usr/sbin"}
        self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, env=environment)
        try:
            self._await_start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait()

    def _await_start(self):
        until = time.monotonic() + 20
        while time.monotonic() < until and self._process.poll() is None:
            try:
                socket.create_connection((self._address, PORT), 1).close()
                return
            except OSError:
                time.sleep(0.05)
        raise Failure(f"nginx did not start: {(self.directory / 'error.log').read_text()}")

    def new_requests(self, count):
        """Returns the requests logged since the last call; fails unless there are `count`.

        Waits for them, because nginx logs a request after it has sent the reply.
        """
        until = time.monotonic() + 10
        lines = self._new_lines()
        while len(lines) < count and time.monotonic() < until:
            time.sleep(0.01)
            lines = self._new_lines()
        time.sleep(0.05)
        lines = self._new_lines()
        self._read += sum(len(line.encode()) + 1 for line in lines)
        requests = [parsed(line) for line in lines]
        if len(requests) != count:
            raise Failure(f"{len(requests)} requests, not {count}: {requests}")
        return requests

    def _new_lines(self):
        with open(self.directory / "access.log", "rb") as log:
            log.seek(self._read)
            return log.read().decode().split("\n")[:-1]
