"""Samples of the measured programs, comparisons of their medians, and the table of results."""

import dataclasses
import statistics

METRICS = {"wall": ("wall ms", 1000), "cpu": ("CPU ms", 1000), "peak_kib": ("peak MiB", 1 / 1024)}


@dataclasses.dataclass(frozen=True)
class Sample:
    """One run: wall and CPU time in seconds, peak memory in KiB."""

    wall: float
    cpu: float
    peak_kib: int


@dataclasses.dataclass
class Comparison:
    """The tool's value beside a baseline's; `target`, if any, is the largest ratio wanted."""

    baseline: str
    metric: str
    ours: float
    theirs: float
    target: float | None = None
    paired_ratio: float | None = None

    @property
    def ratio(self):
        return self.ours / max(self.theirs, 1e-9)

    @property
    def outcome(self):
        if self.target is None:
            return ""
        return "met" if self.ratio <= self.target else "missed"


@dataclasses.dataclass
class Result:
    """The samples of a workload's programs, in order of the iterations, and their comparisons."""

    workload: str
    samples: dict[str, list[Sample]] = dataclasses.field(default_factory=dict)
    comparisons: list[Comparison] = dataclasses.field(default_factory=list)


def median(samples, metric):
    return statistics.median(getattr(sample, metric) for sample in samples)


def compare(ours, theirs, metric, baseline, target=None):
    """Compares the medians; the paired ratio is the median of the ratios within each iteration."""
    pairs = zip(ours, theirs, strict=True)
    ratios = [getattr(one, metric) / max(getattr(two, metric), 1e-9) for one, two in pairs]
    label, factor = METRICS[metric]
    values = (median(samples, metric) * factor for samples in (ours, theirs))
    return Comparison(baseline, label, *values, target, statistics.median(ratios))


def table(results):
    """All comparisons as a Markdown table."""
    head = ["workload", "compared with", "metric", "akhostmgmt", "baseline", "ratio",
            "paired ratio", "target", "outcome"]  # fmt: skip
    lines = [
        [result.workload, each.baseline, each.metric, f"{each.ours:.2f}", f"{each.theirs:.2f}",
         f"{each.ratio:.3f}", "" if each.paired_ratio is None else f"{each.paired_ratio:.3f}",
         "" if each.target is None else f"{each.target:g}", each.outcome]
        for result in results for each in result.comparisons
    ]  # fmt: skip
    texts = 3  # columns; those after them are aligned to the right
    widths = [max(map(len, column)) for column in zip(head, *lines)]
    rule = ["-" * width if i < texts else "-" * (width - 1) + ":" for i, width in enumerate(widths)]
    return "".join(
        "| " + " | ".join(
            cell.ljust(width) if i < texts else cell.rjust(width)
            for i, (cell, width) in enumerate(zip(line, widths))) + " |\n"
        for line in [head, rule, *lines])  # fmt: skip
