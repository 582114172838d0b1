"""The works to be measured and what their figures should be."""

import functools
import pathlib

import figures
import hosts
from figures import Result, Row
from runner import Failure, Runner, say
from slow_network import SlowNetwork, Unavailable
from stage import Stage
from web_server import WebServer

TOOL = "akhostmgmt"
SOURCES = pathlib.Path(__file__).resolve().parent
HOST_ID = "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0"
MAPPING = "bench-mapping"
CHANGE = '{"isShared":false}'
DELAY = 0.05  # seconds each way
FORMATS = {
    "long": ([], ["-j", "-f", "list-long.jq"]),
    "short": (["-short"], ["-j", "-f", "list-short.jq"]),
    "json": (["-json"], ["-j", "--indent", "3", "."]),
    "json_compact": (["-json_compact"], ["-c", "."]),
}
MANY_ROUNDS_UP_TO = 10_000  # hosts


class Bench:
    """What all works need: where to run, where the replies come from, how often."""

    def __init__(self, runner, server, rounds, long_rounds):
        self.runner = runner
        self.stage = runner.stage
        self.server = server
        self.rounds = rounds
        self.long_rounds = long_rounds

    def requests_of(self, pipeline, requests):
        """Runs a pipeline once; its requests, all on one connection and nothing besides."""
        self.runner.run([self.stage.curl(HOST_ID)])
        before = self.server.new_requests(1)[0].connection
        self.runner.run(pipeline)
        made = self.server.new_requests(requests)
        self.runner.run([self.stage.curl(HOST_ID)])
        after = self.server.new_requests(1)[0].connection
        if {each.connection for each in made} != {before + 1} or after != before + 2:
            raise Failure(f"{pipeline}: not one connection: {made}")
        if any(each.ssl_session_reused != "." for each in made):
            raise Failure(f"{pipeline}: a TLS session was taken up again: {made}")
        return made

    def demand_same_requests(self, ours, theirs, count):
        """Fails unless both programs ask for the same; our requests."""
        made = self.requests_of(ours, count)
        others = self.requests_of(theirs, count)
        if [each.asked() for each in made] != [each.asked() for each in others]:
            raise Failure(f"{theirs} does not ask as {ours}: {others} {made}")
        return made

    def timed(self, programs, rounds, requests):
        """Runs in turns programs that make so many requests each, on one connection each."""
        samples = self.runner.in_turns(programs, rounds)
        runs = rounds * len(programs)
        made = [each.connection for each in self.server.new_requests(runs * requests)]
        self.connections_of_a_run = (made[-1] - made[0] + 1) / runs
        if set(made) != set(range(made[0], made[0] + runs)):
            raise Failure(f"{runs} runs made these connections: {sorted(set(made))}")
        return samples


def local_work(name, arguments, status, bench):
    """A run that needs no server, beside the least that a process costs."""
    programs = {
        TOOL: {"pipeline": [bench.stage.tool(*arguments)], "statuses": [status]},
        "/bin/true": {"pipeline": [["/bin/true"]]},
        "git --version": {"pipeline": [["git", "--version"]]},
    }
    samples = bench.runner.in_turns(programs, bench.rounds)
    ours = samples[TOOL]
    results = [
        figures.ratio(ours, samples["/bin/true"], figure, 2.5, "true") for figure in ("wall", "cpu")
    ] + [figures.ratio(ours, samples["git --version"], "wall", 1, "git")]
    return [Row(name, samples, results)]


def write_host(bench):
    record = hosts.host(1, bench.stage.address) | {"uuid": HOST_ID}
    replies = bench.server.replies
    hosts.write_reply(replies / "host.json", [hosts.compact(record).encode()])
    found = hosts.compact({"hosts": [record]})
    hosts.write_reply(replies / "found.json", [found.encode()])
    return record


def beside_curl(name, ours, theirs, requests, bench):
    programs = {TOOL: {"pipeline": ours}, "curl": {"pipeline": theirs}}
    samples = bench.timed(programs, bench.rounds, requests)
    results = [
        figures.ratio(samples[TOOL], samples["curl"], figure, 0.9, "curl")
        for figure in ("wall", "cpu")
    ] + [Result("connections of each run", bench.connections_of_a_run, 1)]
    return [Row(name, samples, results)]


def request_work(bench):
    write_host(bench)
    ours = ["-list", "-hostid", HOST_ID]
    theirs = [bench.stage.curl(HOST_ID)]
    compact = [bench.stage.tool(*ours, "-json_compact")]
    bench.runner.demand_same_output(compact, [*theirs, ["jq", "-c", "."]])
    bench.server.new_requests(2)
    bench.demand_same_requests([bench.stage.tool(*ours)], theirs, 1)
    return beside_curl("request", [bench.stage.tool(*ours)], theirs, 1, bench)


def change_commands(stage, name):
    """The tool's look-up and change, and curl's on one connection."""
    ours = stage.tool("-add", "-host", name, "-mappingname", MAPPING)
    look_up = f"hostmappings?mappedhostname={name}"
    change = ["-X", "PUT", "-d", CHANGE]
    put = stage.curl(f"{HOST_ID}/hostmappings/{MAPPING}", *change, headers=stage.change_headers)
    return ours, [*stage.curl(look_up), "--next", *put[1:]]


def change_work(bench):
    name = write_host(bench)["hostName"].replace("ü", "ue")
    ours, theirs = change_commands(bench.stage, name)
    bench.demand_same_requests([ours], [theirs], 2)
    return beside_curl("change", [ours], [theirs], 2, bench)


def delayed_change(means, bench):
    """The change over a slow line: how often each program waits for the server's answer."""
    [row] = change_work(bench)
    trips = {
        name: int(figures.median(samples, "wall") / (2 * DELAY))
        for name, samples in row.samples.items()
    }
    wall = figures.ratio(row.samples[TOOL], row.samples["curl"], "wall", None, "curl")
    results = [Result("round trips, at most curl's", trips[TOOL], trips["curl"]), wall]
    return [Row("delay", row.samples, results, f"{DELAY * 1000:g} ms each way by {means}")]


def delay_work(bench):
    """The change with a server that is far away, if this machine can have one."""
    try:
        network = SlowNetwork(DELAY)
    except Unavailable as reason:
        return [Row("delay", remark=f"not measured: {reason}")]
    with network, Stage(bench.stage.programs, network.address) as stage:
        server = WebServer(stage)
        network.server.call(server.__enter__)
        try:
            far = Bench(Runner(stage), server, bench.rounds, bench.long_rounds)
            return network.client.call(delayed_change, network.means, far)
        finally:
            network.server.call(server.__exit__)


def listing_commands(stage, form):
    """The tool's listing in a format, and the pipeline that prints the same."""
    options, words = FORMATS[form]
    words = [str(SOURCES / word) if word.endswith(".jq") else word for word in words]
    return [stage.tool("-list", *options)], [stage.curl("hostmappings"), ["jq", *words]]


def wire_share(bench, size):
    """How much of the listing's bytes go over the wire, for one and all."""
    floor = [bench.stage.floor("hostmappings")]
    ours, _ = listing_commands(bench.stage, "json_compact")
    made = bench.demand_same_requests(ours, floor, 1)
    bench.demand_same_requests(floor, [bench.stage.curl("hostmappings")], 1)
    return Result("bytes on the wire / body", made[0].bytes_sent / size, 0.15)


def listing_results(ours, floor, pipeline, form):
    plain = form in ("long", "short")
    return [
        figures.ratio(ours, floor, "cpu", 1.25 if plain else None, "floor"),
        figures.ratio(ours, floor, "wall", None, "floor"),
        figures.ratio(ours, floor, "peak_kib", 1.1, "floor"),
        figures.ratio(ours, pipeline, "wall", 0.2, "curl and jq"),
        figures.ratio(ours, pipeline, "cpu", 0.2, "curl and jq"),
    ]


def listing_work(count, forms, bench):
    """Listings of so many hosts; one run of the floor a round is shared by all formats."""
    say(f"  writing the reply with {count:,} hosts")
    pieces = hosts.listing(count, bench.stage.address)
    size = hosts.write_reply(bench.server.replies / "listing.json", pieces)
    write_host(bench)
    programs = {"floor": {"pipeline": [bench.stage.floor("hostmappings")]}}
    for form in forms:
        say(f"  comparing the bytes of {form}")
        ours, theirs = listing_commands(bench.stage, form)
        bench.runner.demand_same_output(ours, theirs)
        bench.server.new_requests(2)
        programs |= {f"{TOOL} {form}": {"pipeline": ours}, f"jq {form}": {"pipeline": theirs}}
    share = wire_share(bench, size)
    say("  measuring")
    rounds = bench.rounds if count <= MANY_ROUNDS_UP_TO else bench.long_rounds
    samples = bench.timed(programs, rounds, 1)
    rows = [Row(f"list-{count}", {"floor": samples["floor"]}, [share])]
    for form in forms:
        ours, pipeline = samples[f"{TOOL} {form}"], samples[f"jq {form}"]
        results = listing_results(ours, samples["floor"], pipeline, form)
        rows.append(Row(f"list-{count}-{form}", {TOOL: ours, "curl and jq": pipeline}, results))
    return rows


def growth_result(label, figure, pair):
    points = [(size, figures.median(samples, figure)) for size, samples in pair]
    return figures.growth(label, *points)


def growth_rows(rows, sizes):
    """How the tool's time and memory for each host grow from 10,000 hosts to the most."""
    few, many = MANY_ROUNDS_UP_TO, max(sizes)
    found = {row.work: row.samples[TOOL] for row in rows if TOOL in row.samples}
    result = []
    for form in FORMATS:
        pair = [(size, found.get(f"list-{size}-{form}")) for size in (few, many)]
        if few < many and all(samples for _, samples in pair):
            results = [growth_result("CPU", "cpu", pair), growth_result("peak", "peak_kib", pair)]
            result.append(Row(f"growth-{form}", results=results))
    return result


def chosen(name, patterns):
    """Whether a work is meant: by its whole name or by the words that it begins with."""
    return not patterns or any(name == each or name.startswith(f"{each}-") for each in patterns)


def plan(sizes, patterns):
    """The functions to call with the bench, by name, of the works that are chosen."""
    works = {
        "help": functools.partial(local_work, "help", ["-help"], 0),
        "usage-error": functools.partial(local_work, "usage-error", ["-nothing"], 144),
        "request": request_work,
        "change": change_work,
        "delay": delay_work,
    }
    works = {name: work for name, work in works.items() if chosen(name, patterns)}
    for size in sizes:
        forms = [form for form in FORMATS if chosen(f"list-{size}-{form}", patterns)]
        if forms:
            works[f"list-{size}"] = functools.partial(listing_work, size, forms)
    return works
