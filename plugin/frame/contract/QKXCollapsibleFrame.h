#pragma once

#include <kxExport.h>

#include <QFrame>
#include <QIcon>
#include <QList>

class QToolButton;
class QVBoxLayout;

/// Pages under captions that fold them away.
class KX_API QKXCollapsibleFrame : public QFrame
{
    Q_OBJECT
public:
    explicit QKXCollapsibleFrame(QWidget* parent = nullptr);
    ~QKXCollapsibleFrame() override;

    /// Owns `page` from now on; gives its index.
    int addPage(QWidget* page, const QString& caption);
    int count() const;
    QWidget* page(int index) const;
    bool isExpanded(int index) const;

    /// Gives the first column of every grid in the pages below `root` one width, at least `labelWidth`. `exclude`: a
    /// frame that is left alone, may be null.
    static void fixLayouts(QWidget* root, int labelWidth, QKXCollapsibleFrame* exclude);

public Q_SLOTS:
    void setExpanded(int index, bool expanded);

Q_SIGNALS:
    void expandedChanged(int index, bool expanded);

private:
    struct Page
    {
        QToolButton* caption;
        QWidget* page;
    };
    QVBoxLayout* _layout;
    QList<Page> _pages;
};
