#pragma once

#include <QWidget>

/// The user guide, read from the files that come with the application.
class kxGuideWindow : public QWidget
{
    Q_OBJECT
public:
    explicit kxGuideWindow(QWidget* parent);
};
