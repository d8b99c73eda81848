#include "Benchmarks/Support/FlatArchive.h"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace Benchmarks {

namespace {

using Reference = std::uint32_t;

// Of a file: the time it was received, its four values and its date, the date's value and record,
// its own record, and the UIDs of all but the numbers that are no objects.
constexpr std::size_t kObjectsPerFile = 14;
// Beside those, of the listing, the classes and the keys; ample.
constexpr std::size_t kOtherObjects = 100;
// The most that a file's objects take beside its texts, with their offsets.
constexpr std::size_t kBytesPerFile = 260;
constexpr std::size_t kOtherBytes = 4096;
constexpr std::size_t kTrailer = 32;

void store(std::byte* target, std::uint64_t value, unsigned width) noexcept {
    const std::uint64_t raw = __builtin_bswap64(value << (64U - 8U * width));
    std::memcpy(target, &raw, sizeof raw); // what follows is written over it
}

unsigned widthOf(std::uint64_t value) noexcept {
    return value < 0x100 ? 1U : (value < 0x10000 ? 2U : (value >> 32U == 0 ? 4U : 8U));
}

class Writer {
  public:
    Writer(std::byte* out, std::size_t room, unsigned referenceWidth, std::size_t objects)
        : begin_(out), out_(out), end_(out + room), width_(referenceWidth) {
        (void)offsets_.room(objects);
        std::memcpy(out_, "bplist00", 8);
        out_ += 8;
    }

    // Ends the program: a floor that wrote out of bounds would be no floor.
    void needs(std::size_t room) const {
        if (static_cast<std::size_t>(end_ - out_) < room) {
            std::abort();
        }
    }

    Reference text(std::string_view characters) {
        const Reference object = counted(0x50, characters.size());
        std::memcpy(out_, characters.data(), characters.size());
        out_ += characters.size();
        return object;
    }
    Reference integer(std::int64_t value) {
        const unsigned width = widthOf(static_cast<std::uint64_t>(value));
        return number(0x10U | static_cast<unsigned>(std::countr_zero(width)),
                      static_cast<std::uint64_t>(value), width);
    }
    Reference real(double value) { return number(0x23, std::bit_cast<std::uint64_t>(value), 8); }

    // The next entry of "$objects", and the reference of its UID.
    Reference entry(Reference contents) {
        entries_.add(contents);
        return uid(entries_.size() - 1);
    }
    Reference uid(std::uint64_t value) {
        const unsigned width = widthOf(value);
        return number(0x80U | (width - 1), value, width);
    }
    // As many entries that are written later; the number of the first.
    std::size_t keepEntries(std::size_t count) {
        (void)entries_.room(count);
        entries_.extend(count);
        return entries_.size() - count;
    }
    void setEntry(std::size_t uid, Reference contents) { entries_[uid] = contents; }

    Reference array(std::span<const Reference> elements) {
        needs(16 + elements.size() * width_);
        const Reference object = counted(0xA0, elements.size());
        references(elements);
        return object;
    }
    Reference dictionary(std::span<const Reference> keys, std::span<const Reference> values) {
        const Reference object = counted(0xD0, keys.size());
        references(keys);
        references(values);
        return object;
    }

    // Writes table and trailer; the length of it all.
    std::size_t finish(Reference version, Reference archiver, Reference root,
                       std::span<const Reference> keys) {
        const Reference objects = array(entries_);
        const Reference values[] = {version, archiver, root, objects};
        const Reference top = dictionary(keys, values);
        const auto table = static_cast<std::uint64_t>(out_ - begin_);
        const unsigned width = widthOf(table);
        needs(offsets_.size() * width + kTrailer + sizeof(std::uint64_t));
        for (const std::uint32_t offset : offsets_) {
            store(out_, offset, width);
            out_ += width;
        }
        std::memset(out_, 0, kTrailer);
        out_[6] = static_cast<std::byte>(width);
        out_[7] = static_cast<std::byte>(width_);
        store(out_ + 8, offsets_.size(), 8);
        store(out_ + 16, top, 8);
        store(out_ + 24, table, 8);
        return static_cast<std::size_t>(out_ - begin_) + kTrailer;
    }

  private:
    Reference begin() {
        offsets_.add(static_cast<std::uint32_t>(out_ - begin_));
        return static_cast<Reference>(offsets_.size() - 1);
    }
    Reference number(unsigned marker, std::uint64_t bits, unsigned width) {
        const Reference object = begin();
        *out_++ = static_cast<std::byte>(marker);
        store(out_, bits, width);
        out_ += width;
        return object;
    }
    Reference counted(unsigned marker, std::size_t count) {
        const Reference object = begin();
        *out_++ = static_cast<std::byte>(marker | (count < 0xF ? count : 0xF));
        if (count >= 0xF) {
            const unsigned width = widthOf(count);
            *out_++ =
                static_cast<std::byte>(0x10U | static_cast<unsigned>(std::countr_zero(width)));
            store(out_, count, width);
            out_ += width;
        }
        return object;
    }
    void references(std::span<const Reference> all) {
        for (const Reference each : all) {
            store(out_, each, width_);
            out_ += width_;
        }
    }

    std::byte* begin_;
    std::byte* out_;
    std::byte* end_;
    unsigned width_;
    NS::GrowingBuffer<std::uint32_t> offsets_;
    NS::GrowingBuffer<Reference> entries_;
};

// A listing's archive by an author who knows what is in it.
class ListingWriter {
  public:
    ListingWriter(Writer& list, const std::vector<File>& files) : list_(list), files_(files) {}

    std::size_t write() {
        (void)list_.entry(list_.text("$null"));
        class_ = list_.text("$class");
        className_ = list_.text("$classname");
        classes_ = list_.text("$classes");
        root_ = list_.text("NSObject");
        item_ = list_.text("QVContentItem");
        const std::size_t root = list_.keepEntries(1);
        const Reference rootUid = list_.uid(root);
        writeListing(root);
        writeFiles();
        const Reference rootKey = list_.text("root");
        const Reference keys[] = {list_.text("$version"), list_.text("$archiver"),
                                  list_.text("$top"), list_.text("$objects")};
        const Reference version = list_.integer(100000);
        const Reference archiver = list_.text("NSKeyedArchiver");
        return list_.finish(version, archiver,
                            list_.dictionary(std::span(&rootKey, 1), std::span(&rootUid, 1)), keys);
    }

  private:
    Reference classRecord(std::initializer_list<Reference> chain) {
        const Reference keys[] = {className_, classes_};
        const Reference values[] = {*chain.begin(), list_.array({chain.begin(), chain.size()})};
        return list_.entry(list_.dictionary(keys, values));
    }

    // A text that is an object of its own.
    Reference textEntry(std::string_view text) { return list_.entry(list_.text(text)); }

    void writeListing(std::size_t uid) {
        const Reference itsClass = classRecord({list_.text("QVFolderListItem"), item_, root_});
        received_ = list_.text("timeReceived");
        identifier_ = list_.text("identifier");
        name_ = list_.text("name");
        listKey_ = list_.text("files");
        const Reference nil = 1; // behind "$null"
        const std::size_t lists = list_.keepEntries(2);
        filesUid_ = lists;
        const Reference keys[] = {class_,
                                  received_,
                                  identifier_,
                                  list_.text("updateTime"),
                                  name_,
                                  list_.text("path"),
                                  list_.text("parentFolderId"),
                                  list_.text("directFolderLink"),
                                  list_.text("responseType"),
                                  listKey_,
                                  list_.text("folders"),
                                  list_.text("encrypted")};
        const Reference values[] = {itsClass,
                                    list_.real(0),
                                    nil,
                                    list_.entry(list_.integer(kUpdateTime)),
                                    textEntry(kListingText),
                                    nil,
                                    textEntry(kListingText),
                                    nil,
                                    textEntry(kListingText),
                                    list_.uid(lists),
                                    list_.uid(lists + 1),
                                    list_.entry(list_.integer(0))};
        list_.setEntry(uid, list_.dictionary(keys, values));
    }

    void writeFiles() {
        const Reference array =
            classRecord({list_.text("NSMutableArray"), list_.text("NSArray"), root_});
        const Reference keys[] = {class_, list_.text("NS.objects")};
        const std::size_t first = list_.keepEntries(files_.size());
        std::vector<Reference> uids;
        uids.reserve(files_.size());
        list_.needs(files_.size() * sizeof(std::uint64_t));
        for (std::size_t i = 0; i < files_.size(); ++i) {
            uids.push_back(list_.uid(first + i));
        }
        const Reference filled[] = {array, list_.array(uids)};
        list_.setEntry(filesUid_, list_.dictionary(keys, filled));
        const Reference empty[] = {array, list_.array({})};
        list_.setEntry(filesUid_ + 1, list_.dictionary(keys, empty));
        writeRecords(first);
    }

    void writeRecords(std::size_t first) {
        const Reference dateClass = classRecord({list_.text("NSDate"), root_});
        const Reference dateKeys[] = {class_, list_.text("NS.time")};
        const Reference fileClass = classRecord({list_.text("QVFileItem"), item_, root_});
        const Reference keys[] = {class_,
                                  received_,
                                  identifier_,
                                  name_,
                                  list_.text("size"),
                                  list_.text("requireCompression"),
                                  list_.text("dateModified")};
        for (const File& file : files_) {
            list_.needs(kBytesPerFile + file.identifier.size() + file.name.size());
            const Reference received = list_.real(0);
            const Reference identifier = textEntry(file.identifier);
            const Reference name = textEntry(file.name);
            const Reference size = list_.entry(list_.integer(file.size));
            const Reference compression = list_.entry(list_.integer(file.compression));
            const Reference time[] = {
                dateClass, list_.real(static_cast<double>(file.modified - kReferenceDate))};
            const Reference date = list_.entry(list_.dictionary(dateKeys, time));
            const Reference values[] = {fileClass, received,    identifier, name,
                                        size,      compression, date};
            list_.setEntry(first++, list_.dictionary(keys, values));
        }
    }

    Writer& list_;
    const std::vector<File>& files_;
    Reference class_ = 0;
    Reference className_ = 0;
    Reference classes_ = 0;
    Reference root_ = 0;
    Reference item_ = 0;
    Reference received_ = 0;
    Reference identifier_ = 0;
    Reference name_ = 0;
    Reference listKey_ = 0;
    std::size_t filesUid_ = 0;
};

std::size_t roomFor(const std::vector<File>& files) {
    std::size_t room = kOtherBytes;
    for (const File& file : files) {
        room += kBytesPerFile + file.identifier.size() + file.name.size();
    }
    return room;
}

} // namespace

FlatArchive::FlatArchive(const std::vector<File>& files) {
    const std::size_t room = roomFor(files);
    const std::size_t objects = kOtherObjects + kObjectsPerFile * files.size();
    Writer list(bytes_.room(room), room, widthOf(objects), objects);
    bytes_.extend(ListingWriter(list, files).write());
}

} // namespace Benchmarks
