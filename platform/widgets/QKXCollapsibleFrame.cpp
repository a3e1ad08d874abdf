#include <QKXCollapsibleFrame.h>

#include <QGridLayout>
#include <QToolButton>
#include <QVBoxLayout>

namespace
{
QList<QGridLayout*> gridsBelow(QWidget* root, const QKXCollapsibleFrame* exclude)
{
    QList<QKXCollapsibleFrame*> frames = root->findChildren<QKXCollapsibleFrame*>();
    if (auto* frame = qobject_cast<QKXCollapsibleFrame*>(root))
        frames.prepend(frame);
    QList<QGridLayout*> grids;
    for (QKXCollapsibleFrame* frame : frames)
    {
        for (int i = 0; frame != exclude && i < frame->count(); ++i)
        {
            for (QGridLayout* grid : frame->page(i)->findChildren<QGridLayout*>())
            {
                // Frames within frames are met more than once; the excluded one may lie within another.
                if (!grids.contains(grid) && !(exclude && exclude->isAncestorOf(grid->parentWidget())))
                    grids.append(grid);
            }
        }
    }
    return grids;
}

int firstColumnWidth(const QGridLayout* grid)
{
    int width = 0;
    for (int row = 0; row < grid->rowCount(); ++row)
    {
        const QLayoutItem* item = grid->itemAtPosition(row, 0);
        // An item that reaches into the next column doesn't set the width of the first.
        if (item && grid->itemAtPosition(row, 1) != item)
            width = qMax(width, item->sizeHint().width());
    }
    return width;
}
} // namespace

QKXCollapsibleFrame::QKXCollapsibleFrame(QWidget* parent) : QFrame(parent), _layout(new QVBoxLayout(this))
{
    setFrameShape(QFrame::NoFrame);
    _layout->setContentsMargins(0, 0, 0, 0);
    _layout->setSpacing(0);
}

QKXCollapsibleFrame::~QKXCollapsibleFrame() = default;

int QKXCollapsibleFrame::addPage(QWidget* page, const QString& caption)
{
    auto* button = new QToolButton(this);
    button->setObjectName(QStringLiteral("CollapsibleCaption"));
    button->setText(caption);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setArrowType(Qt::DownArrow);
    button->setCheckable(true);
    button->setChecked(true);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    button->setAccessibleDescription(tr("Folds the settings below away"));
    page->setParent(this);
    _layout->addWidget(button);
    _layout->addWidget(page);
    page->show();
    _pages.append({button, page});
    const int index = _pages.size() - 1;
    connect(button, &QToolButton::toggled, this, [this, index](bool checked) { setExpanded(index, checked); });
    return index;
}

int QKXCollapsibleFrame::count() const
{
    return _pages.size();
}

QWidget* QKXCollapsibleFrame::page(int index) const
{
    return index >= 0 && index < _pages.size() ? _pages.at(index).page : nullptr;
}

bool QKXCollapsibleFrame::isExpanded(int index) const
{
    const QWidget* shown = page(index);
    return shown && !shown->isHidden();
}

void QKXCollapsibleFrame::setExpanded(int index, bool expanded)
{
    if (!page(index) || isExpanded(index) == expanded)
        return;
    const Page& folded = _pages.at(index);
    folded.page->setVisible(expanded);
    folded.caption->setArrowType(expanded ? Qt::DownArrow : Qt::RightArrow);
    folded.caption->setChecked(expanded);
    Q_EMIT expandedChanged(index, expanded);
}

void QKXCollapsibleFrame::fixLayouts(QWidget* root, int labelWidth, QKXCollapsibleFrame* exclude)
{
    if (!root)
        return;
    const QList<QGridLayout*> grids = gridsBelow(root, exclude);
    int width = labelWidth;
    for (const QGridLayout* grid : grids)
        width = qMax(width, firstColumnWidth(grid));
    for (QGridLayout* grid : grids)
    {
        grid->setColumnMinimumWidth(0, width);
        // Spare room goes to the fields; a share of it would make the first columns differ again.
        grid->setColumnStretch(0, 0);
        bool stretches = false;
        for (int column = 1; column < grid->columnCount(); ++column)
            stretches = stretches || grid->columnStretch(column) > 0;
        if (!stretches && grid->columnCount() > 1)
            grid->setColumnStretch(1, 1);
    }
}
