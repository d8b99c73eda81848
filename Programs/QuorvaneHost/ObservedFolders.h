#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

// Which folders each extension shows. A folder that is begun twice is shown until it ended twice.
class ObservedFolders {
  public:
    // More than any person has open; beyond it a client is at fault.
    static constexpr std::size_t kMostFolders = 1'000;

    // False when the client shows as many folders as one may.
    bool begin(const std::string& client, const std::string& folder);
    // False when the client did not show the folder.
    bool end(const std::string& client, const std::string& folder);
    void forget(const std::string& client) { folders_.erase(client); }

    // In the order of their bytes.
    std::vector<std::string> foldersOf(const std::string& client) const;

  private:
    std::map<std::string, std::multiset<std::string>> folders_;
};
