#pragma once

#include "Platform/Foundation/String.h"
#include "Platform/Foundation/StringBuilder.h"

#include <string_view>

// Each hands a text's UTF-8 to a function, in place where the text is ASCII.

template <class Function>
void withUtf8(const NS::String& text, Function&& function) {
    if (text.isAscii()) {
        function(text.ascii());
    } else {
        function(std::string_view(text.utf8()));
    }
}

template <class Function>
void withUtf8(const NS::StringBuilder& text, Function&& function) {
    if (text.isAscii()) {
        function(text.ascii());
    } else {
        withUtf8(*text.string(), function);
    }
}
