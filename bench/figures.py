"""Samples of several programs side by side: medians, ratios, aims, and how they are shown."""

import dataclasses
import statistics

UNITS = {"wall": ("ms", 1000), "cpu": ("ms", 1000), "peak_kib": ("MiB", 1 / 1024)}


@dataclasses.dataclass(frozen=True)
class Sample:
    """One run: seconds, CPU seconds, KiB."""

    wall: float
    cpu: float
    peak_kib: int


@dataclasses.dataclass
class Result:
    """A figure and what it should be at most; without an aim it is only told."""

    what: str
    value: float
    aim: float | None = None
    median_of_ratios: float | None = None

    @property
    def verdict(self):
        if self.aim is None:
            return ""
        return "met" if self.value <= self.aim else "missed"


@dataclasses.dataclass
class Row:
    """A work: the samples of every program, round by round, and what comes of them."""

    work: str
    samples: dict[str, list[Sample]] = dataclasses.field(default_factory=dict)
    results: list[Result] = dataclasses.field(default_factory=list)
    remark: str = ""


def median(samples, figure):
    return statistics.median(getattr(sample, figure) for sample in samples)


def ratio(ours, theirs, figure, aim=None, name=None):
    """The ratio of the medians, with the median of the ratios of the rounds beside it."""
    pairs = zip(ours, theirs, strict=True)
    ratios = [getattr(one, figure) / max(getattr(two, figure), 1e-9) for one, two in pairs]
    value = median(ours, figure) / max(median(theirs, figure), 1e-9)
    label = {"wall": "wall", "cpu": "CPU", "peak_kib": "peak"}[figure]
    return Result(f"{label} / {name}", value, aim, statistics.median(ratios))


def growth(figure, smaller, larger):
    """How a figure for each host grows between two (hosts, value) pairs; 1 means not at all."""
    (few, small), (many, large) = smaller, larger
    return Result(f"{figure} for each host, {many:,} / {few:,}", large / many / (small / few), 1.15)


def shown(figure, value):
    _, factor = UNITS[figure]
    return f"{value * factor:.2f}"


def markdown(head, lines):
    """A table whose columns stand below each other; every column but the first two to the right."""
    columns = list(zip(head, *lines))
    widths = [max(map(len, column)) for column in columns]
    rule = ["-" * width if i < 2 else "-" * (width - 1) + ":" for i, width in enumerate(widths)]
    return "".join(
        "| " + " | ".join(
            cell.ljust(width) if i < 2 else cell.rjust(width)
            for i, (cell, width) in enumerate(zip(line, widths))) + " |\n"
        for line in [head, rule, *lines])  # fmt: skip


def program_table(rows):
    """The medians of every program."""
    lines = [
        (row.work, name, str(len(samples)), *(shown(each, median(samples, each)) for each in UNITS))
        for row in rows for name, samples in row.samples.items()
    ]  # fmt: skip
    head = ("work", "program", "runs", "wall ms", "CPU ms", "peak MiB")
    return markdown(head, lines)


def result_table(rows):
    """What is compared, with the aims."""
    lines = []
    for row in rows:
        for each in row.results:
            aim = "" if each.aim is None else f"{each.aim:g}"
            rounds = "" if each.median_of_ratios is None else f"{each.median_of_ratios:.3f}"
            lines.append((row.work, each.what, f"{each.value:.3f}", rounds, aim, each.verdict))
        if row.remark:
            lines.append((row.work, row.remark, "", "", "", ""))
    head = ("work", "figure", "of medians", "of rounds", "at most", "aim")
    return markdown(head, lines)


def raw(rows):
    """Everything, for a file of JSON."""
    return [
        {
            "work": row.work,
            "remark": row.remark,
            "samples": {
                name: [dataclasses.asdict(sample) for sample in samples]
                for name, samples in row.samples.items()
            },
            "results": [
                dataclasses.asdict(each) | {"verdict": each.verdict} for each in row.results
            ],
        }
        for row in rows
    ]
