"""Checks that are told one by one, each in a line, and counted."""

LONGEST = 1000  # letters of a problem that are shown


class Checks:
    def __init__(self):
        self.passed = 0
        self.failed = 0

    def check(self, name, *problems):
        """Tells whether there are problems; empty ones are none."""
        found = [str(each) for each in problems if each]
        self.passed += not found
        self.failed += bool(found)
        told = [each[:LONGEST] for each in found]
        print(f"{'FAILED' if found else 'ok    '} {name}", *told, sep="\n       ", flush=True)

    def equal(self, name, found, expected):
        self.check(name, found != expected and f"{found!r} instead of {expected!r}")

    def same_set(self, name, found, expected):
        self.check(
            name,
            *(f"missing: {each}" for each in sorted(expected - found, key=str)),
            *(f"too much: {each}" for each in sorted(found - expected, key=str)),
        )
