#include "Platform/Foundation/XMLPropertyList.h"

#include "Platform/Foundation/Base64.h"
#include "Platform/Foundation/BinaryPropertyListWriter.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/XMLPropertyListValues.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include <expat.h>

namespace NS {

namespace {

using Reference = BinaryPropertyListWriter::Reference;

constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr std::string_view kUidKey = "CF$UID";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Marks[] = {"\xFE\xFF", "\xFF\xFE"};

enum class Element : std::uint8_t {
    kPlist,
    kDict,
    kArray,
    kKey,
    kString,
    kInteger,
    kReal,
    kDate,
    kData,
    kTrue,
    kFalse,
};

struct ElementName {
    std::string_view name;
    Element element;
};

constexpr ElementName kElements[] = {
    {"plist",   Element::kPlist  },
    {"dict",    Element::kDict   },
    {"array",   Element::kArray  },
    {"key",     Element::kKey    },
    {"string",  Element::kString },
    {"integer", Element::kInteger},
    {"real",    Element::kReal   },
    {"date",    Element::kDate   },
    {"data",    Element::kData   },
    {"true",    Element::kTrue   },
    {"false",   Element::kFalse  },
};

bool isContainer(Element element) noexcept {
    return element <= Element::kArray;
}

// The first thing that is wrong ends the parsing by this exception, which does not leave the file.
struct Refusal {
    const char* reason;
};

[[noreturn]] void refuse(const char* reason) {
    throw Refusal{reason};
}

Element elementNamed(std::string_view name) {
    const auto* const row = std::ranges::find(kElements, name, &ElementName::name);
    if (row == std::end(kElements)) {
        refuse("an element that property lists do not have");
    }
    return row->element;
}

// Builds the binary list while the document goes by.
class Translation {
  public:
    void begin(std::string_view name) {
        const Element element = elementNamed(name);
        checkPlace(element);
        if (isContainer(element)) {
            open_.push_back({element, {}, {}, std::nullopt});
        } else {
            leaf_ = element;
            text_.clear();
        }
    }

    void end() {
        if (leaf_) {
            endLeaf(*std::exchange(leaf_, std::nullopt));
        } else {
            Container container = std::move(open_.back());
            open_.pop_back();
            endContainer(std::move(container));
        }
    }

    void characters(std::string_view utf8) {
        if (leaf_) {
            text_ += utf8;
        } else if (utf8.find_first_not_of(kWhiteSpace) != std::string_view::npos) {
            refuse("text outside of an element for it");
        }
    }

    ByteBuffer finish() { return list_.finish(top_.value()); }

  private:
    // An element that is open, with what it holds so far.
    struct Container {
        Element element;
        std::vector<Reference> keys;
        std::vector<Reference> values;
        std::optional<std::uint64_t> uid; // when the first entry may be that of a UID
    };

    void checkPlace(Element element) const {
        if (leaf_) {
            refuse("an element within a plain value");
        }
        if (open_.empty() != (element == Element::kPlist)) {
            refuse("plist is not the outermost element");
        }
        if (open_.size() > Limits::kDepth + 1) {
            refuse("collections stand too deep within one another");
        }
        if (open_.empty()) {
            return;
        }
        const Container& parent = open_.back();
        const bool keyIsDue =
            parent.element == Element::kDict && parent.keys.size() == parent.values.size();
        if ((element == Element::kKey) != keyIsDue) {
            refuse("keys and values do not take turns");
        }
        if (parent.element == Element::kPlist && top_) {
            refuse("a second value within plist");
        }
    }

    void endLeaf(Element element) {
        switch (element) {
        case Element::kKey:
            open_.back().keys.push_back(keyReference());
            return;
        case Element::kString:
            return place(list_.addString(*text()));
        case Element::kInteger:
            return placeInteger();
        case Element::kReal:
            return place(list_.addReal(valueOr(realFromXML(text_), "no real number")));
        case Element::kDate:
            return place(list_.addDate(valueOr(dateFromXML(text_), "no date")));
        case Element::kData:
            return place(list_.addData(valueOr(base64Decoded(text_), "no data in base 64")));
        default:
            checkEmpty();
            return place(list_.addBool(element == Element::kTrue));
        }
    }

    template <class T>
    static T valueOr(std::optional<T> value, const char* reason) {
        if (!value) {
            refuse(reason);
        }
        return *std::move(value);
    }

    void checkEmpty() const {
        if (text_.find_first_not_of(kWhiteSpace) != std::string::npos) {
            refuse("text within a truth value");
        }
    }

    Ref<String> text() const {
        const auto text = String::fromUtf8(text_);
        if (!text) {
            refuse("text that is not Unicode");
        }
        return Ref<String>(*text);
    }

    // A key that many dictionaries have is written once.
    Reference keyReference() {
        const auto known = keys_.find(text_);
        if (known != keys_.end()) {
            return known->second;
        }
        const Reference reference = list_.addString(*text());
        keys_.emplace(text_, reference);
        return reference;
    }

    void placeInteger() {
        const XMLInteger integer = valueOr(integerFromXML(text_), "no integer of 64 bits");
        Container& parent = open_.back();
        const bool mayBeUid = parent.element == Element::kDict && parent.values.empty() &&
                              !integer.isNegative && parent.keys.front() == uidKey();
        if (mayBeUid) {
            parent.uid = integer.magnitude;
            parent.values.push_back(0); // the end of the dictionary tells
            return;
        }
        place(integer.isNegative
                  ? list_.addInteger(static_cast<std::int64_t>(~integer.magnitude + 1))
                  : list_.addUnsigned(integer.magnitude));
    }

    // A reference that no key has while the document has not used this one.
    Reference uidKey() const {
        const auto known = keys_.find(kUidKey);
        return known == keys_.end() ? std::numeric_limits<Reference>::max() : known->second;
    }

    void endContainer(Container container) {
        if (container.element == Element::kPlist) {
            if (!top_) {
                refuse("a plist without a value");
            }
            return;
        }
        if (container.element == Element::kArray) {
            return place(list_.addArray(container.values));
        }
        if (container.keys.size() != container.values.size()) {
            refuse("a key without a value");
        }
        if (container.uid && container.keys.size() == 1) {
            return place(list_.addUid(*container.uid));
        }
        if (container.uid) {
            container.values.front() = list_.addUnsigned(*container.uid);
        }
        place(list_.addDictionary(container.keys, container.values));
    }

    void place(Reference reference) {
        Container& parent = open_.back();
        if (parent.element == Element::kPlist) {
            top_ = reference;
        } else {
            parent.values.push_back(reference);
        }
    }

    BinaryPropertyListWriter list_;
    std::map<std::string, Reference, std::less<>> keys_;
    std::vector<Container> open_;
    std::optional<Element> leaf_; // the plain value being read, and its text
    std::string text_;
    std::optional<Reference> top_;
};

// One document. No exception passes through the library: it is kept until the library has returned.
class Document {
  public:
    Document() : parser_(XML_ParserCreate(nullptr), &XML_ParserFree) {
        if (!parser_) {
            throw std::bad_alloc();
        }
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), &begin, &end);
        XML_SetCharacterDataHandler(parser_.get(), &characters);
        XML_SetEntityDeclHandler(parser_.get(), &declareEntity);
        XML_SetSkippedEntityHandler(parser_.get(), &skipEntity);
    }

    std::optional<ByteBuffer> parse(Bytes xml, std::string& reason) {
        const auto status = XML_Parse(parser_.get(), charactersOf(xml).data(),
                                      static_cast<int>(xml.size()), XML_TRUE);
        try {
            if (failure_) {
                std::rethrow_exception(failure_);
            }
            if (status != XML_STATUS_OK) {
                refuse(XML_ErrorString(XML_GetErrorCode(parser_.get())));
            }
            return translation_.finish();
        } catch (const Refusal& refusal) {
            reason = refusal.reason + (" on line " + std::to_string(line()));
        } catch (const Exception& exception) { // from the writer, which has a limit
            reason = exception.what();
        }
        return std::nullopt;
    }

  private:
    template <class Action>
    static void guarded(void* document, Action&& act) noexcept {
        auto& self = *static_cast<Document*>(document);
        if (self.failure_) {
            return; // the library has a few calls left when it is stopped
        }
        try {
            act(self.translation_);
        } catch (...) {
            self.failure_ = std::current_exception();
            (void)XML_StopParser(self.parser_.get(), XML_FALSE); // fails at the document's end only
        }
    }

    static void begin(void* document, const XML_Char* name, const XML_Char**) noexcept {
        guarded(document, [&](Translation& translation) { translation.begin(name); });
    }
    static void end(void* document, const XML_Char*) noexcept {
        guarded(document, [](Translation& translation) { translation.end(); });
    }
    static void characters(void* document, const XML_Char* utf8, int length) noexcept {
        guarded(document, [&](Translation& translation) {
            translation.characters({utf8, static_cast<std::size_t>(length)});
        });
    }
    static void declareEntity(void* document, const XML_Char*, int, const XML_Char*, int,
                              const XML_Char*, const XML_Char*, const XML_Char*,
                              const XML_Char*) noexcept {
        guarded(document, [](Translation&) { refuse("a document type that defines entities"); });
    }

    // Without a look at the document type's own file, the library takes any name for one of its.
    static void skipEntity(void* document, const XML_Char*, int) noexcept {
        guarded(document,
                [](Translation&) { refuse("an entity that XML itself does not define"); });
    }

    unsigned long line() const { return XML_GetCurrentLineNumber(parser_.get()); }

    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
    Translation translation_;
    std::exception_ptr failure_;
};

} // namespace

bool isXMLPropertyList(Bytes bytes) noexcept {
    std::string_view text = charactersOf(bytes);
    for (const std::string_view mark : kUtf16Marks) {
        if (text.starts_with(mark)) {
            return true;
        }
    }
    text.remove_prefix(text.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0);
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    return first != std::string_view::npos && text[first] == '<';
}

std::optional<ByteBuffer> binaryListOfXML(Bytes xml, std::string& reason) {
    if (xml.size() > std::size_t{std::numeric_limits<int>::max()}) {
        reason = "it is longer than 2 GiB";
        return std::nullopt;
    }
    return Document().parse(xml, reason);
}

} // namespace NS
