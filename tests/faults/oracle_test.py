#!/usr/bin/env python3
"""Whether the oracle finds every wrong outcome: tools that are wrong replace the real one."""

import pathlib
import shlex
import subprocess
import sys
import unittest

import faults
import inject_faults
import library_calls
import oracle
import scenarios

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "program"))

import local_server  # noqa: E402

PROGRAMS = local_server.PROGRAMS
SUCCESS = "status 0 although something is missing or different"
MEMORY = "out of memory is neither reported nor unnoticed"
NOT_ENOUGH_MEMORY = f"printf '%s' {shlex.quote(oracle.OUT_OF_MEMORY.decode())} >&2; exit 20"
RUNNER = pathlib.Path(__file__).with_name("inject_faults.py")


class ToolTest(unittest.TestCase):
    """A scenario, and tools that replace the real one."""

    def setUp(self):
        rows = scenarios.load(inject_faults.CASES)
        row = next(row for row in rows if row[0]["name"] == self.scenario_name)
        self.host = scenarios.Host(PROGRAMS.tool, PROGRAMS.devserver)
        self.addCleanup(self.host.close)
        self.scenario = scenarios.Scenario(self.host, *row)
        self.expected = inject_faults.expected_outcomes(self.scenario)
        self.max_seconds = scenarios.MAX_SECONDS

    def found(self, script, fault=None):
        """The problems found with a shell script as the tool; $tool is the real one."""
        tool = self.host.directory / "tool"
        real = shlex.quote(PROGRAMS.tool)
        tool.write_text(f"#!/bin/sh\ntool={real} token={self.scenario.token}\n{script}\n")
        tool.chmod(0o755)
        self.host.tool = tool
        outcome = self.scenario.run(max_seconds=self.max_seconds)
        return oracle.problems(outcome, self.expected, fault)

    def fault(self, **facts):
        return faults.Fault("system", "write", 1, False, **facts)


class WrongTool(ToolTest):
    """What a tool must not do in a run that succeeds if nothing disturbs it."""

    scenario_name = "list of many hosts, long"

    def test_the_real_tool_is_right(self):
        self.assertEqual(self.found('exec "$tool" "$@"'), [])

    def test_the_token_on_standard_output(self):
        found = self.found('"$tool" "$@"; echo "$token"; echo failed >&2; exit 1')
        self.assertEqual(found, ["the token is in standard output"])

    def test_the_token_on_standard_error(self):
        found = self.found('echo "not for $token" >&2; exit 1')
        self.assertEqual(found, ["the token is in standard error"])

    def test_the_token_in_the_log(self):
        found = self.found('"$tool" "$@"; status=$?; echo "$token" >>../logs/admin/admin.1.log')
        self.assertEqual(found, ["the token is in logs/admin/admin.1.log"])

    def test_the_token_in_a_file_left_behind(self):
        found = self.found('"$tool" "$@"; echo "$token" >core')
        self.assertEqual(found, ["the token is in work/core"])

    def test_a_run_that_hangs(self):
        self.max_seconds = 1
        self.assertEqual(self.found("sleep 60"), ["still running: killed"])

    def test_a_crash(self):
        self.assertEqual(self.found("kill -SEGV $$"), ["ended by SIGSEGV"])

    def test_an_abort_without_its_reason(self):
        script = "echo \"instance of 'std::logic_error'\" >&2; kill -ABRT $$"
        self.assertEqual(self.found(script), ["ended by SIGABRT"])

    def test_the_abort_without_a_primary_server_is_permitted(self):
        text = "no master server name found; instance of 'std::logic_error'"
        self.assertEqual(self.found(f'echo "{text}" >&2; kill -ABRT $$'), [])

    def test_a_crash_of_the_loader_is_permitted_before_anything_is_done(self):
        loading = self.fault(loading=True)
        self.assertEqual(self.found("kill -SEGV $$", loading), [])
        self.assertEqual(self.found("echo x; kill -SEGV $$", loading), ["ended by SIGSEGV"])

    def test_success_without_a_request(self):
        self.scenario.run()
        output = self.host.directory / "output"
        output.write_bytes(self.expected.first.out)
        self.assertEqual(self.found(f"cat {output}"), [SUCCESS])

    def test_success_with_half_a_listing(self):
        self.assertEqual(self.found('"$tool" "$@" | head -c 70000'), [SUCCESS])

    def test_success_with_a_different_byte(self):
        self.assertEqual(self.found('"$tool" "$@" | sed "2s/Host/Hose/"'), [SUCCESS])

    def test_success_with_a_message_on_standard_error(self):
        self.assertEqual(self.found('"$tool" "$@"; echo failed >&2'), [SUCCESS])

    def test_a_silent_failure(self):
        expected = ["status 3 without a message on standard error"]
        self.assertEqual(self.found("exit 3"), expected)
        self.assertEqual(self.found("exit 3", self.fault(may_be_silent=True)), [])

    def test_a_failure_with_a_message_is_right(self):
        self.assertEqual(self.found("echo failed >&2; exit 3"), [])

    def test_a_fault_of_the_log_that_is_noticed(self):
        found = self.found("echo failed >&2; exit 3", self.fault(harmless=True))
        self.assertEqual(found, ["the debug log's fault changed the run"])


class ToolOutOfMemory(ToolTest):
    """What a tool must not do when an allocation fails."""

    scenario_name = "list of many hosts, long"
    operator_new = faults.Fault("allocation", "operator_new", 1, False)
    argument_copy = faults.Fault("allocation", "argument_copy", 1, False)

    def found(self, script, fault=operator_new):
        return super().found(script, fault)

    def test_an_undisturbed_run_is_right(self):
        self.assertEqual(self.found('exec "$tool" "$@"'), [])

    def test_the_report_is_right_at_any_time(self):
        self.assertEqual(self.found(NOT_ENOUGH_MEMORY), [])
        self.assertEqual(self.found(f'"$tool" "$@" | head -c 70000; {NOT_ENOUGH_MEMORY}'), [])
        self.assertEqual(self.found(f'"$tool" "$@"; {NOT_ENOUGH_MEMORY}'), [])

    def test_the_end_of_the_output_without_its_beginning(self):
        found = self.found(f'"$tool" "$@" | tail -c 70000; {NOT_ENOUGH_MEMORY}')
        self.assertEqual(found, ["standard output: not the beginning of the undisturbed run's"])

    def test_another_message_before_the_report(self):
        found = self.found(f"echo failed >&2; {NOT_ENOUGH_MEMORY}")
        self.assertEqual(found, ["standard error: not the beginning of the undisturbed run's"])

    def test_another_request(self):
        found = self.found(f'"$tool" -list -short >&-; "$tool" "$@"; {NOT_ENOUGH_MEMORY}')
        self.assertIn("the requests: not the beginning of the undisturbed run's", found)

    def test_another_failure(self):
        self.assertEqual(self.found("echo failed >&2; exit 20"), [MEMORY])
        self.assertEqual(self.found(NOT_ENOUGH_MEMORY.replace("exit 20", "exit 1")), [MEMORY])

    def test_a_run_without_its_arguments_is_permitted_only_to_the_copy(self):
        script = "echo An invalid option was used. >&2; exit 144"
        self.assertEqual(self.found(script), [MEMORY])
        self.assertEqual(self.found(script, self.argument_copy), [])
        self.assertEqual(self.found(f'"$tool" "$@"; {script}', self.argument_copy), [MEMORY])


class WrongToolInAFailingRun(ToolTest):
    """The same in a run that fails by itself."""

    scenario_name = "the server's error"

    def test_success_for_a_failure(self):
        found = self.found('"$tool" "$@"; exit 0')
        self.assertEqual(found, [SUCCESS])


class CompleteRunner(unittest.TestCase):
    """The program that injects the faults."""

    def run_with(self, tool):
        command = [sys.executable, RUNNER, "--tool", tool, "--devserver", PROGRAMS.devserver,
                   "--shim", PROGRAMS.shim, "--kind", "library", "--scenario=-help",
                   "--share", "2"]  # fmt: skip
        return subprocess.run(command, capture_output=True, text=True, timeout=240)

    def test_a_right_tool_passes(self):
        run = self.run_with(PROGRAMS.tool)
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        self.assertRegex(run.stdout, r"\n[1-9]\d* faults in \d+ s, 0 problems\n$")

    def test_a_tool_that_always_succeeds_fails(self):
        with local_server.tempfile.TemporaryDirectory() as directory:
            tool = pathlib.Path(directory, "tool")
            tool.write_text(f'#!/bin/sh\n{shlex.quote(PROGRAMS.tool)} "$@"\nexit 0\n')
            tool.chmod(0o755)
            run = self.run_with(tool)
        self.assertEqual(run.returncode, 1)
        self.assertIn("FAILED -help: ", run.stdout)
        self.assertIn(SUCCESS, run.stdout)


class Calls(unittest.TestCase):
    """The functions that are made to fail."""

    def test_every_call_of_the_tool_is_known(self):
        self.assertEqual(library_calls.unknown(PROGRAMS.tool, PROGRAMS.shim), set())

    def test_an_unknown_call_is_found(self):
        self.assertIn("sqlite3_open_v2", library_calls.unknown(PROGRAMS.devserver, PROGRAMS.shim))


def main():
    parser = local_server.argument_parser(__doc__)
    parser.add_argument("--shim", required=True)
    parser.parse_args(namespace=PROGRAMS)
    result = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    failed = len(result.failures) + len(result.errors)
    return local_server.close(max(result.testsRun - failed, 0), failed)


if __name__ == "__main__":
    sys.exit(main())
