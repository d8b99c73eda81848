#pragma once

#include "Platform/CrashReporter/linux/FixedText.h"
#include "Platform/Foundation/LocalTime.h"

#include <array>
#include <string_view>
#include <sys/types.h>

namespace NS {

// The file of the report to come. What it needs is held from prepare() on: a crash may find the
// process without descriptors left, and its folder gone.
class CrashReportFile {
  public:
    // Takes the reports folder, a path without a symbolic link at its end. False when it cannot be
    // opened; create() then tries again.
    bool prepare(std::string_view folder, std::string_view process, std::string_view host);

    // Makes the file for a moment of the user's clock, with "-2" and so on behind the host where
    // the name is taken, and the folder where it is gone. Gives its descriptor, for the caller to
    // close, and -1 when the system refuses; gives the held descriptors up. Once. Safe in a signal
    // handler.
    int create(const LocalTime& time) noexcept;
    // Takes the file away again. Safe in a signal handler.
    void remove() const noexcept;

  private:
    bool hasFolder() const noexcept;
    int openAgain() const noexcept;
    int createNext(unsigned number, const LocalTime& time) noexcept;

    FixedText<4096> folder_;
    FixedText<64> process_;
    FixedText<65> host_;
    FixedText<256> name_;
    int descriptor_ = -1;
    dev_t device_ = 0;
    ino_t number_ = 0;
    // For the report, and for the files that are read for it.
    std::array<int, 2> spares_{-1, -1};
};

} // namespace NS
