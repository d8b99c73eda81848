#pragma once

#include "Shell/Client/FinderClient.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace FileManagers {

// Which folders the windows and tabs of a file manager show. Turns what file managers tell, each in
// its own way, into begins and ends in pairs; of a folder that several views show, the client tells
// the extension once.
class ShownViews {
  public:
    using View = const void*; // what a file manager tells its windows or tabs apart by

    // The client outlives it.
    explicit ShownViews(Shell::FinderClient& client) : client_(client) {}
    // Ends nothing: leaving the bus does.
    ~ShownViews() = default;
    ShownViews(const ShownViews&) = delete;
    ShownViews& operator=(const ShownViews&) = delete;

    // A view shows these folders now, absolute paths, and none else.
    void show(View view, const std::vector<std::string>& folders);
    // It has gone.
    void close(View view) { show(view, {}); }

  private:
    Shell::FinderClient& client_;
    std::map<View, std::set<std::string>> shown_;
};

} // namespace FileManagers
