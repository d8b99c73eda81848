#include "Platform/Foundation/StringBuilder.h"

#include "Platform/Foundation/Utf8.h"

namespace NS {

void StringBuilder::reserveLong(std::size_t length) {
    long_.reserve(length);
    if (!isLong_) {
        long_ = ascii();
        isLong_ = true;
    }
}

void StringBuilder::appendNarrow(std::string_view characters) {
    const std::size_t length = shortLength_ + characters.size();
    if (!isLong_ && length <= kShort) {
        characters.copy(short_.data() + shortLength_, characters.size());
        shortLength_ = length;
        return;
    }
    if (!isLong_) {
        reserveLong(length);
    }
    long_.append(characters);
}

void StringBuilder::widen() {
    if (wide_.empty()) {
        const std::string_view narrow = ascii();
        wide_.assign(narrow.begin(), narrow.end());
        shortLength_ = 0;
        long_.clear();
    }
}

void StringBuilder::append(const String& text) {
    if (text.isAscii()) {
        appendAscii(text.ascii());
    } else {
        widen();
        wide_.append(text.utf16());
    }
}

void StringBuilder::appendAscii(std::string_view characters) {
    if (wide_.empty()) {
        appendNarrow(characters);
    } else {
        wide_.append(characters.begin(), characters.end());
    }
}

void StringBuilder::appendUnit(char16_t unit) {
    if (unit < 0x80) {
        append(static_cast<char>(unit));
    } else {
        widen();
        wide_.push_back(unit);
    }
}

void StringBuilder::appendCodePoint(char32_t codePoint) {
    if (codePoint < 0x80) {
        append(static_cast<char>(codePoint));
    } else {
        widen();
        Utf8::appendUtf16(wide_, codePoint);
    }
}

void StringBuilder::appendRepeated(char asciiCharacter, std::size_t count) {
    if (count == 0) { // as for most texts, which are not padded
        return;
    }
    if (wide_.empty()) {
        appendNarrow(std::string(count, asciiCharacter));
    } else {
        wide_.append(count, static_cast<unsigned char>(asciiCharacter));
    }
}

Ref<String> StringBuilder::string() const {
    return wide_.empty() ? String::fromAscii(ascii()) : String::fromUtf16(wide_);
}

} // namespace NS
