#include "FileManagers/Shared/NotDone.h"

namespace FileManagers {

using Shell::Outcome;

namespace {

std::string reason(Outcome outcome, const std::string& drive, const std::string& error) {
    switch (outcome) {
    case Outcome::kTimedOut:
        return drive + " does not answer. Nothing was done, and nothing will be done later.";
    case Outcome::kAbsent:
        return drive + " is not running.";
    case Outcome::kTooLarge:
        return "Too many items are selected to handle them at once. Nothing was done.";
    case Outcome::kNotInMenu:
    case Outcome::kNotOffered:
        return "This is no longer possible here. Nothing was done.";
    default:
        return drive + " reports an error" + (error.empty() ? "." : ": " + error);
    }
}

} // namespace

NotDone notDone(const std::string& title, Outcome outcome, const std::string& drive,
                const std::string& error) {
    return {"“" + title + "” could not be carried out",
            reason(outcome, drive.empty() ? "The drive" : drive, error)};
}

} // namespace FileManagers
