#!/usr/bin/env python3
"""Every way in which a change can fail: the database stays as it was and the audit trail tells.

    refused_changes_test.py --tool PATH --devserver PATH
"""

import hashlib
import json
import os
import sys
import time
import unittest

import local_server
import refused_changes as table
from case_files import shell_status
from host_model import AuditRow, differences
from tool_model import OWN_HOST_ID, Failure, ToolModel, usages

ANSWER = b"y\n"


class Refusals(unittest.TestCase):
    """Runs the tool against a server and a model of it, which is new for each class."""

    @classmethod
    def setUpClass(cls):
        cls.server = local_server.Server("--hosts", "30")
        cls.addClassCleanup(cls.server.stop)
        cls.make_model()

    @classmethod
    def make_model(cls):
        hosts = json.loads(cls.server.listing("-json_compact"))["hosts"]
        cls.hosts = table.FaultyHosts(hosts, cls.server.address)
        cls.tool = ToolModel(cls.hosts, usages(cls.server.run))

    def dump(self):
        """All that the database holds but the audit trail."""
        with self.server.database() as database:
            return [each for each in database.iterdump() if "INSERT INTO \"audit\"" not in each]

    def audit(self):
        columns = "who, method, status, errorCode, resource, reason"
        with self.server.database() as database:
            rows = database.execute(f"SELECT {columns} FROM audit ORDER BY id").fetchall()
        return [AuditRow(*row) for row in rows]

    def attempt(self, *arguments, changes=False, environment=None):
        """Runs the tool and compares all that comes of it with the model; the model's outcome.

        Without `changes` the database must stay as it was to the byte.
        """
        before, known = self.dump(), len(self.audit())
        self.hosts.audit.clear()
        start = time.time_ns() // 1_000_000
        run = self.server.run(*arguments, stdin=ANSWER, environment=environment)
        self.hosts.window = (start, time.time_ns() // 1_000_000)
        as_bytes = [os.fsencode(argument) for argument in arguments]
        outcome = self.tool.run(as_bytes, ANSWER)
        self.assertEqual(run.stderr, outcome.stderr)
        self.assertEqual(run.stdout, outcome.stdout)
        self.assertEqual(run.returncode, shell_status(outcome.status))
        self.assertEqual(self.audit()[known:], self.hosts.audit)
        if changes:
            self.compare_hosts()
        else:
            self.assertEqual(self.dump(), before)
        return outcome

    def compare_hosts(self):
        found = json.loads(self.server.listing("-json_compact"))["hosts"]
        self.assertEqual(list(differences(self.hosts.records(), found)), [])


class RefusedByTheRules(Refusals):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        for name in (table.OWN_NAME, table.TAKEN_NAME):
            shared = ["-host", name, "-mappingname", table.SHARED_NAME, "-isshared"]
            assert cls.server.run("-add", *shared).returncode == 0
        cls.make_model()

    def test_wrong_arguments(self):
        for operation in table.CHANGES:
            for arguments in table.wrong_arguments(operation):
                with self.subTest(arguments=arguments):
                    asks_for_help = arguments[-1] in ("-h", "-help")
                    outcome = self.attempt(*arguments)
                    self.assertEqual(outcome.status, 0 if asks_for_help else 144)
                    self.assertEqual(self.hosts.audit, [])

    def test_hosts_that_are_not_there(self):
        for operation in table.OF_A_HOST:
            for host in table.UNKNOWN_HOSTS:
                with self.subTest(operation=operation, host=host):
                    outcome = self.attempt(*table.CHANGES[operation].arguments(operation, host))
                    self.assertNotEqual(outcome.status, 0)
                    self.assertLessEqual(len(self.hosts.audit), int(host[0] == "-hostid"))

    def test_what_the_server_refuses(self):
        for arguments in table.LATER_REFUSALS:
            with self.subTest(arguments=arguments):
                self.assertNotEqual(self.attempt(*arguments).status, 0)
                self.assertEqual(len(self.hosts.audit), 1)

    def test_a_new_host_that_is_declined(self):
        for answer in (b"n\n", b"no", b"maybe\nNO\ny\n"):
            with self.subTest(answer=answer):
                before = self.dump(), self.audit()
                run = self.server.run("-addhost", "-host", "new", stdin=answer)
                self.assertEqual((run.returncode, run.stderr), (0, b""))
                outcome = self.tool.run([b"-addhost", b"-host", b"new"], answer)
                self.assertEqual(run.stdout, outcome.stdout)
                self.assertEqual((self.dump(), self.audit()), before)


class ServerThatFails(Refusals):
    """Each row of the tables has a host of its own, whose address its rule names."""

    @classmethod
    def setUpClass(cls):
        changes = [(operation, fault) for operation, change in table.CHANGES.items()
                   for fault in table.FAULTS if change.method in fault.methods]  # fmt: skip
        lookups = [(operation, fault) for operation in table.OF_A_HOST
                   for fault in table.LOOKUP_FAULTS]  # fmt: skip
        numbered = list(enumerate(changes + lookups, 2))
        cls.changes, cls.lookups = numbered[:len(changes)], numbered[len(changes):]
        rules = []
        for number, (operation, fault) in cls.changes:
            change = table.CHANGES[operation]
            rules += ["--fault", f"{change.method} {change.target(number)} {fault.action}"]
        lookup = "/arkeon/config/hosts/hostmappings?mappedhostname="
        for number, (_, (action, _)) in cls.lookups:
            rules += ["--fault", f"GET {lookup}{table.host_name(number)} {action}"]
        cls.server = local_server.Server("--hosts", str(len(numbered) + 1), *rules)
        cls.addClassCleanup(cls.server.stop)
        cls.make_model()

    def test_faults_of_the_change(self):
        for number, (operation, fault) in self.changes:
            with self.subTest(operation=operation, fault=fault.action):
                if operation == "delete" and fault.status is None:
                    self.add_mapping(number)
                host = ["-host", self.host_for(operation, number)]
                self.hosts.fault = fault
                self.run_into(operation, host, changes=fault.status is None)
                self.assertEqual(len(self.hosts.audit), 1)

    def test_faults_of_the_lookup(self):
        for number, (operation, (action, code)) in self.lookups:
            with self.subTest(operation=operation, fault=action):
                self.hosts.lookup_failure = Failure(code)
                self.run_into(operation, ["-host", table.host_name(number)])
                self.assertEqual(self.hosts.audit, [])

    @staticmethod
    def host_for(operation, number):
        return f"added{number}" if operation == "addhost" else table.host_name(number)

    def add_mapping(self, number):
        """Gives a host the mapping that is going to be deleted, past the rules for its address."""
        arguments = ["-add", "-hostid", table.host_id(number), "-mappingname", table.NEW_MAPPING]
        self.hosts.fault = self.hosts.lookup_failure = None
        self.attempt(*arguments, "-isshared", changes=True)

    def run_into(self, operation, host, changes=False):
        arguments = table.CHANGES[operation].arguments(operation, host)
        if operation in ("updatehost", "add"):
            arguments = self.with_own_name(operation, arguments, host[1])
        try:
            limit = {"AK_TEST_BODY_BYTES": table.LIMIT}
            self.attempt(*arguments, changes=changes, environment=limit)
        finally:
            self.hosts.fault = self.hosts.lookup_failure = None

    @staticmethod
    def with_own_name(operation, arguments, host):
        """No two hosts may be renamed alike; a name that several have must be shared."""
        if operation == "add":
            return [*arguments, "-isshared"]
        return [f"{host}-renamed" if each == "renamed" else each for each in arguments]


class Unreachable(Refusals):
    def run_all(self, failures, environment=None):
        """Every operation, by name and by ID, with these failures of the look-up and the change."""
        self.hosts.lookup_failure, self.hosts.change_failure = failures
        try:
            for operation, change in table.CHANGES.items():
                for host in (["-host", table.OWN_NAME], ["-hostid", table.host_id(2)]):
                    if operation == "addhost":
                        host = ["-host", "new"]
                    with self.subTest(operation=operation, host=host):
                        arguments = change.arguments(operation, host)
                        outcome = self.attempt(*arguments, environment=environment)
                        self.assertNotEqual(outcome.status, 0)
        finally:
            self.hosts.lookup_failure = self.hosts.change_failure = self.hosts.fault = None

    def config(self, name, logins):
        """The environment for a configuration folder with this login file; None for no file."""
        folder = self.server.folder / name / "arkeon"
        folder.mkdir(parents=True)
        if logins is not None:
            (folder / "logins.json").write_text(logins)
            (folder / "logins.json").chmod(0o600)
        return {"XDG_CONFIG_HOME": str(folder.parent)}

    def login(self, token, **more):
        entry = {"server": self.server.address, "port": 1556, "token": token} | more
        return json.dumps({"logins": [entry]})

    def test_without_a_login(self):
        self.run_all(table.login_failure(5930), self.config("none", None))

    def test_with_a_login_elsewhere(self):
        elsewhere = self.login("token", server="elsewhere.example.com")
        self.run_all(table.login_failure(5930), self.config("elsewhere", elsewhere))

    def test_with_a_login_that_has_expired(self):
        expired = self.config("expired", self.login("token", expires=1))
        self.run_all(table.login_failure(118), expired)

    def test_with_a_damaged_login_file(self):
        self.run_all(table.login_failure(117), self.config("damaged", '{"logins": ['))

    def test_with_a_login_that_others_can_read(self):
        environment = self.config("open", self.login("token"))
        os.chmod(self.server.folder / "open" / "arkeon" / "logins.json", 0o644)
        self.run_all(table.login_failure(117), environment)

    def refused_by_the_server(self, code, environment):
        self.hosts.fault = table.Fault("", 401, code, code)
        self.hosts.caller = OWN_HOST_ID
        self.run_all((Failure(code), None), environment)

    def test_with_a_token_that_the_server_does_not_know(self):
        self.refused_by_the_server(117, self.config("unknown", self.login("nobody's")))

    def test_with_a_token_that_has_expired_at_the_server(self):
        digest = hashlib.sha256(b"old").hexdigest()
        self.server.halt()
        with self.server.database("rw") as database:
            database.execute("INSERT INTO tokens VALUES (?, 'admin', 1)", (digest,))
        self.assertTrue(self.server.start())
        self.refused_by_the_server(118, self.config("old", self.login("old")))

    def test_servers_that_are_not_to_be_trusted(self):
        for rule in ("expired", "wrong-name", "untrusted"):
            with self.subTest(certificate=rule):
                self.server.halt()
                self.assertTrue(self.server.start("--fault", f"CONNECT x1000000 {rule}"))
                self.run_all(table.connection_failure(7623))
        self.server.halt()
        self.assertTrue(self.server.start())

    def test_a_server_that_has_gone(self):
        self.server.halt()
        self.run_all(table.connection_failure(7621))
        self.assertTrue(self.server.start())

    def test_without_certificates_for_the_server(self):
        path = self.server.root / "etc" / "certificates.toml"
        text = path.read_text()
        path.unlink()
        self.run_all(table.connection_failure(7640))
        path.write_text(text)


if __name__ == "__main__":
    sys.exit(local_server.run_unit_tests(__doc__.splitlines()[0]))
