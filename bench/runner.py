"""Runs the programs to be measured, one at a time."""

import dataclasses
import json
import os
import signal
import subprocess
import sys

from metrics import Sample


class Failure(Exception):
    """A run that failed, or two programs that did not do the same."""


@dataclasses.dataclass(frozen=True)
class Program:
    """A pipeline of commands, its exit statuses, and its requests on each of its connections."""

    pipeline: list
    statuses: list | None = None  # all 0
    requests: tuple = (1,)


class Runner:
    """Runs commands through akbench_measure in the environment of a workspace."""

    def __init__(self, workspace):
        self.workspace = workspace
        self._measure = str(workspace.programs / "akbench_measure")

    def run(self, pipeline, output=os.devnull, statuses=None):
        """Runs a list of commands as a pipeline; fails if the exit statuses differ from these."""
        errors = self.workspace.directory / "errors"
        words = [self._measure, "-o", str(output), "-e", str(errors), *pipeline[0]]
        for command in pipeline[1:]:
            words += ["|", *command]
        measured = json.loads(self._output_of(words))
        expected = statuses or [0] * len(pipeline)
        if measured["statuses"] != expected:
            message = errors.read_text(errors="replace")[:1000]
            raise Failure(f"{pipeline}: exit {measured['statuses']}, not {expected}: {message}")
        return Sample(measured["wall"], measured["cpu"], measured["peak_kib"])

    def _output_of(self, words):
        """Returns a command's output. If interrupted, kills it with everything that it started."""
        process = subprocess.Popen(
            words, env=self.workspace.environment(), cwd=self.workspace.directory,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
            process_group=0)  # fmt: skip
        try:
            output, _ = process.communicate()
        except BaseException:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            raise
        if process.returncode:
            raise subprocess.CalledProcessError(process.returncode, words)
        return output

    def interleave(self, programs, iterations):
        """Runs each of the named programs once per iteration; returns their samples by name."""
        samples = {name: [] for name in programs}
        for _ in range(iterations):
            for name, program in programs.items():
                samples[name].append(self.run(program.pipeline, statuses=program.statuses))
        return samples

    def require_same_output(self, ours, theirs):
        """Fails unless two pipelines print the same bytes; returns the number of bytes."""
        files = [self.workspace.directory / name for name in ("output-1", "output-2")]
        try:
            for file, pipeline in zip(files, (ours, theirs)):
                self.run(pipeline, output=file)
            compared = subprocess.run(["cmp", *files], capture_output=True, text=True, check=False)
            if compared.returncode:
                raise Failure(f"{ours} and {theirs} differ: {compared.stdout}{compared.stderr}")
            return files[0].stat().st_size
        finally:
            for file in files:
                file.unlink(missing_ok=True)


def say(text):
    """Shows progress."""
    print(text, file=sys.stderr, flush=True)
