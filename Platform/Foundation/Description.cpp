#include "Platform/Foundation/Description.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/StringBuilder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace NS {

namespace {

constexpr std::size_t kIndent = 4;
constexpr std::size_t kDepthLimit = 64;
constexpr std::size_t kLengthLimit = std::size_t{1} << 20U;
// An element that is no collection describes itself, and may describe collections while it does.
constexpr int kNestedCallLimit = 16;

bool isBare(const String& text) noexcept {
    return text.length() > 0 && text.isAscii() && std::ranges::all_of(text.ascii(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
           });
}

char escapeLetter(char16_t unit) noexcept {
    switch (unit) {
    case u'\a':
        return 'a';
    case u'\b':
        return 'b';
    case u'\f':
        return 'f';
    case u'\n':
        return 'n';
    case u'\r':
        return 'r';
    case u'\t':
        return 't';
    case u'\v':
        return 'v';
    case u'"':
        return '"';
    case u'\\':
        return '\\';
    default:
        return 0;
    }
}

void appendEscaped(StringBuilder& out, char16_t unit) {
    if (const char letter = escapeLetter(unit); letter != 0) {
        out.append('\\');
        out.append(letter);
    } else if (unit >= 0x20 && unit < 0x7F) {
        out.append(static_cast<char>(unit));
    } else {
        std::array<char, 16> text{};
        const char* const format = unit < 0x80 ? "\\%03o" : "\\U%04x";
        (void)std::snprintf(text.data(), text.size(), format, unsigned{unit});
        out.appendAscii(text.data());
    }
}

// Each quoting doubles the backslashes of the one before, so that also a leaf has its limit.
Ref<String> withinLimit(const String& text) {
    return text.length() <= kLengthLimit
               ? text.copy()
               : text.substringToIndex(kLengthLimit)->stringByAppendingString(*str("..."));
}

// Writes one collection and what it holds. A nested collection is indented before its opening
// bracket too, also where that follows "key = ": that is how the platform shows it.
class CollectionWriter {
  public:
    Ref<String> string() const { return out_.string(); }

    void write(const Array& array, std::size_t level) { writeElements("(", array, ")", level); }

    void write(const Set& set, std::size_t level) { writeElements("{(", set, ")}", level); }

    void write(const Dictionary& dictionary, std::size_t level) {
        open("{");
        for (const Dictionary::Entry* entry : sortedEntries(dictionary)) {
            if (breaksOff()) {
                break;
            }
            indent(level + 1);
            writeElement(*entry->first, level + 1);
            out_.appendAscii(" = ");
            writeElement(*entry->second, level + 1);
            out_.appendAscii(";\n");
        }
        close("}", level);
    }

  private:
    template <class Collection>
    void writeElements(const char* opening, const Collection& objects, const char* closing,
                       std::size_t level) {
        open(opening);
        const char* separator = "";
        for (const Ref<Object>& object : objects) {
            if (breaksOff()) {
                break;
            }
            out_.appendAscii(separator);
            separator = ",\n";
            indent(level + 1);
            writeElement(*object, level + 1);
        }
        if (objects.count() > 0) {
            out_.append('\n');
        }
        close(closing, level);
    }

    void writeElement(const Object& object, std::size_t level) {
        if (const auto* array = as<Array>(&object)) {
            writeNested(*array, level);
        } else if (const auto* dictionary = as<Dictionary>(&object)) {
            writeNested(*dictionary, level);
        } else if (const auto* set = as<Set>(&object)) {
            writeNested(*set, level);
        } else {
            writeLeaf(object);
        }
    }

    template <class Collection>
    void writeNested(const Collection& collection, std::size_t level) {
        if (level >= kDepthLimit) {
            out_.appendAscii("...");
            return;
        }
        indent(level);
        write(collection, level);
    }

    void writeLeaf(const Object& object) {
        const Ref<String> text = withinLimit(*object.description());
        // A data's description has brackets of its own and is shown as it is.
        const bool bracketed = as<Data>(&object) != nullptr;
        out_.append(bracketed ? *text : *quotedForDescription(*text));
    }

    static std::vector<const Dictionary::Entry*> sortedEntries(const Dictionary& dictionary) {
        std::vector<const Dictionary::Entry*> entries;
        bool allTexts = true;
        for (const Dictionary::Entry& entry : dictionary) {
            entries.push_back(&entry);
            allTexts = allTexts && as<String>(entry.first.get()) != nullptr;
        }
        if (allTexts) {
            std::ranges::stable_sort(entries, [](const auto* a, const auto* b) {
                return as<String>(a->first.get())->compare(*as<String>(b->first.get())) < 0;
            });
        }
        return entries;
    }

    void open(const char* bracket) {
        out_.appendAscii(bracket);
        out_.append('\n');
    }
    void close(const char* bracket, std::size_t level) {
        indent(level);
        out_.appendAscii(bracket);
    }
    void indent(std::size_t level) { out_.appendRepeated(' ', level * kIndent); }

    // True when there is text enough; marks the place where it ends.
    bool breaksOff() {
        if (out_.length() < kLengthLimit) {
            return false;
        }
        if (!cut_) {
            out_.appendAscii("...");
            cut_ = true;
        }
        return true;
    }

    StringBuilder out_;
    bool cut_ = false;
};

// A call of description() from within another one's.
class NestedCall {
  public:
    NestedCall() { ++depth_; }
    ~NestedCall() { --depth_; }
    NestedCall(const NestedCall&) = delete;
    NestedCall& operator=(const NestedCall&) = delete;
    static bool isTooDeep() { return depth_ > kNestedCallLimit; }

  private:
    static constinit thread_local int depth_;
};

constinit thread_local int NestedCall::depth_ = 0;

template <class Collection>
Ref<String> describeCollection(const Collection& collection) {
    const NestedCall call;
    if (NestedCall::isTooDeep()) {
        return str("...");
    }
    CollectionWriter writer;
    writer.write(collection, 0);
    return writer.string();
}

} // namespace

Ref<String> describe(const Array& array) {
    return describeCollection(array);
}
Ref<String> describe(const Dictionary& dictionary) {
    return describeCollection(dictionary);
}
Ref<String> describe(const Set& set) {
    return describeCollection(set);
}

Ref<String> describeUserInfo(const Dictionary& userInfo) {
    const NestedCall call;
    StringBuilder out;
    out.appendAscii(" UserInfo={");
    const char* separator = "";
    for (const auto& [key, value] : userInfo) {
        if (NestedCall::isTooDeep() || out.length() >= kLengthLimit) {
            out.appendAscii("...");
            break;
        }
        out.appendAscii(separator);
        separator = ", ";
        out.append(*withinLimit(*key->description()));
        out.append('=');
        out.append(*withinLimit(*value->description()));
    }
    out.append('}');
    return out.string();
}

Ref<String> descriptionOf(const Object* object) {
    return object == nullptr ? str("(null)") : object->description();
}

Ref<String> quotedForDescription(const String& text) {
    StringBuilder out;
    if (isBare(text)) {
        out.append(text);
        return out.string();
    }
    out.append('"');
    for (std::size_t i = 0; i < text.length(); ++i) {
        appendEscaped(out, text.characterAtIndex(i));
    }
    out.append('"');
    return out.string();
}

} // namespace NS
