"""InteroperabilityTests.py ARCHIVE_SAMPLES INSPECTOR: archives against readers and writers that are not ours.

Python's plistlib and plistutil read what is written here, and what they write is read here; bytes and
lists written out by hand hold both to the format's own rules.
"""

import json
import plistlib
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from plistlib import UID

import Archives
from Archives import Archiver, Instance, Ref, array, dictionary, refs

SAMPLES, INSPECTOR = sys.argv[1:3]
PATIENCE = 120  # seconds, on a loaded machine


def base_url():
    return Instance("NSURL", NS__base=Ref(None), NS__relative=Ref("http://host/a/"))


def record(name, archived):
    """An item with a text for every property, save for the one flag that there is."""
    members = {key: Ref(f"{name} caf\u00e9 {key}") for key in archived}
    if name == "QVBinaryDataDescriptorItem":
        members["encrypted"] = Ref(True)
    return Instance(name, timeReceived=1.0, **members)


def many_collections():
    return [each for i in range(20)
            for each in (array(str(i)), array(str(i), name="NSSet"), dictionary({"k": str(i)}))]


CLASSES = Archives.classes_of(subprocess.run(
    [INSPECTOR, "classes"], capture_output=True, timeout=PATIENCE, check=True).stdout.decode())
Archives.CHAINS.update({name: chain for name, (chain, _) in CLASSES.items()})

# What the samples are, told independently of the program that writes them.
VALUES = {
    "texts": array("", "ascii", "caf\u00e9", "\U0001F600", Instance("NSString", NS__string="$null"),
                   '<a>&"b"\n', "x" * 300, Instance("NSMutableString", NS__string="m")),
    "integers": array(0, 255, 256, 65535, 65536, 2**32 - 1, 2**32, 2**63 - 1, -1, -2**63),
    "unsignedIntegers": array(2**63, 2**64 - 1),
    "otherNumbers": array(True, False, 0.5, -1e300, 0.1),
    "data": array(b"", b"\xff\x01", Instance("NSMutableData", NS__data=b"mutable")),
    "dates": array(*(Instance("NSDate", NS__time=time) for time in (0.0, -1.25, 816677787.5))),
    "collections": dictionary({
        "array": array(array()),
        "mutable array": array(name="NSMutableArray"),
        "set": array("member", name="NSSet"),
        "mutable set": array(name="NSMutableSet"),
        "dictionary": dictionary({}),
        "null": Instance("NSNull"),
    }, name="NSMutableDictionary"),
    "error": Instance("NSError", NSCode=-3, NSDomain=Ref("Domain"),
                      NSUserInfo=Ref(dictionary({"k": "v"}))),
    "equalValues": array(*[Instance("NSMutableData", NS__data=b"d" * 200), b"d" * 200, "t" * 200,
                           Instance("NSMutableString", NS__string="t" * 200)] * 60),
    "threeHundred": array(*range(300)),
    "seventyThousand": array(*range(70000)),
    "record": Instance("QVUserInfoItem", timeReceived=816677787.5, identifier=Ref("default"),
                       storageMax=Ref(10240), storageUsed=Ref(1500000000), bandwidthUsed=Ref(None),
                       bandwidthMax=Ref(None), plan=Ref("Basic \u00e9"), trashCount=Ref(None)),
    "records": array(*(record(name, archived) for name, (_, archived) in CLASSES.items())),
    "setOfCollections": array(*many_collections(), name="NSSet"),
    "keyedByCollections": Instance("NSDictionary", NS__keys=refs(many_collections()),
                                   NS__objects=refs(["value"] * 60)),
}


class InteroperabilityTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def run_program(self, *command, expected=0):
        result = subprocess.run(command, capture_output=True, timeout=PATIENCE, check=False)
        self.assertEqual(result.returncode, expected, f"{command}: {result.stderr.decode()}")
        return result.stdout

    def file(self, contents):
        file = self.folder / "file"
        file.write_bytes(contents)
        return file

    def sample(self, name):
        file = self.folder / "sample"
        self.run_program(SAMPLES, "write", name, file)
        return file.read_bytes()

    def check(self, name, contents):
        """Reads an archive here and compares it with the sample, identities included."""
        self.run_program(SAMPLES, "check", name, self.file(contents))

    def shown(self, contents):
        return json.loads(self.run_program(INSPECTOR, "archive", self.file(contents)))

    def plistutil(self, contents, form):
        out = self.folder / "converted"
        self.run_program("plistutil", "-i", self.file(contents), "-o", out, "-f", form)
        return out.read_bytes()


class Plistlib(InteroperabilityTest):
    def test_reads_records_of_all_classes(self):
        self.assertEqual(len(CLASSES), 27)
        read = Archives.value_of(plistlib.loads(self.sample("records"))).members["NS.objects"]
        self.assertEqual([each.value.name for each in read], list(CLASSES))

    def test_reads_what_is_written_here(self):
        for name, value in VALUES.items():
            with self.subTest(name):
                archive = plistlib.loads(self.sample(name))
                self.assertEqual(Archives.value_of(archive), value)

    def test_reads_numbers_as_what_they_are(self):
        value = Archives.value_of(plistlib.loads(self.sample("otherNumbers")))
        types = [type(each.value) for each in value.members["NS.objects"]]
        self.assertEqual(types, [bool, bool, float, float, float])

    def test_reads_a_short_real_number(self):
        self.assertEqual(Archives.value_of(plistlib.loads(self.sample("shortReal"))), 1.5)

    def test_finds_one_uid_for_one_object_and_two_for_two(self):
        objects = plistlib.loads(self.sample("shared"))["$objects"]
        first, second, third, itself = objects[1]["NS.objects"]
        self.assertEqual(first, second)
        self.assertNotEqual(first, third)
        self.assertEqual(objects[first.data], objects[third.data])
        self.assertEqual(itself, UID(1))

    def test_finds_a_url_below_its_base(self):
        objects = plistlib.loads(self.sample("urls"))["$objects"]
        base, relative = (objects[uid.data] for uid in objects[1]["NS.objects"])
        self.assertEqual(base["NS.base"], UID(0))
        self.assertEqual(objects[base["NS.relative"].data], "http://host/a/")
        self.assertIs(objects[relative["NS.base"].data], base)

    def test_writes_what_is_read_here(self):
        for name, value in VALUES.items():
            with self.subTest(name):
                self.check(name, Archives.binary(Archiver().archive(value)))

    def test_writes_xml_that_is_read_here(self):
        for name, value in VALUES.items():
            with self.subTest(name):
                self.check(name, Archives.xml(Archiver().archive(value)))

    def test_writes_again_what_is_written_here(self):
        for name in (*VALUES, "urls", "shared"):
            with self.subTest(name):
                self.check(name, Archives.binary(plistlib.loads(self.sample(name))))

    # It writes equal texts once; the archive tells them apart.
    def test_writes_equal_texts_once_and_they_are_two_here(self):
        objects = ["$null", {"$class": UID(4), "NS.objects": [UID(2), UID(3), UID(2)]},
                   "a text", "a text", {"$classname": "NSArray", "$classes": ["NSArray"]}]
        contents = Archives.binary({"$archiver": "NSKeyedArchiver", "$version": 100000,
                                    "$top": {"root": UID(1)}, "$objects": objects})
        self.assertEqual(contents.count(b"a text"), 1)
        self.assertEqual(self.shown(contents), ["a text"] * 3)


class Plistutil(InteroperabilityTest):
    def test_makes_xml_of_what_is_written_here_that_is_read_here(self):
        for name in (*VALUES, "urls", "shared"):
            with self.subTest(name):
                converted = self.plistutil(self.sample(name), "xml")
                self.assertTrue(converted.startswith(b"<?xml"))
                self.check(name, converted)

    def test_understands_what_is_written_here(self):
        for name, value in VALUES.items():
            with self.subTest(name):
                converted = plistlib.loads(self.plistutil(self.sample(name), "xml"))
                archive = Archives.with_uids_for_dictionaries(converted)
                self.assertEqual(Archives.value_of(archive), value)

    def test_makes_binary_lists_that_are_read_here(self):
        for name, value in VALUES.items():
            with self.subTest(name):
                contents = Archives.xml(Archiver().archive(value))
                converted = self.plistutil(contents, "bin")
                self.assertTrue(converted.startswith(b"bplist00"))
                if name == "otherNumbers":  # it gives 0.5 four bytes: the same value of another type
                    self.assertEqual(self.shown(converted), [True, False, 0.5, -1e300, 0.1])
                else:
                    self.check(name, converted)


class Trailer:
    """The last 32 bytes, and the offsets that they lead to."""

    def __init__(self, contents):
        fields = struct.unpack(">6xBBQQQ", contents[-32:])
        self.offset_width, self.reference_width, self.count, self.top, self.table = fields
        offsets = contents[self.table:-32]
        self.offsets = [int.from_bytes(offsets[i:i + self.offset_width], "big")
                        for i in range(0, len(offsets), self.offset_width)]


class Bytes(InteroperabilityTest):
    def test_the_trailer_says_where_everything_is(self):
        for name in (*VALUES, "urls", "shared", "oddTexts", "shortReal"):
            with self.subTest(name):
                contents = self.sample(name)
                trailer = Trailer(contents)
                self.assertEqual(contents[:8], b"bplist00")
                self.assertEqual(contents[-32:-26], bytes(6))
                self.assertEqual(len(trailer.offsets), trailer.count)
                self.assertEqual(trailer.offsets, sorted(set(trailer.offsets)))
                self.assertEqual(trailer.offsets[0], 8)
                self.assertLess(trailer.offsets[-1], trailer.table)
                self.assertEqual(contents[trailer.offsets[trailer.top]] >> 4, 0xD)

    def test_widths_are_those_of_a_machine(self):
        for name, offset_width, reference_width in (
            ("shortReal", 1, 1), ("threeHundred", 2, 2), ("seventyThousand", 4, 4)):
            with self.subTest(name):
                trailer = Trailer(self.sample(name))
                self.assertEqual(trailer.offset_width, offset_width)
                self.assertEqual(trailer.reference_width, reference_width)

    def test_uids_take_one_two_or_four_bytes(self):
        contents = self.sample("seventyThousand")
        widths = {}
        for offset in Trailer(contents).offsets:
            if contents[offset] >> 4 == 0x8:
                width = (contents[offset] & 0xF) + 1
                uid = int.from_bytes(contents[offset + 1:offset + 1 + width], "big")
                widths.setdefault(width, []).append(uid)
        self.assertEqual({width: (min(uids), max(uids)) for width, uids in widths.items()},
                         {1: (0, 255), 2: (256, 65535), 4: (65536, 70002)})

    def test_integers_take_as_few_bytes_as_they_may(self):
        contents = self.sample("integers")
        for integer in ("10 00", "10 ff", "11 01 00", "11 ff ff", "12 00 01 00 00", "12 ff ff ff ff",
                        "13 00 00 00 01 00 00 00 00", "13 7f ff ff ff ff ff ff ff",
                        "13 ff ff ff ff ff ff ff ff", "13 80 00 00 00 00 00 00 00"):
            with self.subTest(integer):
                self.assertTrue(self.object_at(contents, bytes.fromhex(integer)))
        self.assertTrue(self.object_at(self.sample("unsignedIntegers"),
                                       b"\x14" + bytes(8) + b"\xff" * 8))

    def test_texts_are_ascii_or_utf_16_with_lone_surrogates(self):
        contents = self.sample("oddTexts")
        self.assertTrue(self.object_at(contents, bytes.fromhex("62 d800 0021")))
        self.assertTrue(self.object_at(contents, bytes.fromhex("53 00 01 1f")))
        self.assertTrue(self.object_at(self.sample("texts"), bytes.fromhex("62 d83d de00")))
        self.check("oddTexts", contents)

    @staticmethod
    def object_at(contents, expected):
        return any(contents.startswith(expected, offset) for offset in Trailer(contents).offsets)


class HandWritten(InteroperabilityTest):
    """Lists put together here, byte by byte, as the format allows and few writers do."""

    NAMES = [b"$archiver", b"NSKeyedArchiver", b"$version", b"$top", b"root", b"$objects", b"$null",
             b"$class", b"$classname", b"NSArray", b"NS.objects"]

    @staticmethod
    def text(characters):
        if len(characters) < 15:
            return bytes([0x50 | len(characters)]) + characters
        return b"\x5f\x13" + len(characters).to_bytes(8, "big") + characters  # a count of eight bytes

    def archive(self, elements, reference_width=1, offset_width=1, uid_width=1, backwards=False):
        """An array of these objects, which are given as their bytes."""
        list_of_objects = [self.text(name) for name in self.NAMES]
        number = {name: i for i, name in enumerate(self.NAMES)}

        def add(contents):
            list_of_objects.append(contents)
            return len(list_of_objects) - 1

        def reference(object_number):
            return object_number.to_bytes(reference_width, "big")

        def collection(kind, *numbers, count=None):
            count = len(numbers) if count is None else count
            size = [kind | count] if count < 15 else [kind | 15, 0x11, count >> 8, count & 0xFF]
            return add(bytes(size) + b"".join(map(reference, numbers)))

        def entries(pairs):
            return collection(0xD0, *pairs.keys(), *pairs.values(), count=len(pairs))

        def uid(value):
            return add(bytes([0x80 | (uid_width - 1)]) + value.to_bytes(uid_width, "big"))

        added = [add(contents) for contents in elements]
        array_class = entries({number[b"$classname"]: number[b"NSArray"]})
        uids = collection(0xA0, *(uid(2 + i) for i in range(len(elements))))
        root = entries({number[b"NS.objects"]: uids,
                        number[b"$class"]: uid(2 + len(elements))})
        objects = collection(0xA0, number[b"$null"], root, *added, array_class)
        top = entries({number[b"$objects"]: objects,
                       number[b"$top"]: entries({number[b"root"]: uid(1)}),
                       number[b"$version"]: add(b"\x14" + (100000).to_bytes(16, "big")),
                       number[b"$archiver"]: number[b"NSKeyedArchiver"]})
        return self.laid_out(list_of_objects, top, reference_width, offset_width, backwards)

    @staticmethod
    def laid_out(list_of_objects, top, reference_width, offset_width, backwards):
        contents = b"bplist00"
        offsets = [0] * len(list_of_objects)
        numbers = range(len(list_of_objects))
        for i in reversed(numbers) if backwards else numbers:
            offsets[i] = len(contents)
            contents += list_of_objects[i]
        table = len(contents)
        contents += b"".join(offset.to_bytes(offset_width, "big") for offset in offsets)
        return contents + struct.pack(">6xBBQQQ", offset_width, reference_width, len(offsets), top, table)

    def test_any_width_is_read(self):
        for width in range(1, 9):
            with self.subTest(width):
                contents = self.archive([b"\x51a"], reference_width=width, offset_width=max(2, width),
                                        uid_width=width)
                self.assertEqual(self.shown(contents), ["a"])

    def test_uids_may_have_leading_zeros(self):
        for width in (9, 12, 16):
            with self.subTest(width):
                contents = self.archive([b"\x51a"], offset_width=2, uid_width=width)
                self.assertEqual(self.shown(contents), ["a"])

    def test_any_order_is_read(self):
        contents = self.archive([b"\x51a", b"\x51b"], offset_width=2, backwards=True)
        self.assertEqual(self.shown(contents), ["a", "b"])

    def test_wide_integers_are_read(self):
        integers = {
            "10 ff": 255, "11 00 01": 1, "12 ff ff ff ff": 2**32 - 1, "13 ff ff ff ff ff ff ff fe": -2,
            "14" + "00" * 8 + "ff" * 8: 2**64 - 1, "14" + "ff" * 15 + "fd": -3,
            "14" + "00" * 15 + "07": 7,
        }
        contents = self.archive([bytes.fromhex(each) for each in integers], offset_width=2)
        self.assertEqual(self.shown(contents), list(integers.values()))

    def test_other_kinds_are_read(self):
        kinds = {
            "08": False, "09": True, "22 3f c0 00 00": 1.5, "23 3f f8 00 00 00 00 00 00": 1.5,
            "33 3f f0 00 00 00 00 00 00": {"$date": "2001-01-01T00:00:01Z"}, "41 00": {"$data": "AA=="},
            "61 00 41": "A", "62 d8 3d de 00": "\U0001F600", "61 dc ff": {"$bytes": "%FF"},
            "61 d8 00": {"$utf16": "d800"}, "5f 10 01 7a": "z",
        }
        contents = self.archive([bytes.fromhex(each) for each in kinds], offset_width=2)
        self.assertEqual(self.shown(contents), list(kinds.values()))

    def test_an_integer_beyond_64_bits_is_refused(self):
        file = self.file(self.archive([b"\x14\x01" + bytes(15)], offset_width=2))
        self.run_program(INSPECTOR, "archive", file, expected=1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
