#pragma once

#include "Platform/Foundation/String.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVFinderExtension/QVExtensionCommsClient.h"

#include <string>

namespace Tests {

// Waits until a host can be reached. That its name and its socket are there is not enough: it may
// not listen yet.
bool hostIsUp();

// Keeps what the host sends.
class HostMessages final : public NS::Object {
    NS_OBJECT(HostMessages)
  public:
    void mounted(NS::RefPtr<NS::Object> sent) { path = sent; }
    void informed(NS::RefPtr<NS::Object> sent) { info = sent; }

    NS::RefPtr<NS::Object> path;
    NS::RefPtr<NS::Object> info;
};

// An extension in this process, connected to the host, which has to be there. What the host sends
// arrives while the run loop runs.
class HostListener {
  public:
    HostListener();
    ~HostListener();
    HostListener(const HostListener&) = delete;
    HostListener& operator=(const HostListener&) = delete;

    // To send requests; the account record was asked for already.
    QVExtensionCommsClient& client() const { return *client_; }
    std::string drivePath() const {
        return messages_->path ? messages_->path->description()->utf8() : "";
    }
    // The account record that came last; nil before the first.
    NS::RefPtr<QVUserInfoItem> info() const { return NS::as<QVUserInfoItem>(messages_->info); }

  private:
    NS::Ref<HostMessages> messages_ = NS::make<HostMessages>();
    NS::Ref<QVExtensionCommsClient> client_ = NS::make<QVExtensionCommsClient>();
};

} // namespace Tests
