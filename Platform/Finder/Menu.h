#pragma once

#include "Platform/Finder/MenuItem.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace NS {

// Entries in the order in which they are shown, under a title. Main thread.
class Menu final : public Object {
    NS_OBJECT(Menu)
  public:
    explicit Menu(Ref<String> title) : title_(std::move(title)) { items_.reserve(kUsualEntries); }

    const Ref<String>& title() const noexcept { return title_; }
    const std::vector<Ref<MenuItem>>& itemArray() const noexcept { return items_; }

    void addItem(Ref<MenuItem> item) { items_.push_back(std::move(item)); }
    // Makes an entry, adds it and gives it back.
    Ref<MenuItem> addItemWithTitle_action_keyEquivalent(Ref<String> title, Selector action,
                                                        Ref<String> keyEquivalent);

  private:
    static constexpr std::size_t kUsualEntries = 4;

    Ref<String> title_;
    std::vector<Ref<MenuItem>> items_;
};

} // namespace NS
