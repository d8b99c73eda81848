#include "FileManagers/GLib/ChangeNotice.h"

#include <algorithm>
#include <utility>

namespace FileManagers {

namespace {

constexpr std::int64_t kRestPerWork = 4;
constexpr std::int64_t kMicroseconds = 1000; // of a millisecond
constexpr std::int64_t kLongestRest = 5'000'000;

} // namespace

ChangeNotice::ChangeNotice(std::function<void()> tell, Clock clock)
    : tell_(std::move(tell)), clock_(std::move(clock)) {}

ChangeNotice::~ChangeNotice() {
    if (source_ != 0) {
        (void)g_source_remove(source_); // it is there: it forgets itself when it is called
    }
}

void ChangeNotice::note() {
    if (source_ != 0) {
        return;
    }
    const std::int64_t left = restsUntil_ - clock_();
    if (left <= 0) {
        tell();
        return;
    }
    source_ = g_timeout_add(static_cast<guint>(left / kMicroseconds + 1), &tellLater, this);
}

gboolean ChangeNotice::tellLater(gpointer self) {
    auto* const notice = static_cast<ChangeNotice*>(self);
    notice->source_ = 0;
    notice->tell();
    return G_SOURCE_REMOVE;
}

void ChangeNotice::tell() {
    const std::int64_t start = clock_();
    tell_();
    const std::int64_t end = clock_();
    restsUntil_ = end + std::min((end - start) * kRestPerWork, kLongestRest);
}

} // namespace FileManagers
