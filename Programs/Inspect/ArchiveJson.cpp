#include "Programs/Inspect/ArchiveJson.h"

#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/XMLPropertyList.h"
#include "Programs/Inspect/ArchiveReading.h"
#include "Programs/Inspect/InspectionError.h"
#include "Programs/Inspect/JsonOutput.h"
#include "Programs/Inspect/PlainValueJson.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Inspection {

namespace {

using Item = ArchiveReading::Item;
using Kind = ArchiveReading::Kind;
using Member = ArchiveReading::Member;
using namespace NS::KeyedArchiveNames;

constexpr std::uint64_t kOutputAtLeast = std::uint64_t{256} << 20U;
constexpr std::uint64_t kOutputPerByte = 64;

class ArchivePrinter {
  public:
    ArchivePrinter(NS::Bytes list, JsonOutput& out)
        : archive_(list), out_(out), numbers_(archive_.objectCount()) {}

    // The root; all top objects by their keys when there are others.
    void print() {
        const Item& top = archive_.top().item;
        if (top.count == 1 && archive_.key(top, 0) == kRootKey) {
            printValue(archive_.value(top, 0));
        } else {
            out_.beginObject();
            out_.key(kTopKey);
            printDictionaryOfList(top);
            out_.endObject();
        }
        out_.finish();
    }

  private:
    // Counts the levels that are open.
    class Level {
      public:
        explicit Level(std::size_t& depth) : depth_(depth) {
            if (depth == NS::Limits::kDepth) {
                throw Error("objects stand too deep within one another");
            }
            ++depth;
        }
        ~Level() { --depth_; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

      private:
        std::size_t& depth_;
    };

    void printValue(const Member& member) {
        switch (member.item.kind) {
        case Kind::kUid:
            return printUid(member.item.bits);
        case Kind::kArray:
        case Kind::kSet:
            return printArrayOfList(member.item);
        case Kind::kDictionary:
            return printDictionaryOfList(member.item);
        case Kind::kNull:
        case Kind::kFill:
            return writeNil(out_);
        default:
            (void)writePlainValue(out_, *archive_.plainValue(member)); // it is one
        }
    }

    void printUid(std::uint64_t uid) {
        const Member entry = archive_.entry(uid);
        if (ArchiveReading::isNil(entry)) {
            writeNil(out_);
        } else if (entry.item.kind == Kind::kDictionary) {
            printObject(uid, entry.item);
        } else {
            printValue(entry);
        }
    }

    void printObject(std::uint64_t uid, const Item& object) {
        std::uint32_t& number = numbers_[uid];
        if (number != 0) {
            writeReference(out_, number);
        } else if (const auto value = archive_.boxedValue(uid, object)) {
            (void)writePlainValue(out_, *value); // it is one
        } else {
            number = ++count_;
            const Level level(depth_);
            printNumbered(archive_.classOf(object), object);
        }
    }

    // Collections that are not as the format has them are shown as the records that they are.
    void printNumbered(const ArchiveReading::ArchivedClass& objectClass, const Item& object) {
        const auto objects = archive_.findArray(object, "NS.objects");
        const auto keys = archive_.findArray(object, "NS.keys");
        if (objectClass.shape == Shape::kArray && objects) {
            printObjects(*objects);
        } else if (objectClass.shape == Shape::kSet && objects) {
            out_.beginObject();
            out_.key("$set");
            printObjects(*objects);
            out_.endObject();
        } else if (objectClass.shape == Shape::kDictionary && objects && keys &&
                   objects->count == keys->count) {
            printDictionary(*keys, *objects);
        } else {
            printRecord(objectClass.name, object);
        }
    }

    void printRecord(const std::string& className, const Item& record) {
        out_.beginObject();
        out_.key(kClassKey);
        out_.text(className);
        for (std::uint64_t i = 0; i < record.count; ++i) {
            const std::string& key = archive_.key(record, i);
            if (key != kClassKey) {
                out_.key(key);
                printValue(archive_.value(record, i));
            }
        }
        out_.endObject();
    }

    void printObjects(const Item& list) {
        archive_.visit(list);
        out_.beginArray();
        for (std::uint64_t i = 0; i < list.count; ++i) {
            printValue(objectAt(list, i));
        }
        out_.endArray();
    }

    // Of an object's list: a reference or a plain value, as the unarchiver has it.
    Member objectAt(const Item& list, std::uint64_t position) const {
        const Member member = archive_.element(list, position);
        if (member.item.kind != Kind::kUid && !ArchiveReading::isPlain(member.item)) {
            throw Error("no keyed archive, or a damaged one: an element that is no object");
        }
        return member;
    }

    // JSON has texts for keys, each of them once.
    void printDictionary(const Item& keys, const Item& objects) {
        archive_.visit(keys);
        archive_.visit(objects);
        const auto texts = textsOf(keys);
        if (!texts) {
            return printPairs(keys, objects);
        }
        out_.beginObject();
        for (std::uint64_t i = 0; i < objects.count; ++i) {
            writeKey(out_, (*texts)[static_cast<std::size_t>(i)]);
            printValue(objectAt(objects, i));
        }
        out_.endObject();
    }

    void printPairs(const Item& keys, const Item& objects) {
        out_.beginObject();
        out_.key("$dictionary");
        out_.beginArray();
        for (std::uint64_t i = 0; i < keys.count; ++i) {
            out_.beginArray();
            printValue(objectAt(keys, i));
            printValue(objectAt(objects, i));
            out_.endArray();
        }
        out_.endArray();
        out_.endObject();
    }

    std::optional<std::vector<std::string>> textsOf(const Item& keys) {
        std::vector<std::string> texts;
        std::set<std::string> known;
        for (std::uint64_t i = 0; i < keys.count; ++i) {
            auto text = textOf(objectAt(keys, i));
            if (!text || !known.insert(*text).second) {
                return std::nullopt;
            }
            texts.push_back(*std::move(text));
        }
        return texts;
    }

    // The text of a key; nothing when it is nil, no text, or one that JSON does not hold.
    std::optional<std::string> textOf(const Member& key) {
        const auto text = NS::as<NS::String>(
            key.item.kind == Kind::kUid ? valueOfKey(key.item.bits) : archive_.plainValue(key));
        return text ? utf8Of(*text) : std::nullopt;
    }

    NS::RefPtr<NS::Object> valueOfKey(std::uint64_t uid) {
        const Member entry = archive_.entry(uid);
        if (ArchiveReading::isNil(entry)) {
            return nullptr;
        }
        return entry.item.kind == Kind::kDictionary ? boxedKey(uid, entry.item)
                                                    : archive_.plainValue(entry);
    }

    NS::RefPtr<NS::Object> boxedKey(std::uint64_t uid, const Item& object) {
        return numbers_[uid] == 0 ? archive_.boxedValue(uid, object) : nullptr;
    }

    // Collections of the list itself, which have no identity.
    void printArrayOfList(const Item& array) {
        const Level level(depth_);
        archive_.visit(array);
        out_.beginArray();
        for (std::uint64_t i = 0; i < array.count; ++i) {
            printValue(archive_.element(array, i));
        }
        out_.endArray();
    }

    void printDictionaryOfList(const Item& dictionary) {
        const Level level(depth_);
        archive_.visit(dictionary);
        out_.beginObject();
        for (std::uint64_t i = 0; i < dictionary.count; ++i) {
            writeKey(out_, archive_.key(dictionary, i));
            printValue(archive_.value(dictionary, i));
        }
        out_.endObject();
    }

    ArchiveReading archive_;
    JsonOutput& out_;
    std::vector<std::uint32_t> numbers_; // by UID; 0 for what was not printed yet
    std::uint32_t count_ = 0;
    std::size_t depth_ = 0;
};

void print(NS::Bytes list, std::ostream& out) {
    JsonOutput json(out, kOutputAtLeast + kOutputPerByte * list.size());
    ArchivePrinter(list, json).print();
}

// Once into nothing, so that a damaged archive leaves no half of a value behind.
void printWhole(NS::Bytes list, std::ostream& out) {
    std::ostream nothing(nullptr);
    print(list, nothing);
    print(list, out);
}

} // namespace

void printArchive(NS::Bytes archive, std::ostream& out) {
    if (!NS::isXMLPropertyList(archive)) {
        return printWhole(archive, out);
    }
    std::string reason;
    const auto list = NS::binaryListOfXML(archive, reason);
    if (!list) {
        throw Error("no keyed archive, or a damaged one: " + reason);
    }
    printWhole(*list, out);
}

} // namespace Inspection
