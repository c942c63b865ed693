# SPDX-License-Identifier: MIT
"""The appliance's control module for Python programs: one file, and nothing but the standard library.

It runs vokctl with --json instead of speaking the socket's protocol. vokctl knows the protocol's bytes, asks
only a service that root or you yourself run, and what it prints is promised to stay (programs.md). The
protocol's answers leave more to their reader. Starting vokctl takes a few milliseconds.

    import vokcontrol

    appliance = vokcontrol.Appliance()
    for share in appliance.status()["shares"]:
        print(share["name"], share["used_kib"])
    try:
        appliance.create_user("carla", "secret")
    except vokcontrol.Refused as refusal:
        print(refusal)
"""
import json
import subprocess


class Failure(Exception):
    """vokctl has failed. Its sentence is the message, its exit code is in "code"."""

    def __init__(self, code, sentence):
        super().__init__(sentence)
        self.code = code


class Refused(Failure):
    """The appliance has refused (1)."""


class WrongUsage(Failure):
    """A value that vokctl does not take, or settings that it does not understand (2)."""


class Unreachable(Failure):
    """Nothing listens on the socket (3)."""


class NotPermitted(Failure):
    """This account may not ask, or a stranger runs the service (4)."""


class NoAnswer(Failure):
    """No answer in time (5)."""


class NoData(Failure):
    """Nothing has been published, or it is damaged or too old (6)."""


_FAILURES = {1: Refused, 2: WrongUsage, 3: Unreachable, 4: NotPermitted, 5: NoAnswer, 6: NoData}


class Appliance:
    """Each method asks once. What it returns is the JSON that docs/json describes, as dict and list."""

    def __init__(self, socket=None, timeout=None, program="vokctl"):
        """socket and timeout (in seconds) are those of the settings if they are None."""
        self._command = [program]
        self._options = []
        if socket is not None:
            self._options += ["--socket", socket]
        if timeout is not None:
            self._options += ["--timeout", str(timeout)]

    # ---- What was published; these need no service ----

    def status(self, max_age=None, wait=None):
        """Disk, shares and what needs attention. NoData if it is older than max_age seconds."""
        options = [] if max_age is None else ["--max-age", str(max_age)]
        options += [] if wait is None else ["--wait", str(wait)]
        return self._json(["status", *options, "--json"])

    def doctor(self, *checks):
        """What is wrong with the appliance. That something is wrong is an answer, no failure."""
        return self._json(["doctor", "--json", "--", *checks], good=(0, 1))

    # ---- Requests to the service ----

    def collect(self, wait):
        """Measures the shares, and waits at most so many seconds until that has been published."""
        self._ask(["collect", "--wait", str(wait)])

    def shares(self):
        """A list of dicts: name, property."""
        return self._ask_json(["shares", "list"])["shares"]

    def share(self, name):
        """One of them."""
        return self._ask_json(["shares", "show"], name)

    def create_share(self, name, user=None):
        """A new share for everybody, or for one user."""
        self._ask(["shares", "create", *(["--public"] if user is None else ["--for", user])], name)

    def users(self):
        """A list of names."""
        return self._ask_json(["users", "list"])["users"]

    def create_user(self, name, password):
        """A new account."""
        self._ask(["users", "create"], name, password=password)

    def is_password(self, name, password):
        """Whether this is the user's password. A user that there is not has none."""
        try:
            self._ask(["users", "verify"], name, password=password)
        except Refused:
            return False
        return True

    def backups(self):
        """The capacity of the disk in GB, and the shares with their last backups."""
        return self._ask_json(["backup", "list"])

    def report_backup(self, user, state):
        """Keeps the state of a user's backup, a digit."""
        self._ask(["backup", "report", "--state", str(state)], user)

    def version(self):
        """The build."""
        return self._ask(["version"]).rstrip("\n")

    # ---- How vokctl is run ----

    def _ask_json(self, words, *names):
        return json.loads(self._ask([*words, "--json"], *names))

    def _ask(self, words, *names, password=None):
        # A password is never on a command line, and a name with a hyphen in front is no option.
        extra = ["--empty-password"] if password == "" else []
        given = None if password is None else password + "\n"
        return self._run([*words, *self._options, *extra, "--", *names], given)

    def _json(self, words, good=(0,)):
        return json.loads(self._run(words, good=good))

    def _run(self, words, given=None, good=(0,)):
        ended = subprocess.run(
            [*self._command, *words], input=given or "", capture_output=True, encoding="utf-8",
            errors="surrogateescape", check=False)
        if ended.returncode not in good:
            sentence = ended.stderr.strip().removeprefix("vokctl: ")
            raise _FAILURES.get(ended.returncode, Failure)(ended.returncode, sentence)
        return ended.stdout
