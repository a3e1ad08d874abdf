#pragma once

#include <QScrollArea>

/// What a dock window shows, all of which stays within reach by scroll bars where it gets less room than it needs, so
/// that it never makes the main window larger than the screen.
class kxDockContent : public QScrollArea
{
    Q_OBJECT
public:
    /// Owns `content`.
    explicit kxDockContent(QWidget* content);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool viewportEvent(QEvent* event) override;
};
