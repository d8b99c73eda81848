#pragma once

#include "QVFinderExtension/QVExtensionCommsComponent.h"

// The extension's end of the link. Finds the host application by its port's name, announces itself
// and sends the user's commands.
//
// Each request is one message, sent or lost at once; an argument goes out as it is, nil included.
// The host answers, if at all, with later messages. There is no reconnection: when the host goes,
// requests go nowhere.
class QVExtensionCommsClient final : public QVExtensionCommsComponent {
    NS_OBJECT(QVExtensionCommsClient)
  public:
    // A client that is connected and announced. Blocks the thread for up to 120 seconds while there
    // is no host, and ends the process with status 1 when there is none by then.
    static NS::Ref<QVExtensionCommsClient> new_();

    // An endpoint under a name of its own; connected by init().
    QVExtensionCommsClient();
    // Finds the host, serves its port, says so on the console log and sends "ext_alive".
    void init();

    // Looks for the host's port once a second until it is there, with the run loop at rest, and
    // serves it. When that takes longer than the time-out, in seconds, ends the process with status
    // 1; with a time-out of 0 or less at once.
    void waitForServerPortFor(double timeout);

    void alive();
    void requestUserInfo();
    void emptyTrash();
    // A drive-relative path (String).
    void share(const NS::RefPtr<NS::Object>& path);
    void showProps(const NS::RefPtr<NS::Object>& path);
    void refreshFolder(const NS::RefPtr<NS::Object>& path);
    void beginObserving(const NS::RefPtr<NS::Object>& path);
    void endObserving(const NS::RefPtr<NS::Object>& path);
    // Drive-relative paths (Array of String).
    void moveToTrash(const NS::RefPtr<NS::Object>& paths);
    void delete_(const NS::RefPtr<NS::Object>& paths);
    void restore(const NS::RefPtr<NS::Object>& paths);

    // The host's port; nil until it is found.
    NS_PROPERTY(NS::MachPort, serverPort, setServerPort)

  private:
    void sendRequest(std::string_view action);
    void sendRequest(std::string_view action, const NS::RefPtr<NS::Object>& argument);
};
