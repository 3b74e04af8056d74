"""Touch displays as they are sold, by what they tell the kernel of themselves: the bytes of their report descriptors,
which Linux's own tests of its HID drivers list, and what has to come of them."""

import dataclasses

USB = 3


@dataclasses.dataclass(frozen=True)
class Model:
    """`nodes` is how many event nodes come of it, of which one is the touch screen. `size_mm` is None where the glass
    does not tell its size in a unit that the kernel knows."""

    name: str
    vendor: int
    product: int
    fingers: int
    size_mm: tuple
    nodes: int
    descriptor: bytes


def repeated(finger, times):
    return " ".join([finger] * times)


# Windows 8: two fingers in a report and up to ten in a frame, a time in each, and a middle of each finger beside its
# place; in centimetres.
ELAN_FINGER = """05 0d 09 42 15 00 25 01 75 01 95 01 81 02 09 32 81 02 75 06 09 51 25 3f 81 02 26 ff 00 75 08 09 48 81 02
09 49 81 02 95 01 05 01 26 c0 0e 75 10 55 0f 65 11 09 30 35 00 46 26 01 95 02 81 02 26 40 08 46 a6 00 09 31 81 02 c0"""
ELAN = Model("ELAN Touchscreen", 0x04F3, 0x200A, 10, (294, 166), 1, bytes.fromhex(f"""
05 0d 09 04 a1 01 85 01 09 22 a1 02 {ELAN_FINGER} a1 02 {ELAN_FINGER} 05 0d 09 56 55 00 65 00 27 ff ff 00 00 95 01 75 20
81 02 09 54 25 7f 95 01 75 08 81 02 85 0a 09 55 25 0a b1 02 85 0e 06 00 ff 09 c5 15 00 26 ff 00 75 08 96 00 01 b1 02 c0
"""))

# Windows 7: two fingers; a mouse before and a pen behind the touch screen, of which the kernel drops the mouse; in
# centimetres.
IRTOUCH_FINGER = """09 42 15 00 25 01 75 01 95 01 81 02 09 32 81 02 09 47 81 02 95 05 81 03 09 51 75 08 95 01 81 02 05 01
09 30 26 ff 7f 55 0f 65 11 35 00 46 51 02 75 10 95 01 81 02 09 31 35 00 46 73 01 81 02 c0"""
IRTOUCH = Model("IRTOUCHSYSTEMS IRTOUCH", 0x6615, 0x0070, 2, (593, 371), 2, bytes.fromhex(f"""
05 01 09 02 a1 01 85 10 09 01 a1 00 05 09 19 01 29 02 15 00 25 01 95 02 75 01 81 02 95 06 81 03 05 01 09 30 09 31 15 00
26 ff 7f 75 10 95 02 81 02 c0 c0 05 0d 09 04 a1 01 85 30 09 22 a1 02 {IRTOUCH_FINGER} a1 02 05 0d {IRTOUCH_FINGER}
05 0d 09 54 15 00 26 02 00 75 08 95 01 81 02 85 03 09 55 15 00 26 ff 00 75 08 95 01 b1 02 c0 05 0d 09 0e a1 01 85 02
09 52 09 53 15 00 26 ff 00 75 08 95 02 b1 02 c0 05 0d 09 02 a1 01 85 20 09 20 a1 00 09 42 15 00 25 01 75 01 95 01 81 02
95 07 81 03 05 01 09 30 26 ff 7f 55 0f 65 11 35 00 46 51 02 75 10 95 01 81 02 09 31 35 00 46 73 01 81 02 85 01 06 00 ff
09 01 75 08 95 01 b1 02 c0 c0"""))

# One finger a report and no count of them; beside it a mouse, which the kernel drops, and a touch screen for one
# finger; a unit that is none.
EGALAX = Model("eGalax Inc. USB TouchController", 0x0EEF, 0x7336, 2, None, 2, bytes.fromhex("""
05 0d 09 04 a1 01 85 04 09 22 a1 00 09 42 15 00 25 01 75 01 95 01 81 02 09 32 15 00 25 01 81 02 09 51 75 05 95 01
16 00 00 26 10 00 81 02 09 47 75 01 95 01 15 00 25 01 81 02 05 01 09 30 75 10 95 01 55 0d 65 33 35 00 46 c1 20 26 ff 7f
81 02 09 31 75 10 95 01 55 0d 65 33 35 00 46 c2 18 26 ff 7f 81 02 05 0d 09 55 25 08 75 08 95 01 b1 02 c0 c0 05 01 09 01
a1 01 85 01 09 01 a1 00 05 09 19 01 29 02 15 00 25 01 95 02 75 01 81 02 95 01 75 06 81 01 05 01 09 30 09 31 16 00 00
26 ff 0f 36 00 00 46 ff 0f 66 00 00 75 10 95 02 81 02 c0 c0 06 00 ff 09 01 a1 01 09 01 15 00 26 ff 00 85 03 75 08 95 3f
81 02 06 00 ff 09 01 15 00 26 ff 00 75 08 95 3f 91 02 c0 05 0d 09 04 a1 01 85 02 09 20 a1 00 09 42 09 32 15 00 25 01
95 02 75 01 81 02 95 06 75 01 81 03 05 01 09 30 75 10 95 01 a4 55 0d 65 33 36 00 00 46 c1 20 16 00 00 26 ff 0f 81 02
09 31 16 00 00 26 ff 0f 36 00 00 46 c2 18 81 02 b4 c0 c0 05 0d 09 0e a1 01 85 05 09 22 a1 00 09 52 09 53 15 00 25 0a
75 08 95 02 b1 02 c0 c0"""))

# Windows 7: five fingers, each in its place in every report; no size at all.
FOCALTECH_FINGER = """09 42 15 00 25 01 75 01 95 01 81 02 09 32 81 02 95 06 81 03 75 08 09 51 95 01 81 02 05 01 26 00 04
75 10 55 00 65 00 09 30 35 00 46 00 00 81 02 26 58 02 09 31 46 00 00 81 02 c0"""
FOCALTECH = Model("FocalTech Systems FT5x06", 0x10C4, 0x81B9, 5, None, 1, bytes.fromhex(f"""
05 0d 09 04 a1 01 85 01 09 22 a1 02 {FOCALTECH_FINGER} {repeated("a1 02 05 0d " + FOCALTECH_FINGER, 4)}
05 0d 09 54 95 01 75 08 15 00 25 08 81 02 85 02 09 55 75 08 95 01 b1 02 c0"""))

# Windows 7, without a number to its only report; a table of almost a metre, in tenths of a millimetre.
ELO_FINGER = """09 42 15 00 25 01 75 01 95 01 81 02 95 03 81 03 09 32 09 47 95 02 81 02 95 02 81 03 09 51 75 08 95 01
81 02 05 01 26 ff 7f 65 11 55 0e 46 7c 24 75 10 95 01 09 30 81 02 09 31 46 96 14 81 02 c0"""
ELO = Model("Elo TouchSystems CarrollTouch 4500U", 0x04E7, 0x0080, 4, (934, 527), 1, bytes.fromhex(f"""
05 0d 09 04 a1 01 09 22 a1 02 {ELO_FINGER} {repeated("a1 02 05 0d " + ELO_FINGER, 3)}
05 0d 09 54 75 08 95 01 15 00 25 08 81 02 09 55 b1 02 c0"""))

MODELS = (ELAN, IRTOUCH, EGALAX, FOCALTECH, ELO)
