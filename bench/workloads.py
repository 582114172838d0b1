"""The workloads, what the tool is compared with in each, and the targets."""

import functools
import pathlib
import shlex

import hosts
from metrics import Comparison, Result, compare, median
from runner import Failure, Program, say

TOOL = "akhostmgmt"
SOURCES = pathlib.Path(__file__).resolve().parent
HOST_ID = "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0"
MAPPING = "bench-mapping"
FORMATS = {
    "long": ([], ["-j", "-f", "list-long.jq"]),
    "short": (["-short"], ["-j", "-f", "list-short.jq"]),
    "json": (["-json"], ["-j", "--indent", "3", "."]),
    "json_compact": (["-json_compact"], ["-c", "."]),
}
LONG_LISTING = 10_000  # hosts; listings of more are run in fewer iterations


class Bench:
    """What all workloads need: the runner, the server and the numbers of iterations."""

    def __init__(self, runner, server, iterations, long_iterations):
        self.runner = runner
        self.workspace = runner.workspace
        self.server = server
        self.iterations = iterations
        self.long_iterations = long_iterations

    def require_same_requests(self, programs):
        """Fails unless all programs send the same requests; returns those of the first one."""
        sent = []
        for program in programs:
            self.runner.run(program.pipeline)
            sent.append(self.server.new_requests(sum(program.requests)))
        if any([each.content() for each in requests] != [each.content() for each in sent[0]]
               for requests in sent):
            raise Failure(f"{programs} do not send the same requests: {sent}")  # fmt: skip
        return sent[0]

    def measure(self, programs, iterations):
        """Interleaves the programs; fails unless each made its connections and no others.

        nginx numbers all connections, so one without a request leaves a gap.
        """
        samples = self.runner.interleave(programs, iterations)
        counts = [count for each in programs.values() for count in each.requests] * iterations
        logged = self.server.new_requests(sum(counts))
        first = logged[0].connection
        expected = [first + i for i, count in enumerate(counts) for _ in range(count)]
        made = [each.connection for each in logged]
        if made != expected:
            raise Failure(f"connections of the requests: {made}, not {expected}")
        if any(each.ssl_session_reused != "." for each in logged):
            raise Failure("a TLS session was resumed")
        return samples


def compare_times(name, samples, targets):
    """Compares the tool's times with those of the baselines; `targets` are by baseline."""
    comparisons = [
        compare(samples[TOOL], samples[baseline], metric, baseline, target)
        for baseline, target in targets.items() for metric in ("wall", "cpu")
    ]  # fmt: skip
    return [Result(name, samples, comparisons)]


def local_workload(name, arguments, status, bench):
    """A run without a request."""
    programs = {
        TOOL: Program([bench.workspace.tool(*arguments)], [status]),
        "curl --version": Program([["curl", "--version"]]),
        "git --version": Program([["git", "--version"]]),
        "/bin/true": Program([["/bin/true"]]),
    }
    samples = bench.runner.interleave(programs, bench.iterations)
    targets = {"curl --version": 0.5, "git --version": None, "/bin/true": None}
    return compare_times(name, samples, targets)


def write_host(bench):
    record = hosts.host(1, bench.workspace.address) | {"uuid": HOST_ID}
    for name, reply in (("host.json", record), ("found.json", {"hosts": [record]})):
        hosts.write_reply(bench.server.replies / name, [hosts.compact(reply).encode()])


def request_workload(bench):
    write_host(bench)
    ours = [bench.workspace.tool("-list", "-hostid", HOST_ID, "-json")]
    curl = [bench.workspace.curl(HOST_ID)]
    pipeline = [*curl, ["jq", *FORMATS["json"][1]]]
    bench.runner.require_same_output(ours, pipeline)
    bench.server.new_requests(2)
    programs = {TOOL: Program(ours), "curl": Program(curl), "curl+jq": Program(pipeline)}
    bench.require_same_requests(programs.values())
    samples = bench.measure(programs, bench.iterations)
    return compare_times("request", samples, {"curl": 1.1, "curl+jq": 0.6})


def change_programs(workspace):
    """A host lookup and a change: by the tool, by one curl, and by a command line of a shell."""
    ours = workspace.tool("-add", "-host", "bench-host", "-mappingname", MAPPING)
    find = workspace.curl("hostmappings?mappedhostname=bench-host")
    put = workspace.curl(f"{HOST_ID}/hostmappings/{MAPPING}", "-X", "PUT", "-d",
                         '{"isShared":false}', headers=workspace.change_headers)  # fmt: skip
    put_found = shlex.join(put).replace(HOST_ID, "$id")
    line = f"id=$({shlex.join(find)} | jq -r '.hosts[0].uuid') && {put_found}"
    return {
        TOOL: Program([ours], requests=(2,)),
        "curl": Program([[*find, "--next", *put[1:]]], requests=(2,)),
        "curl+jq, curl": Program([["sh", "-c", line]], requests=(1, 1)),
    }


def change_workload(bench):
    write_host(bench)
    programs = change_programs(bench.workspace)
    bench.require_same_requests(programs.values())
    samples = bench.measure(programs, bench.iterations)
    return compare_times("change", samples, {"curl": None, "curl+jq, curl": 0.4})


def listing_commands(workspace, form):
    """The tool's listing in a format, and the pipeline that prints the same."""
    options, words = FORMATS[form]
    words = [str(SOURCES / word) if word.endswith(".jq") else word for word in words]
    return [workspace.tool("-list", *options)], [workspace.curl("hostmappings"), ["jq", *words]]


def compare_transfer(bench, size):
    """Compares the bytes that the server sends for the listing with those of the reply's body."""
    commands = (bench.workspace.tool("-list", "-json_compact"),
                bench.workspace.floor("hostmappings"),
                bench.workspace.curl("hostmappings"))  # fmt: skip
    [ours] = bench.require_same_requests([Program([command]) for command in commands])
    return Comparison("body", "transferred MiB", ours.bytes_sent / 2**20, size / 2**20, 0.15)


def compare_listing(ours, floor, pipeline):
    return [
        compare(ours, floor, "cpu", "floor", 1.15),
        compare(ours, floor, "peak_kib", "floor", 1.1),
        compare(ours, pipeline, "wall", "curl+jq"),
        compare(ours, pipeline, "cpu", "curl+jq"),
    ]


def listing_workload(count, forms, bench):
    """Listings of `count` hosts; the formats share one run of the floor per iteration."""
    say(f"  writing the reply with {count:,} hosts")
    chunks = hosts.listing(count, bench.workspace.address)
    size = hosts.write_reply(bench.server.replies / "listing.json", chunks)
    programs = {"floor": Program([bench.workspace.floor("hostmappings")])}
    for form in forms:
        say(f"  comparing the output of {form}")
        ours, pipeline = listing_commands(bench.workspace, form)
        bench.runner.require_same_output(ours, pipeline)
        bench.server.new_requests(2)
        programs |= {f"{TOOL} {form}": Program(ours), f"curl+jq {form}": Program(pipeline)}
    transfer = compare_transfer(bench, size)
    say("  measuring")
    iterations = bench.iterations if count <= LONG_LISTING else bench.long_iterations
    samples = bench.measure(programs, iterations)
    floor = samples["floor"]
    results = [Result(f"list-{count}", {"floor": floor}, [transfer])]
    for form in forms:
        ours, pipeline = samples[f"{TOOL} {form}"], samples[f"curl+jq {form}"]
        comparisons = compare_listing(ours, floor, pipeline)
        programs = {TOOL: ours, "curl+jq": pipeline}
        results.append(Result(f"list-{count}-{form}", programs, comparisons))
    return results


def growth_results(results, sizes):
    """Compares the tool's cost per host in the largest listing with that for 10,000 hosts."""
    few, many = LONG_LISTING, max(sizes)
    ours = {each.workload: each.samples[TOOL] for each in results if TOOL in each.samples}
    growth = []
    for form in FORMATS:
        pair = [(size, ours.get(f"list-{size}-{form}")) for size in (many, few)]
        if few < many and all(samples for _, samples in pair):
            cpu = [median(samples, "cpu") * 1e6 / size for size, samples in pair]
            peak = [median(samples, "peak_kib") / size for size, samples in pair]
            growth.append(Result(f"growth-{form}", comparisons=[
                Comparison(f"{few:,} hosts", "CPU µs per host", *cpu, 1.15),
                Comparison(f"{few:,} hosts", "peak KiB per host", *peak, 1.15),
            ]))  # fmt: skip
    return growth


def is_selected(name, patterns):
    """Whether a pattern is the workload's name or a prefix that ends before a hyphen."""
    return not patterns or any(name == each or name.startswith(f"{each}-") for each in patterns)


def selected(sizes, patterns):
    """The functions of the selected workloads, by name; each is called with the Bench."""
    functions = {
        "help": functools.partial(local_workload, "help", ["-help"], 0),
        "usage-error": functools.partial(local_workload, "usage-error", ["-nothing"], 144),
        "request": request_workload,
        "change": change_workload,
    }
    functions = {name: each for name, each in functions.items() if is_selected(name, patterns)}
    for size in sizes:
        forms = [form for form in FORMATS if is_selected(f"list-{size}-{form}", patterns)]
        if forms:
            functions[f"list-{size}"] = functools.partial(listing_workload, size, forms)
    return functions
