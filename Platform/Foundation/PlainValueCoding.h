#pragma once

#include "Platform/Foundation/Ref.h"

namespace NS {

struct Class;
class KeyedUnarchiver;
class Object;

// Makes an object of the archive's dictionary for it in one go.
using ValueDecoder = RefPtr<Object> (*)(KeyedUnarchiver& coder);

// The decoder of a class whose objects are made in one go, because they never change or refer to
// nothing; null for a class whose objects are made first and then filled, since they may come to
// hold themselves.
ValueDecoder valueDecoderFor(const Class& objectClass) noexcept;

} // namespace NS
