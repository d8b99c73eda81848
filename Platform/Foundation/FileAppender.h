#pragma once

#include "Platform/Foundation/Data.h"

namespace NS {

// A file that grows by a piece now and then, and is not kept open in between: for each piece it is
// opened, sought to its end, written and closed, as by a FileHandle, but its path is made ready for
// the system once. Its folder may be kept open: then pieces go with a folder that is moved, and
// come back to the path when there is no such file any more where the folder went.
//
// Comes from FileManager::appenderForPath(). Not for use by two threads at once.
class FileAppender {
  public:
    FileAppender() = default;
    virtual ~FileAppender() = default;
    FileAppender(const FileAppender&) = delete;
    FileAppender& operator=(const FileAppender&) = delete;

    // Never creates the file. False when not all of it was written: the file is not there or must
    // not be written, it has no end to go to, as a pipe has none, or its disk is full.
    virtual bool append(Bytes bytes) = 0;
};

} // namespace NS
