#pragma once

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

#include <cstdint>

namespace NS {

// A failure that a caller is told of: whose codes it uses, the code, and more facts. Never changes.
class Error final : public Object {
    NS_OBJECT(Error)
  public:
    // Copies what could still change.
    Error(const Ref<String>& domain, std::int64_t code,
          const RefPtr<Dictionary>& userInfo = nullptr);

    const Ref<String>& domain() const noexcept { return domain_; }
    std::int64_t code() const noexcept { return code_; }
    // Never nil; empty when there are no more facts.
    const Ref<Dictionary>& userInfo() const noexcept { return userInfo_; }
    // The text under "NSLocalizedDescription", or nil.
    RefPtr<Object> localizedDescription() const;

    bool isEqual(const Object* other) const override;
    std::size_t hash() const override;
    // Error Domain=NSPOSIXErrorDomain Code=2 "No such file" UserInfo={NSFilePath=/x}
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;

  private:
    Ref<String> domain_;
    std::int64_t code_;
    Ref<Dictionary> userInfo_;
};

} // namespace NS
