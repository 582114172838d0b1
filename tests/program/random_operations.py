"""Random command lines of every operation, right and wrong, about the hosts of a model."""

import command_line_model as line
from host_model import data

NEW_HOSTS = 60

NAMES = [
    "rack7", "RACK7", "db.example.com", "192.0.2.77", "2001:db8::7", "a b", " before", "after ",
    "..", ".", "100%", "%41", "%2e%2e", "q?x=1", "h#1", "a&b=c", "plus+plus", "büro", "BÜRO",
    "日本", "🙂", "'quoted\"", "$(id)", "%s%n", "semi;colon", "hostmappings", "comment", "x" * 1024,
    "ä" * 512, "tab\there", "line\nfeed", "bell\a", "c1\u0085", b"\xff\xfe", b"cut\xe2\x82",
]  # fmt: skip
REASONS = [
    "moved to rack 7", "ä – 日本", "100% sure", "a+b&c=d", "x" * 512, "x" * 513, "ä" * 256,
    "ä" * 257, "two\nlines", "tab\t", " padded ", "%41", b"\xff", "x" * 2000, "'\"\\/",
]  # fmt: skip
COMMENTS = [
    "This host placed in rack1", "", "   ", "\t", " padded ", 'a "quoted" \\ word', "line\nfeed",
    "\x01\x1f\x7f", "日本 🙂", "x" * 2048, "x" * 2049, "ä" * 1024, "ä" * 1025, "%s%n", "</a>",
    "\u2028\ufeff\U0010ffff", b"\xff", b"\xed\xa0\x80", b"\xc0\x80",
]  # fmt: skip
NUMBERS = ["0", "1"] * 5 + ["00", "01", "+1", " 1", "1 ", "2", "4294967296", "x", "0x1", "1 1"]
ANSWERS = [b"y\n"] * 4 + [
    b"", b"YES\n", b"yes", b"Y", b"n\n", b"NO\n", b"no", b"maybe\n\ny\n", b"maybe\nn\n",
    b" y\nno\n", b"y \nyes\n", b"maybe", b"n\ny\n", b"y\r\nn\n", b"x\nx\nx\n",
]  # fmt: skip
WRONG_VALUES = ["a/b", "a\\b", "x" * 1025, "ä" * 513, "", "-x", b"\xff\\", "x" * 1025 + "/"]
WEIGHTS = {
    "add": 24, "delete": 16, "addcomment": 10, "deletecomment": 6, "allowautoreissuecert": 9,
    "addhost": 10, "updatehost": 12, "list": 8,
}  # fmt: skip
OPERATIONS = {operation[0]: operation for operation in line.OPERATIONS}


def _bytes(value):
    return value if isinstance(value, bytes) else data(value)


class RandomOperations:
    """Depends on nothing but the random numbers and the model's hosts in their order."""

    def __init__(self, random, hosts, address):
        self._random = random
        self._hosts = hosts
        self._address = address

    def next(self):
        """The arguments and the standard input of a run."""
        name = self._random.choices(list(WEIGHTS), WEIGHTS.values())[0]
        operation = OPERATIONS[name]
        options = [(operation, None), *self._options(name)]
        if self._chance(0.06):
            options.append((line.SERVER, self._address))
        mistake = self._random.choice(MISTAKES) if self._chance(0.12) else None
        if mistake:
            mistake(self, options)
        if self._chance(0.5):
            self._random.shuffle(options)
        arguments = []
        for option, value in options:
            arguments += [self._spelled(option)] if value is None else [
                self._spelled(option), _bytes(value)]  # fmt: skip
        if self._chance(0.005):
            arguments.insert(self._random.randint(0, len(arguments)), b"stray")
        stdin = self._random.choice(ANSWERS) if name == "addhost" or self._chance(0.1) else b""
        return arguments, stdin

    def _chance(self, probability):
        return self._random.random() < probability

    def _spelled(self, option):
        name = self._random.choice(option)
        style = self._random.random()
        if style < 0.1:
            name = name.upper()
        elif style < 0.2:
            name = "".join(self._random.choice((c.upper(), c)) for c in name)
        return data("-" + name)

    def _options(self, name):
        makers = {
            "add": self._add, "delete": self._delete, "list": self._list,
            "addcomment": lambda: [self._host(), (line.COMMENT, self._random.choice(COMMENTS))],
            "deletecomment": lambda: [self._host()],
            "allowautoreissuecert": lambda: [
                self._host(), (line.REISSUE, self._random.choice(NUMBERS)), *self._reason()],
            "addhost": lambda: [(line.HOST, self._new_name()), *self._reason()],
            "updatehost": lambda: [
                self._host(), (line.NEW_NAME, self._new_name()), *self._reason()],
        }  # fmt: skip
        return makers[name]()

    def _add(self):
        mapping = (line.MAPPING, self._mapping_name() if self._chance(0.4) else self._pool_name())
        shared = [(line.SHARED, None)] if self._chance(0.5) else []
        return [self._host(), mapping, *shared, *self._reason()]

    def _delete(self):
        if self._chance(0.75):
            host = self._some_host()
            names = self._mapped_names(host)
            if names:
                mapping = (line.MAPPING, self._recased(self._random.choice(names)))
                return [(line.HOST_ID, host["uuid"]), mapping, *self._reason()]
        return [self._host(), (line.MAPPING, self._pool_name()), *self._reason()]

    def _list(self):
        filters = [
            lambda: [], lambda: [self._host()], lambda: [(line.APPROVED, None)],
            lambda: [(line.PENDING, None)], lambda: [(line.CONFLICT, None)],
            lambda: [(line.OWN, None)], lambda: [self._host()],
        ]  # fmt: skip
        chosen = self._random.choice(filters)()
        if self._chance(0.02):
            chosen += self._random.choice(filters)()
        formats = self._random.choices([line.SHORT, line.JSON, line.COMPACT], k=1)
        return chosen + [(each, None) for each in formats]

    def _reason(self):
        return [(line.REASON, self._random.choice(REASONS))] if self._chance(0.4) else []

    def _some_host(self):
        return self._random.choice(self._hosts.hosts)

    @staticmethod
    def _mapped_names(host):
        names = (mapping.get("mappedHostName") for mapping in host["hostMappings"])
        return [name for name in names if name is not None]

    def _host(self):
        """A host as the command line names it, now and then one that is not there."""
        host = self._some_host()
        which = self._random.random()
        if which < 0.4:
            return line.HOST_ID, host["uuid"]
        if which < 0.47:
            return line.HOST_ID, self._odd_id(host["uuid"])
        if which < 0.9:
            return line.HOST, self._mapping_name()
        if which < 0.96:
            return line.HOST, self._recased(host.get("hostName") or "nobody")
        return line.HOST, self._random.choice([*NAMES, "nobody"])

    def _odd_id(self, host_id):
        first = host_id[0]
        odd = [
            host_id.upper(), f"%{ord(first):02x}{host_id[1:]}", "%zz", "%4", host_id + "?",
            host_id + "?x=1", host_id + "#x", host_id + " ", "..", ".", "hostmappings", "ä",
            host_id + "\x7f", "nobody", "0" * 36, "a" * 3000, host_id + "%2Fcomment", b"\xff",
        ]  # fmt: skip
        return self._random.choice(odd)

    def _recased(self, name):
        return self._random.choice([name, name, name.upper(), name.swapcase()])

    def _mapping_name(self):
        """A mapped name of some host, if that has any."""
        names = self._mapped_names(self._some_host())
        return self._recased(self._random.choice(names)) if names else "nobody"

    def _pool_name(self):
        """One of the names that hosts vie for."""
        return self._random.choice(NAMES)

    def _new_name(self):
        which = self._random.random()
        if which < 0.7:
            return self._recased(f"new{self._random.randrange(NEW_HOSTS)}")
        if which < 0.8:
            return self._mapping_name()
        return self._pool_name()

    def leave_out(self, options):
        """Drops an option, but no JSON format: the long format has no model."""
        formats = (line.JSON, line.COMPACT)
        others = [i for i, (option, _) in enumerate(options) if option not in formats]
        options.pop(self._random.choice(others))

    def repeat(self, options):
        options.append(self._random.choice(options))

    def name_both_ways(self, options):
        option, value = options.pop(self._random.randrange(len(options)))
        options += [((name,), value) for name in option]

    def take_a_foreign_option(self, options):
        every = {option for table in line.OPERATIONS.values() for option in table}
        every = sorted(every - {line.SERVER})
        options.append((self._random.choice(every), self._random.choice([None, "1"])))

    def invent_an_option(self, options):
        names = ["", "-add", "serverx", "ä", "x" * 300, "host id", "%s"]
        options.append(((self._random.choice(names),), self._random.choice([None, "x"])))

    def leave_out_a_value(self, options):
        index = self._random.randrange(len(options))
        options[index] = (options[index][0], None)

    def give_a_switch_a_value(self, options):
        switches = [i for i, (_, value) in enumerate(options) if value is None]
        index = self._random.choice(switches)
        options[index] = (options[index][0], "yes")

    def name_the_host_twice(self, options):
        options.append((line.HOST, "testhost1"))
        options.append((line.HOST_ID, self._some_host()["uuid"]))

    def take_a_wrong_value(self, options):
        index = self._random.randrange(len(options))
        option, value = options[index]
        if value is not None and option != line.SERVER:
            options[index] = (option, self._random.choice(WRONG_VALUES))

    def ask_for_two_operations(self, options):
        options.append((self._random.choice(list(line.OPERATIONS)), None))

    def ask_for_help(self, options):
        options.append((line.HELP, None))


MISTAKES = [
    RandomOperations.leave_out, RandomOperations.repeat, RandomOperations.name_both_ways,
    RandomOperations.take_a_foreign_option, RandomOperations.invent_an_option,
    RandomOperations.leave_out_a_value, RandomOperations.give_a_switch_a_value,
    RandomOperations.name_the_host_twice, RandomOperations.take_a_wrong_value,
    RandomOperations.take_a_wrong_value, RandomOperations.ask_for_two_operations,
    RandomOperations.ask_for_help,
]  # fmt: skip
