"""Keyed archives in Python: what the format's rules make of a value, and of an archive.

A value is as a property list has it, save that an object of a class is an Instance; None is nil.
"""

import plistlib
from plistlib import UID

CHAINS = {
    "NSMutableString": ["NSMutableString", "NSString", "NSObject"],
    "NSMutableData": ["NSMutableData", "NSData", "NSObject"],
    "NSMutableArray": ["NSMutableArray", "NSArray", "NSObject"],
    "NSMutableSet": ["NSMutableSet", "NSSet", "NSObject"],
    "NSMutableDictionary": ["NSMutableDictionary", "NSDictionary", "NSObject"],
    "QVUserInfoItem": ["QVUserInfoItem", "QVContentItem", "NSObject"],
}


def classes_of(listing):
    """The chain and the archive list of each class, from what the inspector lists."""
    classes = {}
    for line in listing.splitlines():
        if not line.startswith(" "):
            chain = line.split(" : ")
            archived = []
            classes[chain[0]] = (chain, archived)
        elif not line.startswith("        "):
            is_archived = line.startswith("    archived")
        elif is_archived:
            archived.append(line.strip())
    return classes


def chain_of(name):
    return CHAINS.get(name, [name, "NSObject"])


class Instance:
    """An object of a class: plain values and lists stand in it as they are, Refs by UID."""

    def __init__(self, name, /, **members):
        self.name = name
        self.members = {key.replace("__", "."): value for key, value in members.items()}

    def __eq__(self, other):
        return isinstance(other, Instance) and (self.name, self.members) == (other.name, other.members)

    def __repr__(self):
        return f"{self.name}({self.members})"


class Ref:
    """A reference to a value."""

    def __init__(self, value):
        self.value = value

    def __eq__(self, other):
        return isinstance(other, Ref) and self.value == other.value

    def __repr__(self):
        return f"Ref({self.value!r})"


def refs(values):
    return [Ref(value) for value in values]


def array(*values, name="NSArray"):
    return Instance(name, NS__objects=refs(values))


def dictionary(entries, name="NSDictionary"):
    return Instance(name, NS__keys=refs(entries.keys()), NS__objects=refs(entries.values()))


class Archiver:
    """Lays the objects out from the far end: the root last, each class after its objects."""

    def __init__(self):
        self.objects = ["$null"]
        self.classes = {}

    def archive(self, root):
        uid = self.add(root)
        return {"$archiver": "NSKeyedArchiver", "$version": 100000, "$top": {"root": uid},
                "$objects": self.objects}

    def add(self, value):
        if value is None:
            return UID(0)
        if not isinstance(value, Instance):
            return self.entry(value)
        members = {key: self.member(each) for key, each in value.members.items()}
        members["$class"] = self.class_uid(value.name)
        return self.entry(members)

    def entry(self, contents):
        self.objects.append(contents)
        return UID(len(self.objects) - 1)

    def member(self, value):
        if isinstance(value, list):
            return [self.member(each) for each in value]
        return self.add(value.value) if isinstance(value, Ref) else value

    def class_uid(self, name):
        if name not in self.classes:
            self.classes[name] = self.entry({"$classname": name, "$classes": chain_of(name)})
        return self.classes[name]


def value_of(archive):
    """The root value of an archive that has no circles."""
    objects = archive["$objects"]

    def restored(uid):
        entry = objects[uid.data]
        if uid.data == 0:
            return None
        if not isinstance(entry, dict):
            return entry
        record = objects[entry["$class"].data]
        assert record["$classes"] == chain_of(record["$classname"]), record
        instance = Instance(record["$classname"])
        instance.members = {key: member(each) for key, each in entry.items() if key != "$class"}
        return instance

    def member(value):
        if isinstance(value, list):
            return [member(each) for each in value]
        return Ref(restored(value)) if isinstance(value, UID) else value

    assert archive["$archiver"] == "NSKeyedArchiver" and archive["$version"] == 100000
    assert objects[0] == "$null"
    return restored(archive["$top"]["root"])


def with_dictionaries_for_uids(value):
    """As XML has it."""
    if isinstance(value, UID):
        return {"CF$UID": value.data}
    if isinstance(value, list):
        return [with_dictionaries_for_uids(each) for each in value]
    if isinstance(value, dict):
        return {key: with_dictionaries_for_uids(each) for key, each in value.items()}
    return value


def with_uids_for_dictionaries(value):
    if isinstance(value, list):
        return [with_uids_for_dictionaries(each) for each in value]
    if isinstance(value, dict):
        if value.keys() == {"CF$UID"}:
            return UID(value["CF$UID"])
        return {key: with_uids_for_dictionaries(each) for key, each in value.items()}
    return value


def binary(archive):
    return plistlib.dumps(archive, fmt=plistlib.FMT_BINARY, sort_keys=False)


def xml(archive):
    return plistlib.dumps(with_dictionaries_for_uids(archive), fmt=plistlib.FMT_XML)
