#include "QVApi/Content/QVNameIndex.h"

#include "QVApi/Content/QVEntryName.h"

#include <utility>

bool QVNameIndex::replacesNone(const NS::MutableArray& list, const NS::RefPtr<NS::Object>& name) {
    const std::uint64_t renamings = QVEntryName::renamings();
    if (list.revision() != revision_ || renamings != renamings_) {
        renamings_ = renamings;
        becomes(State::kNotRead);
        return false;
    }
    if (state_ == State::kNotRead && vainLooks_ >= kVainLooks) {
        read(list);
    }
    if (state_ == State::kKnown && !name) {
        becomes(State::kUnfit);
    }
    return state_ == State::kKnown && std::exchange(names_.numberOf(name.get()), 1U) == 0;
}

void QVNameIndex::read(const NS::MutableArray& list) {
    state_ = State::kKnown;
    names_.reserve(list.count() + 1);
    for (const NS::Ref<NS::Object>& entry : list) {
        const auto name = nameOf_(*entry);
        if (!name) {
            return becomes(State::kUnfit);
        }
        names_.numberOf(name.get()) = 1;
    }
}

void QVNameIndex::becomes(State state) {
    state_ = state;
    vainLooks_ = 0;
    names_ = {};
}
