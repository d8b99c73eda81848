#include "Programs/QuorvaneHost/Journal.h"

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Ports/MachPort.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

namespace {

class JournalTest : public testing::Test {
  protected:
    void note(std::vector<NS::Ref<NS::Object>> components,
              NS::RefPtr<NS::MachPort> client = nullptr) {
        journal.note(
            *NS::make<NS::PortMessage>(client, NS::make<NS::Array>(std::move(components))));
    }
    static NS::Ref<NS::Object> bytes(std::string_view text) {
        return NS::Data::dataWithBytes(NS::bytesOf(text));
    }
    static NS::Ref<NS::Object> archive(const NS::RefPtr<NS::Object>& object) {
        return NS::KeyedArchiver::archivedDataWithRootObject(object);
    }

    std::ostringstream out;
    Journal journal{out};
};

TEST_F(JournalTest, HasALineForARequestWithItsPayload) {
    note({bytes("ext_share"), archive(NS::str("/Docs/a.txt"))});
    EXPECT_EQ(out.str(), R"({"action":"ext_share","payload":["/Docs/a.txt"],"client":null})"
                         "\n");
}

TEST_F(JournalTest, NamesTheClient) {
    const auto port = NS::MachPort::port();
    note({bytes("ext_alive")}, port);
    EXPECT_EQ(nlohmann::json::parse(out.str())["client"], port->description()->utf8());
}

TEST_F(JournalTest, ShowsANilArgumentAsNull) {
    note({bytes("ext_share"), archive(nullptr)});
    EXPECT_EQ(nlohmann::json::parse(out.str())["payload"].dump(), "[null]");
}

TEST_F(JournalTest, TellsWhyAComponentDoesNotDecode) {
    note({bytes("ext_share"), bytes("no archive")});
    EXPECT_TRUE(nlohmann::json::parse(out.str())["payload"][0].contains("$undecodable"));
}

TEST_F(JournalTest, KeepsSilentAboutWhatIsNoRequest) {
    note({bytes("ext_unknown")});
    note({bytes("\xFF")});
    note({});
    EXPECT_EQ(out.str(), "");
}

} // namespace
