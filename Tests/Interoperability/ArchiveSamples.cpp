// Archives for others to read, and a check of archives that others wrote.
//
//     ArchiveSamples write NAME FILE    archives a sample
//     ArchiveSamples check NAME FILE    0 when the file, read and archived again, is that very
//     archive:
//                                       the same values, classes and identities

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/URL.h"
#include "QVApi/Content/QVContentClasses.h"
#include "QVApi/Content/QVUserInfoItem.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Root = NS::Ref<NS::Object>;

template <class... Objects>
Root arrayOf(const Objects&... objects) {
    return NS::Array::arrayWithObjects({objects...});
}

Root texts() {
    return arrayOf(NS::str(""), NS::str("ascii"), NS::str("caf\xC3\xA9"),
                   NS::str("\xF0\x9F\x98\x80"), NS::str("$null"), NS::str("<a>&\"b\"\n"),
                   NS::str(std::string(300, 'x')), NS::make<NS::MutableString>(*NS::str("m")));
}

// A lone surrogate, and characters that XML does not have.
Root oddTexts() {
    return arrayOf(NS::String::fromUtf16(u"\xD800!"), NS::str(std::string_view("\0\1\x1F", 3)));
}

Root integers() {
    constexpr std::int64_t kValues[] = {0,          255,
                                        256,        65535,
                                        65536,      4294967295,
                                        4294967296, std::numeric_limits<std::int64_t>::max(),
                                        -1,         std::numeric_limits<std::int64_t>::min()};
    std::vector<NS::Ref<NS::Object>> numbers;
    for (const std::int64_t value : kValues) {
        numbers.emplace_back(NS::Number::numberWithLongLong(value));
    }
    return NS::make<NS::Array>(std::move(numbers));
}

Root unsignedIntegers() {
    return arrayOf(NS::Number::numberWithUnsignedLongLong(std::uint64_t{1} << 63U),
                   NS::Number::numberWithUnsignedLongLong(~std::uint64_t{0}));
}

Root otherNumbers() {
    return arrayOf(NS::Number::numberWithBool(true), NS::Number::numberWithBool(false),
                   NS::Number::numberWithDouble(0.5), NS::Number::numberWithDouble(-1e300),
                   NS::Number::numberWithDouble(0.1));
}

Root shortReal() {
    return NS::Number::numberWithFloat(1.5F);
}

Root data() {
    return arrayOf(NS::Data::dataWithBytes({}), NS::Data::dataWithBytes(NS::bytesOf("\xFF\x01")),
                   NS::make<NS::MutableData>(NS::bytesOf("mutable")));
}

Root dates() {
    return arrayOf(NS::make<NS::Date>(0), NS::make<NS::Date>(-1.25),
                   NS::make<NS::Date>(816677787.5));
}

Root collections() {
    const auto dictionary = NS::make<NS::MutableDictionary>();
    dictionary->setObject_forKey(arrayOf(NS::make<NS::Array>()), "array");
    dictionary->setObject_forKey(NS::make<NS::MutableArray>(), "mutable array");
    dictionary->setObject_forKey(NS::Set::setWithObject(NS::str("member")), "set");
    dictionary->setObject_forKey(NS::make<NS::MutableSet>(), "mutable set");
    dictionary->setObject_forKey(NS::make<NS::Dictionary>(), "dictionary");
    dictionary->setObject_forKey(NS::Null::null(), "null");
    return dictionary;
}

Root urls() {
    const auto base = NS::URL::URLWithString(*NS::str("http://host/a/"));
    const auto relative = NS::URL::URLWithString_relativeToURL(*NS::str("b"), base);
    return arrayOf(NS::Ref<NS::Object>(*base), NS::Ref<NS::Object>(*relative));
}

Root error() {
    return NS::make<NS::Error>(NS::str("Domain"), -3,
                               NS::Dictionary::dictionaryWithEntries({
                                   {"k", NS::str("v")}
    }));
}

// An array that stands in itself would live for ever.
void takeApart(const NS::RefPtr<NS::Object>& root) {
    if (const auto array = NS::as<NS::MutableArray>(root)) {
        array->removeAllObjects();
    }
}

// The first two are one text, the third is one that equals it; the array stands in itself.
Root shared() {
    const auto text = NS::str("same");
    const auto array = NS::make<NS::MutableArray>();
    array->addObject(text);
    array->addObject(text);
    array->addObject(NS::str("same"));
    array->addObject(array);
    return array;
}

Root numbersUpTo(int count) {
    std::vector<NS::Ref<NS::Object>> numbers;
    for (int i = 0; i < count; ++i) {
        numbers.emplace_back(NS::Number::numberWithInt(i));
    }
    return NS::make<NS::Array>(std::move(numbers));
}

Root threeHundred() {
    return numbersUpTo(300);
}

Root seventyThousand() {
    return numbersUpTo(70'000);
}

Root record() {
    auto item = NS::make<QVUserInfoItem>();
    item->setStorageUsed(NS::Number::numberWithLongLong(1'500'000'000));
    item->setStorageMax(NS::Number::numberWithLongLong(10240));
    item->setPlan(NS::str("Basic \xC3\xA9"));
    item->setTimeReceived(816677787.5);
    return item;
}

// A text for each property that has room for one.
Root filledRecord(const QVContentClass& itemClass) {
    auto item = itemClass.create();
    for (const NS::Class* c = &itemClass.objectClass; c != nullptr; c = c->superclass) {
        for (const NS::Property& property : c->properties) {
            const NS::Ref<NS::Object> text = NS::str(std::string(itemClass.objectClass.name) +
                                                     " caf\xC3\xA9 " + std::string(property.key));
            property.set(*item, property.isScalar
                                    ? NS::Ref<NS::Object>(NS::Number::numberWithInt(1))
                                    : text);
        }
    }
    return item;
}

Root records() {
    std::vector<NS::Ref<NS::Object>> items;
    for (const QVContentClass* const itemClass : qvContentClasses()) {
        items.emplace_back(filledRecord(*itemClass));
    }
    return NS::make<NS::Array>(std::move(items));
}

// Of each kind more than a collection searches one by one.
std::vector<NS::Ref<NS::Object>> manyCollections() {
    std::vector<NS::Ref<NS::Object>> collections;
    for (int i = 0; i < 20; ++i) {
        const auto text = [i] {
            return NS::str(std::to_string(i));
        };
        collections.emplace_back(arrayOf(text()));
        collections.emplace_back(NS::Set::setWithObject(text()));
        collections.emplace_back(NS::Dictionary::dictionaryWithEntries({
            {"k", text()}
        }));
    }
    return collections;
}

Root setOfCollections() {
    return NS::make<NS::Set>(manyCollections());
}

Root keyedByCollections() {
    std::vector<NS::Dictionary::Entry> entries;
    for (const auto& key : manyCollections()) {
        entries.emplace_back(key, NS::str("value"));
    }
    return NS::make<NS::Dictionary>(std::move(entries));
}

// Longer together than what is left of them when each is written once.
Root equalValues() {
    const auto text = NS::str(std::string(200, 't'));
    std::vector<NS::Ref<NS::Object>> values;
    for (int i = 0; i < 60; ++i) {
        values.emplace_back(NS::make<NS::MutableData>(NS::bytesOf(std::string(200, 'd'))));
        values.emplace_back(NS::Data::dataWithBytes(NS::bytesOf(std::string(200, 'd'))));
        values.emplace_back(NS::str(text->utf8()));
        values.emplace_back(NS::make<NS::MutableString>(*text));
    }
    return NS::make<NS::Array>(std::move(values));
}

struct Sample {
    std::string_view name;
    Root (*make)();
};

constexpr Sample kSamples[] = {
    {"texts",              &texts             },
    {"oddTexts",           &oddTexts          },
    {"integers",           &integers          },
    {"unsignedIntegers",   &unsignedIntegers  },
    {"otherNumbers",       &otherNumbers      },
    {"shortReal",          &shortReal         },
    {"data",               &data              },
    {"dates",              &dates             },
    {"collections",        &collections       },
    {"urls",               &urls              },
    {"error",              &error             },
    {"shared",             &shared            },
    {"equalValues",        &equalValues       },
    {"threeHundred",       &threeHundred      },
    {"seventyThousand",    &seventyThousand   },
    {"record",             &record            },
    {"records",            &records           },
    {"setOfCollections",   &setOfCollections  },
    {"keyedByCollections", &keyedByCollections},
};

int fail(const std::string& message) {
    std::cerr << message << '\n';
    return 1;
}

int write(const NS::Data& archive, const std::string& file) {
    std::ofstream(file, std::ios::binary) << NS::charactersOf(archive.bytes());
    return 0;
}

int check(const NS::Data& expected, const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const auto read =
        NS::KeyedUnarchiver::unarchiveObjectWithData(*NS::Data::dataWithBytes(NS::bytesOf(bytes)));
    const auto again = NS::KeyedArchiver::archivedDataWithRootObject(read);
    takeApart(read);
    return again->isEqual(&expected) ? 0 : fail("it is another value");
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto* const sample =
        arguments.size() == 3 ? std::ranges::find(kSamples, arguments[1], &Sample::name) : nullptr;
    if (sample == nullptr || sample == std::end(kSamples)) {
        return fail("usage: ArchiveSamples write|check NAME FILE");
    }
    try {
        const Root root = sample->make();
        const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(root);
        takeApart(root);
        return arguments[0] == "write" ? write(*archive, arguments[2])
                                       : check(*archive, arguments[2]);
    } catch (const NS::Exception& exception) {
        return fail(exception.what());
    }
}
