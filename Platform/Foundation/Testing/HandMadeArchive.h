#pragma once

#include "Platform/Foundation/BinaryPropertyListWriter.h"
#include "Platform/Foundation/Data.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace Tests {

// A keyed archive put together entry by entry, as another writer, or an attacker, would.
class HandMadeArchive {
  public:
    using Reference = NS::BinaryPropertyListWriter::Reference;
    using Uid = std::uint32_t;
    using Members = std::vector<std::pair<std::string_view, Reference>>;

    NS::BinaryPropertyListWriter list;
    std::vector<Reference> entries{list.addAscii("$null")};
    std::string_view archiver = "NSKeyedArchiver";
    std::int64_t version = 100000;
    std::string_view rootKey = "root";
    Members top; // what stands beside the root

    // Adds an entry to "$objects".
    Uid add(Reference contents) {
        entries.push_back(contents);
        return static_cast<Uid>(entries.size() - 1);
    }
    // The reference to an entry, as objects hold it.
    Reference uid(Uid entry) { return list.addUid(entry); }

    Reference dictionary(const Members& members) {
        std::vector<Reference> keys;
        std::vector<Reference> values;
        for (const auto& [key, value] : members) {
            keys.push_back(list.addAscii(key));
            values.push_back(value);
        }
        return list.addDictionary(keys, values);
    }

    Uid addClass(std::string_view name) {
        const Reference text = list.addAscii(name);
        return add(dictionary({
            {"$classname", text                     },
            {"$classes",   list.addArray({&text, 1})}
        }));
    }
    Uid addRecord(Uid classEntry, Members members) {
        members.emplace_back("$class", uid(classEntry));
        return add(dictionary(members));
    }
    // A collection that holds these entries under a key.
    Uid addCollection(Uid classEntry, const std::vector<Uid>& elements) {
        return addRecord(classEntry, {
                                         {"NS.objects", uids(elements)}
        });
    }
    Uid addDictionary(Uid classEntry, const std::vector<Uid>& keys,
                      const std::vector<Uid>& objects) {
        return addRecord(classEntry, {
                                         {"NS.keys",    uids(keys)   },
                                         {"NS.objects", uids(objects)}
        });
    }
    Reference uids(const std::vector<Uid>& elements) {
        std::vector<Reference> references;
        for (const Uid element : elements) {
            references.push_back(uid(element));
        }
        return list.addArray(references);
    }

    NS::Ref<NS::Data> data(Uid root) {
        Members all = top;
        all.emplace_back(rootKey, uid(root));
        const Reference whole = dictionary({
            {"$version",  list.addInteger(version)},
            {"$archiver", list.addAscii(archiver) },
            {"$top",      dictionary(all)         },
            {"$objects",  list.addArray(entries)  }
        });
        return NS::Data::dataWithBuffer(NS::BinaryPropertyListWriter(list).finish(whole));
    }
};

} // namespace Tests
