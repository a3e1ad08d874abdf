#include "kxLogPanel.h"

#include "kxEmptyHint.h"
#include "kxLogListModel.h"

#include <kxIconManager.h>
#include <kxPlatform.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListView>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

kxLogPanel::kxLogPanel(QWidget* parent)
    : QWidget(parent), _model(new kxLogListModel(this)), _levels(new QSortFilterProxyModel(this)),
      _words(new QSortFilterProxyModel(this)), _view(new QListView(this)), _level(new QComboBox(this)),
      _search(new QLineEdit(this))
{
    setObjectName(QStringLiteral("_log"));
    _levels->setSourceModel(_model);
    _levels->setFilterRole(Qt::UserRole);
    _words->setSourceModel(_levels);
    _words->setFilterCaseSensitivity(Qt::CaseInsensitive);

    _level->setObjectName(QStringLiteral("_level"));
    _level->setAccessibleName(tr("Least level that is shown"));
    _level->addItem(kxIconManager::getIcon(QStringLiteral("Info"), QString()), tr("All"));
    _level->addItem(kxIconManager::getIcon(QStringLiteral("Warning"), QString()), tr("Warnings and errors"));
    _level->addItem(kxIconManager::getIcon(QStringLiteral("Error"), QString()), tr("Errors"));
    connect(_level, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &kxLogPanel::filter);
    _search->setObjectName(QStringLiteral("_search"));
    _search->setPlaceholderText(tr("Search"));
    _search->setAccessibleName(tr("Search the log"));
    _search->setClearButtonEnabled(true);
    _search->addAction(kxIconCache::General::getSearchIcon(), QLineEdit::LeadingPosition);
    connect(_search, &QLineEdit::textChanged, this, &kxLogPanel::filter);

    _view->setObjectName(QStringLiteral("_lines"));
    _view->setAccessibleName(tr("Log"));
    _view->setModel(_words);
    _view->setFrameShape(QFrame::NoFrame);
    _view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    _view->setWordWrap(true);
    _view->setResizeMode(QListView::Adjust);
    _view->setIconSize(QSize(kxPlatform::getSmallIconSize(), kxPlatform::getSmallIconSize()));
    _view->setContextMenuPolicy(Qt::ActionsContextMenu);
    new kxEmptyHint(tr("Nothing to report."), _view);

    auto* const bar = new QHBoxLayout;
    bar->setContentsMargins(4, 4, 4, 4);
    bar->setSpacing(4);
    bar->addWidget(_level);
    bar->addWidget(_search, 1);
    const auto addTool = [this, bar](const QString& text, const QString& icon, const QString& name, auto slot)
    {
        auto* const action = new QAction(kxIconManager::getIcon(icon, QString()), text, this);
        connect(action, &QAction::triggered, this, slot);
        _view->addAction(action);
        auto* const button = new QToolButton(this);
        button->setObjectName(name);
        button->setDefaultAction(action);
        button->setAutoRaise(true);
        bar->addWidget(button);
        return action;
    };
    QAction* const copyAction =
        addTool(tr("Copy"), QStringLiteral("Copy"), QStringLiteral("_copyLog"), &kxLogPanel::copy);
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addTool(tr("Clear"), QStringLiteral("Delete"), QStringLiteral("_clearLog"), [] { kxLogModel::the().clear(); });

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(bar);
    layout->addWidget(_view);

    // The newest line stays in sight for as long as the user looks at the end.
    connect(_view->verticalScrollBar(), &QScrollBar::rangeChanged, this,
            [this](int, int maximum)
            {
                QScrollBar* const scroll = _view->verticalScrollBar();
                const int before = scroll->property("lastMaximum").toInt();
                if (scroll->value() >= before)
                    scroll->setValue(maximum);
                scroll->setProperty("lastMaximum", maximum);
            });
}

void kxLogPanel::filter()
{
    static const char* const atLeast[] = {"", "[12]", "2"};
    _levels->setFilterRegularExpression(QString::fromLatin1(atLeast[std::clamp(_level->currentIndex(), 0, 2)]));
    _words->setFilterFixedString(_search->text().trimmed());
}

void kxLogPanel::copy()
{
    QModelIndexList rows = _view->selectionModel()->selectedIndexes();
    if (rows.isEmpty())
        for (int row = 0; row < _words->rowCount(); ++row)
            rows.append(_words->index(row, 0));
    std::sort(rows.begin(), rows.end());
    QStringList lines;
    for (const QModelIndex& row : qAsConst(rows))
        lines.append(row.data(Qt::ToolTipRole).toString());
    QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}
