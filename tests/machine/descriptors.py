"""What a HID report descriptor says of the reports it describes, as far as a touch display's need it."""

import dataclasses

CONTACT_ID = 0x000D0051
CONTACT_COUNT = 0x000D0054
CONTACT_MAX = 0x000D0055
SCAN_TIME = 0x000D0056
TIP_SWITCH = 0x000D0042
IN_RANGE = 0x000D0032
CONFIDENCE = 0x000D0047
PRESSURE = 0x000D0030
X = 0x00010030
Y = 0x00010031
TOUCH_SCREEN = 0x000D0004


@dataclasses.dataclass
class Field:
    """One value in a report; `group` counts the collections of its application, so that a finger's fields share one."""

    application: int
    group: int
    usage: int
    bit: int
    size: int
    minimum: int
    maximum: int
    is_constant: bool


@dataclasses.dataclass
class Report:
    number: int
    bits: int = 0
    fields: list = dataclasses.field(default_factory=list)

    def pack(self, values):
        """The bytes of the report with the values of these (field, value) pairs, and 0 elsewhere."""
        whole = 0
        for field, value in values:
            whole |= (value & ((1 << field.size) - 1)) << field.bit
        data = whole.to_bytes((self.bits + 7) // 8, "little")
        return bytes([self.number]) + data if self.number else data


INPUT, FEATURE = 0x8, 0xB


def items(descriptor):
    """Each short item as its type, its tag and its value, unsigned and signed."""
    at = 0
    while at < len(descriptor):
        head = descriptor[at]
        size = (0, 1, 2, 4)[head & 3]
        data = descriptor[at + 1:at + 1 + size]
        yield (head >> 2) & 3, head >> 4, int.from_bytes(data, "little"), int.from_bytes(data, "little", signed=True)
        at += 1 + size


def parse(descriptor):
    """The reports that a descriptor describes, by kind (INPUT or FEATURE) and number."""
    state, kept, usages = {}, [], []
    depth, group, application = 0, 0, 0
    reports = {}
    for kind, tag, value, signed in items(descriptor):
        if kind == 1:
            if tag == 0xA:
                kept.append(dict(state))
            elif tag == 0xB:
                state = kept.pop()
            else:
                state[tag] = signed if tag in (0x1, 0x3) or (tag in (0x2, 0x4) and state.get(tag - 1, 0) < 0) else value
        elif kind == 2 and tag == 0:
            usages.append(state.get(0x0, 0) << 16 | value)
        elif kind == 2 and tag == 1:
            first = value
        elif kind == 2 and tag == 2:
            usages += [state.get(0x0, 0) << 16 | usage for usage in range(first, value + 1)]
        elif kind == 0:
            if tag == 0xA:
                if depth == 0:
                    application = usages[-1] if usages else 0
                depth += 1
                group += 1
            elif tag == 0xC:
                depth -= 1
                group += 1
            elif tag in (INPUT, FEATURE):
                report = reports.setdefault((tag, state.get(0x8, 0)), Report(state.get(0x8, 0)))
                for index in range(state.get(0x9, 0)):
                    usage = usages[min(index, len(usages) - 1)] if usages else 0
                    report.fields.append(Field(application, group, usage, report.bits, state[0x7],
                                               state.get(0x1, 0), state.get(0x2, 0), bool(value & 1)))
                    report.bits += state[0x7]
            usages = []
    return reports
