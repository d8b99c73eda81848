#include "QVApi/Content/QVBinaryDataDescriptorItem.h"

#include "Platform/Foundation/Format.h"

namespace {

constexpr std::string_view kArchived[] = {"identifier", "completedBytes", "totalBytes", "path",
                                          "encrypted"};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVBinaryDataDescriptorItem, .archiveList = QVArchiveList::kOwn,
                       .archived = kArchived)

bool QVBinaryDataDescriptorItem::isBytesReady(std::uint64_t count) const {
    const auto completed = NS::cast<NS::Number>(completedBytes());
    if ((completed ? completed->unsignedLongLongValue() : 0) >= count) {
        return true;
    }
    const auto total = NS::cast<NS::Number>(totalBytes());
    const bool isUnknown = total && total->isEqualToNumber(*NS::Number::numberWithInt(0));
    return !isUnknown && isCompleted();
}

bool QVBinaryDataDescriptorItem::isCompleted() const {
    const auto completed = NS::cast<NS::Number>(completedBytes());
    const auto total = NS::cast<NS::Number>(totalBytes());
    return completed && total && completed->isEqualToNumber(*total);
}

NS::Ref<NS::String> QVBinaryDataDescriptorItem::description() const {
    return NS::stringWithFormat("%@ (id=%@, completed=%@, total=%@)", QVContentItem::description(),
                                identifier(), completedBytes(), totalBytes());
}
