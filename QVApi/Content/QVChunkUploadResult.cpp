#include "QVApi/Content/QVChunkUploadResult.h"

#include "Platform/Foundation/Format.h"

namespace {

constexpr QVMapping kMapping[] = {
    {"bytesWritten", "TotalWritten"},
};

} // namespace

QV_DEFINE_CONTENT_ITEM(QVChunkUploadResult, .mapping = kMapping)

NS::Ref<NS::String> QVChunkUploadResult::description() const {
    return NS::stringWithFormat("%@ (bytesWritten=%@)", QVContentItem::description(),
                                bytesWritten());
}
