#pragma once

#include <kxExport.h>

#include <QToolBar>

/// A tool bar in the application's style: small icons with their text below.
class KX_API QKXToolBar : public QToolBar
{
    Q_OBJECT
public:
    explicit QKXToolBar(const QString& title, QWidget* parent = nullptr);
};
