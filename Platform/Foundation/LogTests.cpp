#include "Platform/Foundation/Log.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Foundation/Testing/ManualClock.h"
#include "Tests/Support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <array>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Standard error goes through a socket that keeps each write apart.
class Log : public testing::Test {
  protected:
    Log() : before_(::dup(STDERR_FILENO)) {
        (void)::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends_.data());
        ::dup2(ends_[0], STDERR_FILENO);
    }
    ~Log() override {
        restore();
        ::close(ends_[0]);
        ::close(ends_[1]);
        ::close(before_);
    }

    void restore() const { ::dup2(before_, STDERR_FILENO); }

    // What the next write wrote; empty when there was none.
    std::string nextWrite() const {
        std::string bytes(1 << 16, '\0');
        const ssize_t length = ::recv(ends_[1], bytes.data(), bytes.size(), MSG_DONTWAIT);
        bytes.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
        return bytes;
    }

    // "name[pid:tid] " as it stands in this thread's lines.
    static std::string origin() {
        return NS::ProcessInfo::processInfo()->processName()->utf8() + "[" +
               std::to_string(::getpid()) + ":" + std::to_string(::gettid()) + "] ";
    }

    NS::ManualClock clock{816504987.412};
    NS::ScopedClock scopedClock{clock};
    Tests::ScopedVariable zone{"TZ", "UTC"};

  private:
    int before_;
    std::array<int, 2> ends_{};
};

TEST_F(Log, WritesALineWithTimeProcessAndThread) {
    NS::Log("client %@ took %d of %s", NS::str("A"), 3, "B");
    EXPECT_EQ(nextWrite(), "2026-11-16 06:56:27.412 " + origin() + "client A took 3 of B\n");
    EXPECT_EQ(nextWrite(), "");
}

TEST_F(Log, WritesALineOfMoreThanOneLineInOneGo) {
    NS::Log("%@", NS::Array::arrayWithObjects({NS::str("caf\xC3\xA9"), NS::str("b")}));
    EXPECT_EQ(nextWrite(),
              "2026-11-16 06:56:27.412 " + origin() + "(\n    \"caf\\U00e9\",\n    b\n)\n");
}

TEST_F(Log, WritesUtf8) {
    NS::Log("caf\xC3\xA9 %@", nullptr);
    EXPECT_EQ(nextWrite(), "2026-11-16 06:56:27.412 " + origin() + "caf\xC3\xA9 (null)\n");
}

TEST_F(Log, RaisesForAFormatThatIsWrongAndWritesNothing) {
    EXPECT_THROW(NS::Log("%@"), NS::Exception);
    EXPECT_EQ(nextWrite(), "");
}

TEST_F(Log, LosesTheLineWithoutAConsole) {
    ::close(STDERR_FILENO);
    NS::Log("lost");
    restore();
    EXPECT_EQ(nextWrite(), "");
}

} // namespace
