#pragma once

#include <string>

// Links to shared items, a small file for each in the host's data folder.
class ShareLinks {
  public:
    explicit ShareLinks(std::string folder) : folder_(std::move(folder)) {}

    struct Link {
        std::string url;
        std::string file; // absolute path
    };
    // The link to the item at a path relative to the drive: the same each time. Throws Refusal when
    // its file cannot be written.
    Link linkTo(const std::string& path) const;

  private:
    std::string folder_;
};
