#pragma once

#include "Platform/Finder/FinderSyncController.h"
#include "QVFinderExtension/FinderSync.h"
#include "QVFinderExtension/Testing/LinkFixture.h"

#include <string>
#include <string_view>
#include <vector>

namespace Tests {

// An extension on a drive, with a file manager's selection and a host that notes the requests.
class SelectionTest : public LinkTest {
  protected:
    static constexpr const char* kDrive = "/Volumes/Drive";

    SelectionTest() {
        client->init();
        extension->setComms(client.ref());
        extension->setDrivePath(NS::str(kDrive));
        select({});
        target(nullptr);
    }
    ~SelectionTest() override {
        controller()->setSelectedItemURLs(nullptr);
        controller()->setTargetedURL(nullptr);
    }

    static NS::Ref<FI::FinderSyncController> controller() {
        return FI::FinderSyncController::defaultController();
    }
    static NS::Ref<NS::URL> urlOf(std::string_view path) {
        return NS::URL::fileURLWithPath(NS::String::fromFileSystemRepresentation(path));
    }
    static void select(const std::vector<std::string>& paths) {
        std::vector<NS::Ref<NS::Object>> urls;
        for (const std::string& path : paths) {
            urls.emplace_back(urlOf(path));
        }
        controller()->setSelectedItemURLs(NS::make<NS::Array>(std::move(urls)));
    }
    // The same with paths relative to the drive.
    static void selectOnDrive(const std::vector<std::string>& paths) {
        std::vector<std::string> absolute;
        for (const std::string& path : paths) {
            absolute.push_back(kDrive + path);
        }
        select(absolute);
    }
    // The same as paths, the form in which many come.
    static void selectPaths(const std::vector<std::string>& paths) {
        std::string bytes;
        for (const std::string& path : paths) {
            bytes.append(path).push_back('\0');
        }
        controller()->setSelection(
            FI::Selection::selectionWithPaths(NS::Data::dataWithBytes(NS::bytesOf(bytes))));
    }
    static void selectPathsOnDrive(const std::vector<std::string>& paths) {
        std::vector<std::string> absolute;
        for (const std::string& path : paths) {
            absolute.push_back(kDrive + path);
        }
        selectPaths(absolute);
    }
    static void target(const char* path) {
        controller()->setTargetedURL(path != nullptr ? NS::RefPtr<NS::URL>(urlOf(path)) : nullptr);
    }

    // Waits for the one request that the action is to send, and gives its argument.
    NS::RefPtr<NS::Object> argumentOf(std::string_view action,
                                      NS::Selector handler = LinkRecorder::kReceived) {
        const auto recorder = NS::make<LinkRecorder>();
        server->setTarget_selector_for(recorder, handler, NS::str(action));
        EXPECT_TRUE(pump([&] { return recorder->calls == 1; })) << action;
        return recorder->objects.empty() ? nullptr : recorder->objects.front();
    }
    static std::string textOf(const NS::RefPtr<NS::Object>& object) {
        const auto text = NS::as<NS::String>(object);
        return text ? text->fileSystemRepresentation() : "(null)";
    }
    static std::vector<std::string> textsOf(const NS::RefPtr<NS::Object>& object) {
        std::vector<std::string> texts;
        for (const auto& text : *NS::cast<NS::Array>(object)) {
            texts.push_back(textOf(NS::RefPtr<NS::Object>(text)));
        }
        return texts;
    }

    Scheduled<QVExtensionCommsServer> server{NS::str("com.Quorvane.QVExtensionCommsServer")};
    Scheduled<QVExtensionCommsClient> client;
    NS::Ref<FinderSync> extension = NS::make<FinderSync>();
};

} // namespace Tests
