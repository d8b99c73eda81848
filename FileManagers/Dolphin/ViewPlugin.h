#pragma once

#include "FileManagers/Dolphin/SharedDrive.h"

#include <KOverlayIconPlugin>
#include <QPointer>
#include <QVariantList>
#include <QWidget>

namespace FileManagers {

// What Dolphin makes for each of its views, to ask for pictures on top of the icons. It has none,
// but lives as long as its view, and tells the drive which folder that shows while it can be seen.
class ViewPlugin : public KOverlayIconPlugin {
    Q_OBJECT

  public:
    ViewPlugin(QObject* parent, const QVariantList& arguments);
    ~ViewPlugin() override;

    QStringList getOverlays(const QUrl& item) override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    // What the plug-in was made for is not yet in its window then.
    void findView();
    void update();

    std::shared_ptr<SharedDrive> shared_ = sharedDrive();
    QPointer<QWidget> view_;
};

} // namespace FileManagers
