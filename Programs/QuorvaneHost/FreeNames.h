#pragma once

#include <functional>
#include <string>

// The name itself where it is free, else the first free one of "name 2", "name 3", …: the number
// stands before a file name's extension, and the name is cut at a character so that the whole fits
// into 255 bytes.
std::string freeName(const std::string& name,
                     const std::function<bool(const std::string&)>& isFree);
