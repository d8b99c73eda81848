#pragma once

#include "Platform/Foundation/Property.h"

namespace Tests {

// A record as archives hold them: three values under keys, one of which is the format's own word.
class ArchivedRecord final : public NS::Object {
    NS_OBJECT(ArchivedRecord)
  public:
    ArchivedRecord() noexcept { ++living; }
    ~ArchivedRecord() override { --living; }

    NS_RECORD_PROPERTY(NS::Object, first, setFirst)
    NS_RECORD_PROPERTY(NS::Object, second, setSecond)
    NS_RECORD_SCALAR(double, time, setTime)

    void encodeWithCoder(NS::KeyedArchiver& coder) const override;
    void initWithCoder(NS::KeyedUnarchiver& coder) override;

    // How many there are now.
    static inline int living = 0;
};

// A class that encodes itself and that no archive can be read into.
class UnknownRecord final : public NS::Object {
    NS_OBJECT(UnknownRecord)
  public:
    void encodeWithCoder(NS::KeyedArchiver&) const override {}
};

} // namespace Tests
