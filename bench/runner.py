"""Runs the programs to be measured, one after the other and in turns."""

import json
import os
import signal
import subprocess
import sys

from figures import Sample


class Failure(Exception):
    """A run that went wrong, or two programs that did not do the same."""


class Runner:
    """Runs commands through akbench_measure in the stage's environment."""

    def __init__(self, stage):
        self.stage = stage
        self._measure = str(stage.programs / "akbench_measure")

    def run(self, pipeline, output=os.devnull, statuses=None):
        """Runs a pipeline, given as a list of commands; every one has to end with its status."""
        errors = self.stage.folder / "errors"
        words = [self._measure, "-o", str(output), "-e", str(errors), *pipeline[0]]
        for command in pipeline[1:]:
            words += ["|", *command]
        found = json.loads(self._printed_by(words))
        wanted = statuses or [0] * len(pipeline)
        if found["statuses"] != wanted:
            said = errors.read_text(errors="replace")[:1000]
            raise Failure(f"{pipeline}: exit {found['statuses']} instead of {wanted}: {said}")
        return Sample(found["wall"], found["cpu"], found["peak_kib"])

    def _printed_by(self, words):
        """What a command prints. It takes all that it has started with it when this is stopped."""
        process = subprocess.Popen(
            words, env=self.stage.environment(), cwd=self.stage.folder, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, text=True, process_group=0)  # fmt: skip
        try:
            printed, _ = process.communicate()
        except BaseException:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            raise
        if process.returncode:
            raise subprocess.CalledProcessError(process.returncode, words)
        return printed

    def in_turns(self, programs, rounds):
        """Runs each of the programs once a round; their samples by name.

        `programs` are keyword arguments of `run` by name.
        """
        samples = {name: [] for name in programs}
        for _ in range(rounds):
            for name, arguments in programs.items():
                samples[name].append(self.run(**arguments))
        return samples

    def demand_same_output(self, ours, theirs):
        """Fails unless two pipelines print the same bytes; how many they are."""
        files = [self.stage.folder / name for name in ("output-1", "output-2")]
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
    """Progress, for the one who waits."""
    print(text, file=sys.stderr, flush=True)
