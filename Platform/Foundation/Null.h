#pragma once

#include "Platform/Foundation/Object.h"

namespace NS {

// The one object that stands for "no value" where a collection cannot hold nil.
class Null final : public Object {
    NS_OBJECT(Null)
  public:
    static Ref<Null> null();

    // "<null>"
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;
};

} // namespace NS
