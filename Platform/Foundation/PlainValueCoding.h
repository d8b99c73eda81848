#pragma once

#include "Platform/Foundation/Ref.h"

namespace NS {

struct Class;
class KeyedUnarchiver;
class Object;

// Makes an object of the archive's dictionary for it in one go.
using ValueDecoder = RefPtr<Object> (*)(KeyedUnarchiver& coder);

// The decoder of a class whose objects never change or refer to nothing, and so need not be made
// before they are filled; null for any other class.
ValueDecoder valueDecoderFor(const Class& objectClass) noexcept;

} // namespace NS
