#pragma once

#include "Platform/Foundation/Base64.h"
#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/ISO8601.h"
#include "Platform/Foundation/PropertyListValues.h"
#include "Platform/Foundation/String.h"

#include <cstdio>
#include <stdexcept>
#include <string>

namespace Tests {

// A binary property list in the XML form, for tests that have an archive and want it as XML. Its
// texts must be such as XML can hold.
class ListXML {
  public:
    explicit ListXML(const NS::Data& data) : list_(open(data)), values_(data.length()) {}

    std::string text() {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" +
               of(list_.topObject()) + "</plist>\n";
    }

  private:
    using Kind = NS::BinaryPropertyListReader::Kind;

    static NS::BinaryPropertyListReader open(const NS::Data& data) {
        const char* reason = nullptr;
        return NS::BinaryPropertyListReader::open(data.bytes(), reason).value();
    }

    static std::string element(const std::string& name, const std::string& contents) {
        return '<' + name + '>' + contents + "</" + name + '>';
    }

    static std::string escaped(const std::string& text) {
        std::string xml;
        for (const char c : text) {
            xml += c == '<' ? "&lt;" : (c == '&' ? "&amp;" : std::string(1, c));
        }
        return xml;
    }

    static std::string real(double value) {
        char buffer[40];
        (void)std::snprintf(buffer, sizeof buffer, "%.17g", value);
        return buffer;
    }

    std::string of(std::uint64_t number) {
        const auto item = list_.item(number);
        switch (item.kind) {
        case Kind::kBoolean:
            return item.bits != 0 ? "<true/>" : "<false/>";
        case Kind::kInteger:
            return element("integer", std::to_string(static_cast<std::int64_t>(item.bits)));
        case Kind::kUnsigned:
            return element("integer", std::to_string(item.bits));
        case Kind::kFloat:
        case Kind::kReal:
            return element("real", real(item.real));
        case Kind::kDate:
            return element("date", NS::iso8601FromSeconds(item.real).value());
        case Kind::kData:
            return element("data", NS::base64Encoded(item.bytes()));
        case Kind::kUid:
            return element("dict",
                           "<key>CF$UID</key>" + element("integer", std::to_string(item.bits)));
        case Kind::kArray:
            return element("array", elements(item));
        case Kind::kDictionary:
            return element("dict", entries(item));
        default:
            return element("string", characters(number));
        }
    }

    std::string characters(std::uint64_t number) {
        const char* reason = "";
        const auto text = NS::as<NS::String>(values_.value(list_.item(number), number, reason));
        return text ? escaped(text->utf8()) : throw std::runtime_error(reason);
    }

    std::string elements(const NS::BinaryPropertyListReader::Item& array) {
        std::string xml;
        for (std::uint64_t i = 0; i < array.count; ++i) {
            xml += of(list_.reference(array, i));
        }
        return xml;
    }

    std::string entries(const NS::BinaryPropertyListReader::Item& dictionary) {
        std::string xml;
        for (std::uint64_t i = 0; i < dictionary.count; ++i) {
            xml += element("key", characters(list_.reference(dictionary, i))) +
                   of(list_.reference(dictionary, dictionary.count + i));
        }
        return xml;
    }

    NS::BinaryPropertyListReader list_;
    NS::PropertyListValues values_;
};

} // namespace Tests
