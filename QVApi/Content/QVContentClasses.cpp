#include "QVApi/Content/QVContentClasses.h"

#include "QVApi/Content/QVAnonymousItem.h"
#include "QVApi/Content/QVBinaryDataDescriptorItem.h"
#include "QVApi/Content/QVChunkUploadResult.h"
#include "QVApi/Content/QVFSIdItem.h"
#include "QVApi/Content/QVFileItem.h"
#include "QVApi/Content/QVFileThumbnailItem.h"
#include "QVApi/Content/QVFolderItem.h"
#include "QVApi/Content/QVFolderListItem.h"
#include "QVApi/Content/QVNotificationsItem.h"
#include "QVApi/Content/QVSharedXAttrs.h"
#include "QVApi/Content/QVSharingUsersItem.h"
#include "QVApi/Content/QVUploadFileHandle.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVApi/Content/QVUserLinksItem.h"
#include "QVApi/Content/QVUserSessionItem.h"

namespace {

constexpr const QVContentClass* kClasses[] = {
    &QVContentItem::kContentClass,
    &QVSynchedItem::kContentClass,
    &QVAnonymousItem::kContentClass,
    &QVUserSessionItem::kContentClass,
    &QVUserInfoItem::kContentClass,
    &QVUserLinksItem::kContentClass,
    &QVNotificationsItem::kContentClass,
    &QVSharingUserItem::kContentClass,
    &QVSharingUsersItem::kContentClass,
    &QVFileItem::kContentClass,
    &QVSharedFileItem::kContentClass,
    &QVFileInfoItem::kContentClass,
    &QVFileThumbnailItem::kContentClass,
    &QVFolderItem::kContentClass,
    &QVSharedFolderItem::kContentClass,
    &QVFolderInfoItem::kContentClass,
    &QVFSIdItem::kContentClass,
    &QVFolderFSIdItem::kContentClass,
    &QVFolderListItem::kContentClass,
    &QVSharedFolderListItem::kContentClass,
    &QVTrashFolderListItem::kContentClass,
    &QVSharedUsersFolderListItem::kContentClass,
    &QVStubFolderListItem::kContentClass,
    &QVBinaryDataDescriptorItem::kContentClass,
    &QVUploadFileHandle::kContentClass,
    &QVChunkUploadResult::kContentClass,
    &QVSharedXAttrs::kContentClass,
};

} // namespace

std::span<const QVContentClass* const> qvContentClasses() {
    return kClasses;
}
