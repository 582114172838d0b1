"""nginx on an address of its own, with prepared replies, and what it noted about the requests."""

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
pid {folder}/pid;
error_log {folder}/error.log warn;
events {{ worker_connections 64; }}
http {{
  client_body_temp_path {folder}/body;
  proxy_temp_path {folder}/proxy;
  fastcgi_temp_path {folder}/fastcgi;
  uwsgi_temp_path {folder}/uwsgi;
  scgi_temp_path {folder}/scgi;
  log_format fields escape=none '{fields}';
  access_log {folder}/access.log fields;
  keepalive_timeout 60;
  gzip off;
  gzip_static on;
  default_type application/vnd.arkeon+json;
  map $arg_mappedhostname $reply {{ "" listing.json; default found.json; }}
  server {{
    listen {address}:{port} ssl;
    root {folder}/replies;
    ssl_protocols TLSv1.2 TLSv1.3;
    ssl_certificate {certificate};
    ssl_certificate_key {key};
    ssl_client_certificate {authority};
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

    connection: int  # counts every connection that was accepted, also one without a request
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

    def asked(self):
        """What has to be the same for two programs to have done the same."""
        return dataclasses.astuple(self)[5:]


def parsed(line):
    values = dict(zip(FIELDS, line.split("\t"), strict=True))
    numbers = ("connection", "connection_requests", "status", "bytes_sent")
    return Request(**values | {name: int(values[name]) for name in numbers})


class WebServer:
    """Runs during a `with`. The replies are files in the folder `replies`, for others to write."""

    def __init__(self, stage):
        self.folder = stage.folder / "nginx"
        self.replies = self.folder / "replies"
        self.replies.mkdir(parents=True)
        self._address = stage.address
        self._read = 0
        text = CONFIGURATION.format(
            user="" if os.geteuid() else "user root;", folder=self.folder,
            fields="\t".join(f"${field}" for field in FIELDS), address=stage.address, port=PORT,
            certificate=stage.server_certificate, key=stage.server_key,
            authority=stage.authority)  # fmt: skip
        (self.folder / "nginx.conf").write_text(text)

    def __enter__(self):
        command = ["nginx", "-p", self.folder, "-c", self.folder / "nginx.conf"]
        command += ["-e", self.folder / "error.log"]
        environment = os.environ | {"PATH": f"{os.environ['PATH']}:/usr/sbin"}
        self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, env=environment)
        try:
            self._await_answer()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait()

    def _await_answer(self):
        until = time.monotonic() + 20
        while time.monotonic() < until and self._process.poll() is None:
            try:
                socket.create_connection((self._address, PORT), 1).close()
                return
            except OSError:
                time.sleep(0.05)
        raise Failure(f"nginx did not start: {(self.folder / 'error.log').read_text()}")

    def new_requests(self, count):
        """The requests that were noted since the last call, of which there have to be `count`.

        nginx notes a request after it has answered it, hence the waiting.
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
            raise Failure(f"{len(requests)} requests instead of {count}: {requests}")
        return requests

    def _new_lines(self):
        with open(self.folder / "access.log", "rb") as log:
            log.seek(self._read)
            return log.read().decode().split("\n")[:-1]
