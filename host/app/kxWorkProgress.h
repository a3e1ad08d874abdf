#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QLabel;
class QProgressBar;
class QPushButton;

namespace kxWorkTime
{
/// "about 2 min 10 s left", by what `share` of the work took, from 0 to 1; empty while that says nothing yet.
QString left(double seconds, double share);

/// How long work takes whose share isn't that of the time, as it comes from readers of others. What is told never
/// rises: once it turns out to be untrue, only the time that has passed is told.
class Estimate
{
public:
    QString text(double seconds, double share);
    bool isLost() const { return _isLost; }

private:
    double _end = -1; ///< seconds of all the work, as was told; below 0 where nothing was
    bool _isLost = false;
};
} // namespace kxWorkTime

/// Long work in a window: what it does, how far it is, how long it will take, and a way to end it. The window comes up
/// once the work has taken a while, and lets nobody work with the others.
class kxWorkProgress : public QDialog
{
    Q_OBJECT
public:
    kxWorkProgress(const QString& name, const QString& title, QWidget* parent);

    bool isCancelled() const { return _isCancelled; }
    /// `share` from 0 to 1, below 0 where nobody can tell; from 1 on the work can't be ended. Follows the user; false
    /// where he ended it.
    bool show(const QString& text, double share);

    void reject() override;

protected:
    /// Where the work allows the rest of the application to go on, too.
    void letAllGoOn();

private:
    void appear();
    void follow();

    QLabel* _text;
    QLabel* _left;
    QProgressBar* _bar;
    QPushButton* _cancel;
    QElapsedTimer _clock;
    kxWorkTime::Estimate _estimate;
    bool _isCancelled = false;
    bool _letsAllGoOn = false;
};
