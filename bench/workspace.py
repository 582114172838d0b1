"""A directory with all that the measured programs use: certificates, login, environment."""

import json
import pathlib
import random
import shutil
import subprocess
import tempfile
import tomllib

MEDIA_TYPE = "application/vnd.arkeon+json;version=6.0"


def random_address():
    return f"127.{random.randint(1, 254)}.{random.randint(0, 255)}.{random.randint(1, 254)}"


class Workspace:
    """A directory for the primary server at `address`, removed at the end of the `with`.

    It is in /var/tmp because /tmp may be in memory, and a million hosts need gigabytes.
    """

    def __init__(self, programs, address):
        self.address = address
        self.programs = pathlib.Path(programs).resolve()
        self.directory = pathlib.Path(tempfile.mkdtemp(prefix="akhostmgmt-bench-", dir="/var/tmp"))
        try:
            self._fill()
        except BaseException:
            shutil.rmtree(self.directory)
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.directory)

    def _fill(self):
        self.root = self.directory / "root"
        command = [self.programs / "akdevserver", "--root", self.root, "--init-only"]
        command += ["--listen", "127.0.0.1", "--name", self.address]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL)
        table = self.root / "etc" / "certificates.toml"
        entry = tomllib.loads(table.read_text())["certificate"][0]
        self.ca = (table.parent / entry["ca"]).resolve()
        self.certificate = (table.parent / entry["certificate"]).resolve()
        self.key = (table.parent / entry["private_key"]).resolve()
        self.server_certificate = self.root / "server" / "server.pem"
        self.server_key = self.root / "server" / "server.key"
        logins = json.loads((self.root / "config/arkeon/logins.json").read_text())["logins"]
        self.token = logins[0]["token"]
        self._write_headers()
        (self.directory / "home").mkdir()

    def _write_headers(self):
        """Writes the headers of the tool's requests to files for curl's -H."""
        lines = [f"Accept: {MEDIA_TYPE}", f"Authorization: Bearer {self.token}"]
        self.headers = self.directory / "headers"
        self.headers.write_text("".join(f"{line}\n" for line in lines))
        lines += ["X-Arkeon-Audit-Reason;", f"Content-Type: {MEDIA_TYPE}"]
        self.change_headers = self.directory / "change-headers"
        self.change_headers.write_text("".join(f"{line}\n" for line in lines))

    def environment(self):
        """The complete environment of a measured program."""
        return {
            "PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin",
            "HOME": str(self.directory / "home"),
            "LC_ALL": "C.UTF-8",
            "TZ": "Europe/Berlin",
            "ARKEON_ROOT": str(self.root),
            "XDG_CONFIG_HOME": str(self.root / "config"),
        }

    def tool(self, *arguments):
        return [str(self.programs / "akhostmgmt"), *arguments]

    def curl(self, resource, *options, headers=None):
        """curl as a script would call it for a resource below `config/hosts`."""
        url = f"https://{self.address}:1556/arkeon/config/hosts/{resource}"
        return [
            "curl", "-s", "--cacert", str(self.ca), "--cert", str(self.certificate),
            "--key", str(self.key), "-H", f"@{headers or self.headers}", "--compressed",
            *options, url,
        ]  # fmt: skip

    def floor(self, resource):
        url = f"https://{self.address}:1556/arkeon/config/hosts/{resource}"
        files = (self.ca, self.certificate, self.key, self.headers)
        return [str(self.programs / "akbench_floor"), *map(str, files), url]
