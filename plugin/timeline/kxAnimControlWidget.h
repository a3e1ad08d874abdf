#pragma once

#include <frame/kxCallbacks.h>

#include <kxModuleBase.h>

#include <QPointer>

class kxAnimControlGUII;

/// The module that puts the timeline bar into the host's tool bars and loads the stored settings for each new scene.
class kxAnimControlWidget : public kxModuleBase
{
    Q_OBJECT
public:
    /// Throws std::runtime_error where the host has no main window or dock window manager yet.
    kxAnimControlWidget();
    ~kxAnimControlWidget() override;

    QWidget* moduleWidget() override;
    void init() override;
    int receivedMessage(kxMessage& message) override;

private:
    kxInstancePointer<kxAnimControlWidget> _instance;
    QPointer<kxAnimControlGUII> _panel; // owned by the tool bar
};
