"""What every host must be seen to do with the pane, whatever loads it."""

from peers import NAME_PREFIX, wait_until

PANE = "PreferenceMessagePort"
STEPS = ("mainViewDidLoad", "willSelect", "willUnselect")


class PaneLife:
    """Follows a pane's life from outside: by its host's lines, and by who owns the pane's port.

    `host` is the name in the lines "HOST: STEP"; `lines` is the stream of them.
    """

    def __init__(self, world, host, lines):
        self.host = host
        self.lines = lines
        self.port_changes = []
        self.watch = world.bus.add_signal_receiver(
            lambda name, old, new: self.port_changes.append("open" if new else "closed"), "NameOwnerChanged",
            "org.freedesktop.DBus", arg0=NAME_PREFIX + PANE)

    def steps(self):
        lines = [line.removeprefix(f"{self.host}: ") for line in self.lines.read()
                 if line.startswith(f"{self.host}: ")]
        return [line for line in lines if line in STEPS]

    def expect(self, *steps):
        """Waits until the life has come to these steps from its beginning, no fewer and no others, with the port opened
        by each showing and closed by each leaving."""
        changes = [{"willSelect": "open", "willUnselect": "closed"}[step] for step in steps if step != STEPS[0]]
        try:
            wait_until(lambda: self.steps()[:len(steps)] == list(steps) and self.port_changes[:len(changes)] == changes,
                       "the pane's life")
        finally:
            seen = (self.steps(), self.port_changes)
            assert seen == (list(steps), changes), f"expected {(list(steps), changes)}, saw {seen}"
