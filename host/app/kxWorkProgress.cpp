#include "kxWorkProgress.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int ShowAfter = 500;  // ms
constexpr int ShowWithin = 200; // ms
constexpr int Steps = 1000;
} // namespace

QString kxWorkTime::left(double seconds, double share)
{
    constexpr double Enough = 1; // seconds
    if (share <= 0 || seconds < Enough || share >= 1)
        return QString();
    const qint64 whole = qint64(std::ceil(std::min(seconds * (1 / share - 1) - 1e-6, 1e9)));
    const auto say = [](const char* text, qint64 large, qint64 small)
    { return QCoreApplication::translate("kxWorkProgress", text).arg(large).arg(small); };
    if (whole < 60)
        return QCoreApplication::translate("kxWorkProgress", "about %1 s left").arg(whole);
    if (whole < 3600)
        return say("about %1 min %2 s left", whole / 60, whole % 60);
    return say("about %1 h %2 min left", whole / 3600, whole % 3600 / 60);
}

QString kxWorkTime::Estimate::text(double seconds, double share)
{
    constexpr double Enough = 1, Slack = 1.25;
    if (seconds < Enough || share >= 1)
        return QString();
    const double end = share > 0 ? seconds / share : -1;
    _isLost = _isLost || (_end > 0 && (end > _end * Slack || seconds > _end));
    if (_isLost || end < 0)
        return QCoreApplication::translate("kxWorkProgress", "%1 s so far").arg(qint64(seconds));
    _end = _end < 0 ? end : std::min(_end, end);
    return left(seconds, seconds / _end);
}

kxWorkProgress::kxWorkProgress(const QString& name, const QString& title, QWidget* parent)
    : QDialog(parent), _text(new QLabel(this)), _left(new QLabel(this)), _bar(new QProgressBar(this)),
      _cancel(new QPushButton(tr("Cancel"), this))
{
    setObjectName(name);
    setWindowTitle(title);
    setWindowModality(Qt::ApplicationModal);
    setMinimumWidth(400);
    _bar->setObjectName(QStringLiteral("_share"));
    _bar->setTextVisible(false);
    _text->setObjectName(QStringLiteral("_text"));
    _left->setObjectName(QStringLiteral("_left"));
    _cancel->setObjectName(QStringLiteral("_cancel"));
    _cancel->setAutoDefault(false); // Return ends no work
    connect(_cancel, &QPushButton::clicked, this, &kxWorkProgress::reject);
    auto* const below = new QHBoxLayout;
    below->addWidget(_left, 1);
    below->addWidget(_cancel);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(_text);
    layout->addWidget(_bar);
    layout->addLayout(below);
    _clock.start();
}

bool kxWorkProgress::show(const QString& text, double share)
{
    if (!_isCancelled)
        _text->setText(text);
    const double seconds = double(_clock.elapsed()) / 1000;
    const QString time = _letsAllGoOn ? kxWorkTime::left(seconds, share) : _estimate.text(seconds, share);
    _bar->setRange(0, share < 0 || (_estimate.isLost() && share < 1) ? 0 : Steps);
    _bar->setValue(int(share * Steps));
    _left->setText(_isCancelled ? QString() : share >= 1 ? tr("Finishing; it can't be cancelled any more") : time);
    if (!isVisible() && !_isCancelled && _clock.elapsed() >= ShowAfter)
        appear();
    follow();
    if (_isCancelled || share < 1)
        return !_isCancelled;
    _cancel->setEnabled(false);
    _cancel->repaint();
    return true;
}

/// The window system shows the window when it comes to it, which may be after the next question of the work.
void kxWorkProgress::appear()
{
    open();
    const QDeadlineTimer wait(ShowWithin);
    do
        follow();
    while (!windowHandle()->isExposed() && !wait.hasExpired());
}

void kxWorkProgress::reject()
{
    if (!_cancel->isEnabled())
        return;
    _isCancelled = true;
    _text->setText(tr("Cancelling..."));
    _cancel->setEnabled(false);
}

void kxWorkProgress::letAllGoOn()
{
    _letsAllGoOn = true;
}

/// In the middle of the work nothing may happen but in this window: what runs by timers waits.
void kxWorkProgress::follow()
{
    if (_letsAllGoOn)
        QCoreApplication::processEvents();
    else if (isVisible())
        QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers | QEventLoop::X11ExcludeTimers);
}
