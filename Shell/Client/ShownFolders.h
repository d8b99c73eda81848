#pragma once

#include "Shell/Client/ClientConnection.h"
#include "Shell/Client/FinderClient.h"
#include "Shell/Client/FollowedExtension.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Shell {

// The folders that a file manager's windows show, told to the extension that is there.
class ShownFolders {
  public:
    // Both outlive it.
    ShownFolders(ClientConnection& connection, const FollowedExtension& extension)
        : connection_(connection), extension_(extension) {}
    ShownFolders(const ShownFolders&) = delete;
    ShownFolders& operator=(const ShownFolders&) = delete;

    Outcome begin(std::string_view folder);
    Outcome end(std::string_view folder);
    // The same for a folder that is not kept: told once, to the extension that is there.
    Outcome tellBegin(std::string_view folder);

    // Tells an extension that has come, or watches other folders, what is shown of them. Quick when
    // neither is so.
    void update();

    // How many answers have not come, and the last error among those that have since it was asked
    // last.
    std::size_t unanswered() const noexcept { return unanswered_; }
    Outcome takeWorst() noexcept;

  private:
    struct Shown {
        std::size_t count = 0;
        std::string told; // the file URL that the extension was told; empty when it was not
    };

    std::string watchedURL(std::string_view folder) const;
    void place(const std::string& folder, Shown& shown);
    Outcome tellBegin(const std::string& url, bool untilCallerGoes);
    Outcome tellEnd(const std::string& url);
    bool isCongested() const noexcept;
    Outcome sent(int result);
    Outcome notTold() const noexcept;
    static int answered(sd_bus_message* reply, void* object, sd_bus_error*) noexcept;

    ClientConnection& connection_;
    const FollowedExtension& extension_;
    std::map<std::string, Shown, std::less<>> shown_;
    std::string toldOwner_;
    std::vector<std::string> watchedFolders_; // when update() looked last
    std::size_t unanswered_ = 0;
    Outcome worst_ = Outcome::kDone;
};

} // namespace Shell
