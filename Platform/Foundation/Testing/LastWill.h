#pragma once

#include "Platform/Foundation/Object.h"

#include <functional>
#include <utility>

namespace Tests {

// Does something when it ends, which is where a collection that holds it must be whole.
class LastWill final : public NS::Object {
  public:
    explicit LastWill(std::function<void()> act) : act_(std::move(act)) {}
    ~LastWill() override { act_(); }

  private:
    std::function<void()> act_;
};

} // namespace Tests
