#include "kxLogNotice.h"

#include <kernel/kxLogModel.h>

#include <QDockWidget>
#include <QStatusBar>

namespace
{
constexpr int ReadingTime = 10000; // milliseconds
}

kxLogNotice::kxLogNotice(QDockWidget* log, QStatusBar* bar)
    : QObject(log), _log(log), _bar(bar), _title(log->windowTitle())
{
    connect(&kxLogModel::the(), &kxLogModel::added, this, &kxLogNotice::take);
    connect(&kxLogModel::the(), &kxLogModel::cleared, this, [this] { setUnseen(0); });
    connect(log, &QDockWidget::visibilityChanged, this,
            [this](bool isInFront)
            {
                if (isInFront)
                    setUnseen(0);
            });
}

void kxLogNotice::take(const kxLogEntry& entry)
{
    if (entry.level == kxLogEntry::Info)
        return;
    _bar->showMessage(entry.text.simplified(), ReadingTime);
    if (_log->visibleRegion().isEmpty()) // closed, or behind another tab
        setUnseen(_unseen + 1);
}

void kxLogNotice::setUnseen(int count)
{
    _unseen = count;
    _log->setWindowTitle(count == 0 ? _title : QStringLiteral("%1 (%2)").arg(_title).arg(count));
}
