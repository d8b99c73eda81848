#pragma once

// The extension on the session bus, as Docs/finder-bus.md describes it.
namespace Shell::FinderInterface {

inline constexpr const char* kName = "com.Quorvane.Quorvane.QVFinderExtension";
inline constexpr const char* kObject = "/com/Quorvane/Quorvane/QVFinderExtension";
inline constexpr const char* kInterface = "com.Quorvane.Quorvane.QVFinderExtension";

// Had by an extension that does not know its drive yet, and by no other.
inline constexpr const char* kWaitingName = "com.Quorvane.Quorvane.QVFinderExtension.Waiting";

// What a place and a menu in bytes begin with. Those of another form begin with another byte.
inline constexpr char kPlaceForm = 1;
inline constexpr char kMenuForm = 1;

inline constexpr const char* kErrorInvalidArgs = "org.freedesktop.DBus.Error.InvalidArgs";
inline constexpr const char* kErrorLimitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";
inline constexpr const char* kErrorNotInMenu =
    "com.Quorvane.Quorvane.QVFinderExtension.Error.NotInMenu";
inline constexpr const char* kErrorTooLate =
    "com.Quorvane.Quorvane.QVFinderExtension.Error.TooLate";
inline constexpr const char* kErrorRaised = "com.Quorvane.Quorvane.QVFinderExtension.Error.Raised";

} // namespace Shell::FinderInterface
