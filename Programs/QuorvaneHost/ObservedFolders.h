#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

// Which folders each extension shows. A folder that is begun twice is shown until it ended twice.
class ObservedFolders {
  public:
    void begin(const std::string& client, const std::string& folder) {
        folders_[client].insert(folder);
    }
    // False when the client did not show the folder.
    bool end(const std::string& client, const std::string& folder);
    void forget(const std::string& client) { folders_.erase(client); }

    // In the order of their bytes.
    std::vector<std::string> foldersOf(const std::string& client) const;

  private:
    std::map<std::string, std::multiset<std::string>> folders_;
};
