"""What is read of valid and of broken property lists, held against Python's plistlib, which shares no code with the
program but the XML parser below it: the same verdict, the same values, kinds and order, except where a case says why."""

import datetime
import math
import plistlib
import struct
import subprocess
import sys
import unittest

VERDICTS = sys.argv.pop(1)
UNREADABLE = "unreadable"
# For lists that are nested as deep as they may be.
sys.setrecursionlimit(4000)
REFERENCE_DATE = datetime.datetime(2001, 1, 1)


def plist(inner, head='<?xml version="1.0" encoding="UTF-8"?>\n'):
    inner = inner if isinstance(inner, bytes) else inner.encode()
    return head.encode() + b'<plist version="1.0">' + inner + b"</plist>"


def utf16(text, order="le", bom=True):
    return (b"\xff\xfe" if order == "le" else b"\xfe\xff") * bom + text.encode(f"utf-16-{order}", "surrogatepass")


def binary(*objects):
    """A binary list of these objects, the first of them its root, with references of one byte."""
    body, offsets = b"bplist00", b""
    for each in objects:
        offsets += struct.pack(">H", len(body))
        body += each
    return body + offsets + struct.pack(">6xBBQQQ", 2, 1, len(objects), 0, len(body))


SAMPLE = {"name": "a&b <ä€😀>", "list": [True, False, -5, 0, 2**63 - 1, -2**63, 2**64 - 1, 0.25, -0.0, 1e300],
          "when": datetime.datetime(2020, 2, 29, 12, 0, 1), "data": bytes(range(256)), "empty": {"": [], "d": {}, "s": ""},
          "order": {"z": 1, "y": 2, "x": 3, "ä": 4}, "nested": [[[["deep"]]]]}

# Read by both, as the same.
READ_BY_BOTH = {
    "the sample": plistlib.dumps(SAMPLE, sort_keys=False),
    "the sample, binary": plistlib.dumps(SAMPLE, fmt=plistlib.FMT_BINARY, sort_keys=False),
    "no document type, no declaration": b"<plist><dict/></plist>",
    "without the element around the root": b"<dict><key>a</key><true/></dict>",
    "a document type of its own": plist("<true/>", "<!DOCTYPE plist [<!ELEMENT plist ANY>]>"),
    "comments and instructions everywhere":
        plist("<!-- a --><?b?><dict><!-- <true/> --><key>a<!-- b --></key><?c d?><string>e<!-- -->f</string></dict>")
        + b"<!-- g --><?h?>\n",
    "CDATA": plist("<string>a<![CDATA[<b>&amp;]]>c</string>"),
    "character references": plist("<string>&lt;&gt;&amp;&quot;&apos;&#65;&#x1F600;&#13;</string>"),
    "line ends of other systems": plist("<string>a\r\nb\rc\n</string>"),
    "blanks of a text": plist("<string>  a\tb\n </string>"),
    "empty text": plist("<array><string/><string></string></array>"),
    "empty array": plist("<array/>"),
    "empty key": plist("<dict><key></key><true/><key>a</key><false/></dict>"),
    "two equal keys": plist("<dict><key>a</key><true/><key>b</key><true/><key>a</key><integer>2</integer></dict>"),
    "a lone value": plist("<string>a</string>"),
    "blanks and nothing in true": plist("<array><true> </true><false></false></array>"),
    "leading zeros": plist("<array><integer>010</integer><integer>-007</integer></array>"),
    "a plus sign": plist("<array><integer>+5</integer><real>+0.5</real></array>"),
    "minus zero": plist("<array><integer>-0</integer><real>-0.0</real><real>-0</real></array>"),
    "hexadecimal integers": plist("<array><integer>0x1f</integer><integer>0XFF</integer></array>"),
    "the least and the largest integer":
        plist("<array><integer>-9223372036854775808</integer><integer>18446744073709551615</integer></array>"),
    "blanks around numbers": plist("<array><integer> 5\n</integer><real>\t0.5 </real></array>"),
    "reals": plist("<array>" + "".join(f"<real>{real}</real>" for real in (
        "1", ".5", "5.", "1e3", "1E-3", "1.5e+10", "0.1", "5e-324", "1.7976931348623157e308", "123456789012345678901",
        "0.30000000000000004", "2.2250738585072014e-308", "00012.50")) + "</array>"),
    "reals that are none": plist("<array>" + "".join(f"<real>{real}</real>" for real in (
        "inf", "-inf", "+infinity", "Infinity", "nan", "NaN", "-nan", "+nan")) + "</array>"),
    "dates": plist("<array>" + "".join(f"<date>{date}</date>" for date in (
        "2001-01-01T00:00:00Z", "0001-01-01T00:00:00Z", "9999-12-31T23:59:59Z", "2000-02-29T23:59:59Z",
        "1969-12-31T23:59:59Z", "2040-06-01T10:20:30Z", "2001-02-03Z", "2001-02-03T04Z", "2001-02-03T04:05Z"))
        + "</array>"),
    "a blank behind a date": plist("<date>2001-01-01T00:00:00Z\n</date>"),
    "data among blanks": plist("<data> A A\n\tE\r\nC </data>"),
    "data with padding": plist("<array><data>AA==</data><data>AAE=</data><data>AAEC</data><data/></array>"),
    "data with bits to spare": plist("<data>AB==</data>"),
    "a mark before UTF-8": b"\xef\xbb\xbf" + plist("<string>ä</string>"),
    "UTF-16, little end first": utf16('<?xml version="1.0" encoding="UTF-16"?><plist><string>ä😀</string></plist>'),
    "UTF-16, big end first": utf16('<?xml version="1.0" encoding="UTF-16"?><plist><string>ä😀</string></plist>', "be"),
    "UTF-16 without a declaration": utf16("<plist><string>ä</string></plist>"),
    "UTF-16 without a mark": utf16('<?xml version="1.0" encoding="UTF-16"?><plist><true/></plist>', bom=False),
    "ISO-8859-1": plist(b"<string>caf\xe9</string>", '<?xml version="1.0" encoding="ISO-8859-1"?>'),
    "US-ASCII": plist("<string>caf&#233;</string>", '<?xml version="1.0" encoding="US-ASCII"?>'),
    "the last characters before those that are none": plist("<string>\x7f\ud7ff\ue000\ufffd\U0010ffff</string>"),
    "text of 64 KiB": plist("<string>" + "ä" * 32768 + "</string>"),
    "nested 512 deep": plist("<array>" * 512 + "</array>" * 512),
    "binary: integers of each size": binary(b"\xa5\1\2\3\4\5", b"\x10\xff", b"\x11\xff\xff", b"\x12\xff\xff\xff\xff",
                                            b"\x13" + b"\xff" * 8, b"\x14" + b"\0" * 8 + b"\xff" * 8),
    "binary: reals": binary(b"\xa4\1\2\3\4", b"\x22\x3f\0\0\0", b"\x23" + struct.pack(">d", 0.1),
                            b"\x23" + struct.pack(">d", -0.0), b"\x23" + struct.pack(">d", math.inf)),
    "binary: a date and its fraction": binary(b"\x33" + struct.pack(">d", 86400.75)),
    "binary: texts": binary(b"\xa4\1\2\3\4", b"\x50", b"\x53a\tb", b"\x62\0\xe4\xd8\x3d"[:3] + b"\x20\xac",
                            b"\x62\xd8\x3d\xde\x00"),
    "binary: a text that begins with a mark": binary(b"\x62\xfe\xff\0a"),
    "binary: an object that two share": binary(b"\xa2\1\1", b"\xa1\2", b"\x09"),
    "binary: two equal keys": binary(b"\xd2\1\1\2\3", b"\x51k", b"\x09", b"\x10\2"),
    "binary: an empty key": binary(b"\xd1\1\2", b"\x50", b"\x09"),
    "binary: sizes apart": binary(b"\x5f\x10\x10" + b"a" * 16),
}

REFUSED_BY_BOTH = {
    "nothing": b"",
    "blanks": b" \n",
    "plain text": b"hello",
    "the older text form": b"{ a = 1; }",
    "no root": plist(""),
    "no element at all": b'<?xml version="1.0"?>',
    "cut off behind the root": plist("<dict></dict>")[:-len("</plist>")],
    "text behind the list": plist("<dict/>") + b"text",
    "a second list": plist("<dict/>") * 2,
    "an element that does not end": plist("<dict>"),
    "elements that cross": plist("<array><dict></array></dict>"),
    "a date in words": plist("<date>yesterday</date>"),
    "an empty date": plist("<date/>"),
    "a date without its zone": plist("<date>2001-01-01T00:00:00</date>"),
    "a year alone": plist("<date>2001Z</date>"),
    "a month alone": plist("<date>2001-01Z</date>"),
    "a date that the calendar lacks": plist("<date>2001-02-29T00:00:00Z</date>"),
    "the year 0": plist("<date>0000-01-01T00:00:00Z</date>"),
    "the year 10000": plist("<date>10000-01-01T00:00:00Z</date>"),
    "an hour too many": plist("<date>2001-01-01T24:00:00Z</date>"),
    "a leap second": plist("<date>2016-12-31T23:59:60Z</date>"),
    "letters behind an integer": plist("<integer>3x</integer>"),
    "an empty integer": plist("<integer></integer>"),
    "an integer with a point": plist("<integer>1.0</integer>"),
    "hexadecimal behind a sign": plist("<integer>-0x10</integer>"),
    "hexadecimal without digits": plist("<integer>0x</integer>"),
    "a decimal comma": plist("<real>0,5</real>"),
    "an empty real": plist("<real/>"),
    "a hexadecimal real": plist("<real>0x10</real>"),
    "a real in two parts": plist("<real>1 2</real>"),
    "data cut short": plist("<data>AAE</data>"),
    "a key without a value": plist("<dict><key>a</key></dict>"),
    "a value without a key": plist("<dict><true/></dict>"),
    "two keys in a row": plist("<dict><key>a</key><key>b</key><true/></dict>"),
    "a key in an array": plist("<array><key>a</key></array>"),
    "bytes that are no UTF-8": plist(b"<string>caf\xe9</string>"),
    "UTF-8 of a surrogate": plist(b"<string>\xed\xa0\x80</string>"),
    "UTF-8 longer than needed": plist(b"<string>\xc0\x80</string>"),
    "UTF-8 where UTF-16 is declared": plist("<true/>", '<?xml version="1.0" encoding="UTF-16"?>'),
    "beyond ASCII where that is declared": plist(b"<string>\xe9</string>", '<?xml version="1.0" encoding="US-ASCII"?>'),
    "an encoding that nobody knows": plist("<true/>", '<?xml version="1.0" encoding="x-unknown"?>'),
    "UTF-32": "<plist><true/></plist>".encode("utf-32"),
    "a control character": plist("<string>\x01</string>"),
    "NUL": plist("<string>\0</string>"),
    "a reference to NUL": plist("<string>&#0;</string>"),
    "a reference to a control character": plist("<string>&#1;</string>"),
    "a reference to a surrogate": plist("<string>&#xD800;</string>"),
    "a reference to U+FFFE": plist("<string>&#xFFFE;</string>"),
    "U+FFFE": plist(b"<string>\xef\xbf\xbe</string>"),
    "the second half of a pair alone": utf16("<plist><string>\ude00</string></plist>"),
    "an entity that nobody declares": plist("<string>&nbsp;</string>"),
    "an entity that is declared": plist("<string>&a;</string>", "<!DOCTYPE plist [<!ENTITY a 'x'>]>"),
    "an entity from a file": plist("<string>&a;</string>", "<!DOCTYPE plist [<!ENTITY a SYSTEM '/etc/passwd'>]>"),
    "entities that unfold without end": plist(
        "<string>&a30;</string>", "<!DOCTYPE plist [<!ENTITY a0 'ha'>" + "".join(
            f"<!ENTITY a{i} '&a{i - 1};&a{i - 1};'>" for i in range(1, 31)) + "]>"),
    "binary: cut short": plistlib.dumps(SAMPLE, fmt=plistlib.FMT_BINARY)[:-1],
    "binary: the magic alone": b"bplist00",
    "binary: another version": b"bplist15" + plistlib.dumps([], fmt=plistlib.FMT_BINARY)[8:],
    "binary: a root that is not there": binary(b"\x09")[:-16] + struct.pack(">QQ", 1, 9),
    "binary: an object that is not there": binary(b"\xa1\5"),
    "binary: a text that is no ASCII": binary(b"\x53a\x80b"),
    "binary: the first half of a pair alone": binary(b"\x61\xd8\x3d"),
    "binary: an unknown kind": binary(b"\x70"),
    "binary: a set": binary(b"\xc1\1", b"\x09"),
    "binary: a real of two bytes": binary(b"\x21\0\0"),
    "binary: a date beyond the calendar": binary(b"\x33" + struct.pack(">d", 1e300)),
    "binary: a date that is no number": binary(b"\x33" + struct.pack(">d", math.nan)),
    "binary: keys that are containers": binary(b"\xd1\1\1", b"\xa0"),
}

# Read by plistlib alone, each with the reason.
REFUSED_HERE = {
    # A value that no value of ours can hold would be written as another.
    "an integer below the least": plist("<integer>-9223372036854775809</integer>"),
    "an integer above the largest": plist("<integer>18446744073709551616</integer>"),
    "a real above the largest": plist("<real>1e400</real>"),
    "a real below the least": plist("<real>1e-400</real>"),
    "binary: an integer beyond 64 bits": binary(b"\x14" + b"\0" * 7 + b"\1" + b"\0" * 8),
    "binary: a unique identifier": binary(b"\x80\1"),
    "binary: a null": binary(b"\0"),
    "binary: a key that is a number": binary(b"\xd1\1\2", b"\x10\1", b"\x09"),
    "binary: an array that holds itself": binary(b"\xa1\0"),
    # A text that XML has no way to write could never be saved again.
    "binary: NUL in a text": binary(b"\x53a\0b"),
    "binary: a control character in a text": binary(b"\x53a\1b"),
    "binary: U+FFFE in a text": binary(b"\x61\xff\xfe"),
    # Passed over by plistlib, and so lost by whoever writes the list again.
    "an unknown element": plist("<array><unknown>a</unknown></array>"),
    "an element of another's": plist("<array><x:true xmlns:x='y'/></array>"),
    "text beside the elements": plist("<array>text<true/></array>"),
    "text beside the root": plist("text<true/>"),
    "text in true": plist("<true>no</true>"),
    "two roots": plist("<true/><dict/>"),
    "a list in a list": plist("<plist><true/></plist>"),
    "an element in a text": plist("<string>a<unknown/>b</string>"),
    "an attribute": plist("<dict a='b'/>"),
    "an attribute of the list": b"<plist a='b'><dict/></plist>",
    "an entity declared elsewhere": plist("<string>a&b;c</string>", "<!DOCTYPE plist SYSTEM 'c.dtd'>"),
    "a key that is empty, without a value": plist("<dict><key></key></dict>"),
    "what stands behind a date": plist("<date>2001-01-01T00:00:00Zulu</date>"),
    "what is no digit in data": plist("<data>A*AEC</data>"),
    "too much padding": plist("<data>AAEC====</data>"),
    # Spellings of Python's own numbers.
    "underscores in an integer": plist("<integer>1_000</integer>"),
    "underscores in a real": plist("<real>1_0.5</real>"),
    "digits of another script": plist("<integer>\u0663</integer>"),
    "a blank of another kind": plist("<integer>\xa05</integer>"),
    # Made into another character by the XML parser, in UTF-16 alone.
    "the first half of a pair alone": utf16("<plist><string>\ud83d.</string></plist>"),
    # Encodings that Python brings to the parser, and the parser alone does not know.
    "windows-1252": plist(b"<string>\x80</string>", '<?xml version="1.0" encoding="windows-1252"?>'),
    # Against a stack that overflows; nobody writes such lists.
    "nested 513 deep": plist("<array>" * 513 + "</array>" * 513),
    # libplist reads it as a positive number. What writes integers so does it for those above the largest signed one.
    "binary: a negative integer of sixteen bytes": binary(b"\x14" + b"\xff" * 16),
    # Sizes that no writer of the format uses.
    "binary: an integer of 32 bytes": binary(b"\x15" + b"\0" * 32),
    "binary: a size of sixteen bytes": binary(b"\x5f\x14" + b"\0" * 16),
    "binary: offsets of five bytes": b"bplist00\x09\0\0\0\0\x08" + struct.pack(">6xBBQQQ", 5, 1, 1, 0, 9),
    # Neither does any write an empty text so, and libplist takes it for damage.
    "binary: an empty text in UTF-16": binary(b"\x60"),
    # Objects lie between the magic and the table of their offsets; what reads beyond makes text of either.
    "binary: an object in the magic": binary(b"\x09")[:-34] + b"\0\0" + binary(b"\x09")[-32:],
    "binary: a text that reaches into the table": binary(b"\x52a"),
}

# Read here alone: the blanks stand around the value as they may around any other.
READ_HERE = {
    "a blank before a date": (plist("<date>\n2001-01-01T00:00:01Z</date>"), "date 1"),
    "a blank before a hexadecimal integer": (plist("<integer> 0x10</integer>"), "integer 16"),
}

# Read by both, but as another value.
READ_OTHERWISE = {
    # Python rounds to microseconds, and so to the next second; here a fraction is cut off.
    "binary: a date right before a second": (binary(b"\x33" + struct.pack(">d", 86399.9999999)), "date 86399"),
}


def exactly(value):
    """The text that the program under test makes of the same value."""
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, int):
        return f"integer {value}"
    if isinstance(value, float):
        bits, = struct.unpack(">Q", struct.pack(">d", value))
        return "real nan" if math.isnan(value) else f"real {bits:x}"
    if isinstance(value, str):
        return "string " + value.encode().hex()
    if isinstance(value, bytes):
        return "data " + value.hex()
    if isinstance(value, datetime.datetime):
        return f"date {int((value - REFERENCE_DATE).total_seconds())}"
    if isinstance(value, list):
        return "[" + "".join(exactly(item) + "," for item in value) + "]"
    if isinstance(value, dict):
        return "{" + "".join(f"{key.encode().hex()}:{exactly(item)}," for key, item in value.items()) + "}"
    raise ValueError(f"{value!r} has no kind here")


def theirs(data):
    """What plistlib makes of a list."""
    try:
        is_binary = data.startswith(b"bplist00")
        value = plistlib.loads(data, fmt=plistlib.FMT_BINARY if is_binary else plistlib.FMT_XML)
    except Exception:  # It lets through whatever the steps below it raise.
        return UNREADABLE
    if value is None and not is_binary:
        return UNREADABLE
    try:
        return exactly(value)
    except (ValueError, AttributeError, RecursionError):
        return "something else"


def ours(lists):
    """What is made here of each list, and what is written of that."""
    given = b"".join(b"%d\n%s" % (len(data), data) for data in lists)
    output = subprocess.run([VERDICTS], input=given, capture_output=True, check=True).stdout.decode()
    return [(verdict, bytes.fromhex(written)) for verdict, _, written in
            (line.partition("\t") for line in output.splitlines())]


def damaged(data):
    """Each of the ways in which one byte can be wrong."""
    for place in range(len(data)):
        yield data[:place]
        yield data[:place] + data[place + 1:]
        yield data[:place] + data[place:place + 1] * 2 + data[place + 1:]
        for byte in b"\0\1\x0f\x7f\x80\xff 09+-<>&/xXeEaZ":
            yield data[:place] + bytes([byte]) + data[place + 1:]
        for bit in range(8):
            yield data[:place] + bytes([data[place] ^ (1 << bit)]) + data[place + 1:]


class PropertyLists(unittest.TestCase):
    maxDiff = None

    def test_are_read_as_plistlib_reads_them(self):
        for (name, data), (verdict, _) in zip(READ_BY_BOTH.items(), ours(READ_BY_BOTH.values())):
            with self.subTest(name):
                self.assertNotEqual(verdict, UNREADABLE)
                self.assertEqual(verdict, theirs(data))

    def test_are_refused_where_plistlib_refuses_them(self):
        for (name, data), (verdict, _) in zip(REFUSED_BY_BOTH.items(), ours(REFUSED_BY_BOTH.values())):
            with self.subTest(name):
                self.assertEqual(verdict, UNREADABLE)
                self.assertEqual(theirs(data), UNREADABLE)

    def test_are_refused_where_there_is_a_reason(self):
        for (name, data), (verdict, _) in zip(REFUSED_HERE.items(), ours(REFUSED_HERE.values())):
            with self.subTest(name):
                self.assertEqual(verdict, UNREADABLE)
                self.assertNotEqual(theirs(data), UNREADABLE, "there is no difference to explain")

    def test_are_read_where_blanks_alone_are_in_plistlibs_way(self):
        for (name, (data, value)), (verdict, _) in zip(READ_HERE.items(),
                                                       ours(data for data, _ in READ_HERE.values())):
            with self.subTest(name):
                self.assertEqual(verdict, value)
                self.assertEqual(theirs(data), UNREADABLE, "there is no difference to explain")

    def test_are_read_as_another_value_where_there_is_a_reason(self):
        for (name, (data, value)), (verdict, _) in zip(READ_OTHERWISE.items(),
                                                       ours(data for data, _ in READ_OTHERWISE.values())):
            with self.subTest(name):
                self.assertEqual(verdict, value)
                self.assertNotIn(theirs(data), (UNREADABLE, value), "there is no difference to explain")

    def test_are_written_so_that_plistlib_reads_the_same(self):
        for name, (verdict, written) in zip(READ_BY_BOTH, ours(READ_BY_BOTH.values())):
            with self.subTest(name):
                self.assertEqual(theirs(written), verdict)

    def test_that_are_damaged_are_never_read_as_something_else(self):
        small = {"name": "a&ä", "list": [True, -5, 0.25, datetime.datetime(2020, 2, 29), b"\0\1\2\3"], "": {"k": "😀"}}
        for form in (plistlib.FMT_XML, plistlib.FMT_BINARY):
            lists = list(damaged(plistlib.dumps(small, fmt=form, sort_keys=False)))
            for data, (verdict, written) in zip(lists, ours(lists)):
                if verdict == UNREADABLE:
                    continue
                self.assertEqual(verdict, theirs(data), data)
                self.assertEqual(verdict, theirs(written), data)


if __name__ == "__main__":
    unittest.main()
