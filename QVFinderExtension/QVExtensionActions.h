#pragma once

#include "Platform/Foundation/Selector.h"

#include <string_view>

// The names that the two ends of the link know.

// The host's port, and what every extension's port name begins with.
inline constexpr std::string_view kServerPortName = "com.Quorvane.QVExtensionCommsServer";
inline constexpr std::string_view kClientPortNamePrefix = "com.Quorvane.QVExtensionCommsClient-";

namespace QVExtensionAction {

// Sent by the extension.
inline constexpr std::string_view kAlive = "ext_alive";
inline constexpr std::string_view kRequestUserInfo = "ext_req_userinfo";
inline constexpr std::string_view kShare = "ext_share";
inline constexpr std::string_view kShowProps = "ext_show_props";
inline constexpr std::string_view kRefreshFolder = "ext_refresh_folder";
inline constexpr std::string_view kEmptyTrash = "ext_emptytrash";
inline constexpr std::string_view kMoveToTrash = "ext_movetotrash";
inline constexpr std::string_view kTrashDelete = "ext_trashdelete";
inline constexpr std::string_view kTrashRestore = "ext_trashrestore";
inline constexpr std::string_view kBeginObserving = "ext_obs_beg";
inline constexpr std::string_view kEndObserving = "ext_obs_end";

// Sent by the host.
inline constexpr std::string_view kInit = "ext_init";
inline constexpr std::string_view kUserInfo = "ext_bc_userinfo";
inline constexpr std::string_view kServerShutdown = "ext_serv_shtd";
inline constexpr std::string_view kActivityBegin = "ext_act_beg";
inline constexpr std::string_view kActivityEnd = "ext_act_end";

} // namespace QVExtensionAction

// An action and the routine of the endpoint that decodes its payload and calls its handler.
struct QVExtensionParseRoutine {
    std::string_view action;
    NS::Selector routine;
};

// "Archieved" is how the routine has always been spelled; both ends look it up by this very text.
inline constexpr NS::Selector kParseExtensionAlive{"parseExtensionAlive:invocation:senderPort:"};
inline constexpr NS::Selector kParseArchievedData{"parseArchievedData:invocation:senderPort:"};
inline constexpr NS::Selector kParseObservingStatus{"parseObservingStatus:invocation:senderPort:"};

inline constexpr QVExtensionParseRoutine kParseRoutines[] = {
    {QVExtensionAction::kAlive,           kParseExtensionAlive },
    {QVExtensionAction::kRequestUserInfo, kParseArchievedData  },
    {QVExtensionAction::kUserInfo,        kParseArchievedData  },
    {QVExtensionAction::kShare,           kParseArchievedData  },
    {QVExtensionAction::kShowProps,       kParseArchievedData  },
    {QVExtensionAction::kRefreshFolder,   kParseArchievedData  },
    {QVExtensionAction::kEmptyTrash,      kParseArchievedData  },
    {QVExtensionAction::kMoveToTrash,     kParseArchievedData  },
    {QVExtensionAction::kTrashDelete,     kParseArchievedData  },
    {QVExtensionAction::kTrashRestore,    kParseArchievedData  },
    {QVExtensionAction::kInit,            kParseArchievedData  },
    {QVExtensionAction::kServerShutdown,  kParseArchievedData  },
    {QVExtensionAction::kBeginObserving,  kParseObservingStatus},
    {QVExtensionAction::kEndObserving,    kParseObservingStatus},
    {QVExtensionAction::kActivityBegin,   kParseArchievedData  },
    {QVExtensionAction::kActivityEnd,     kParseArchievedData  },
};
