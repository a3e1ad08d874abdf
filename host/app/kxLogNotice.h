#pragma once

#include <QObject>
#include <QString>

class QDockWidget;
class QStatusBar;
struct kxLogEntry;

/// Says warnings and errors where the user looks: in the status bar, and by their number beside the log's title until
/// the log is looked at.
class kxLogNotice : public QObject
{
    Q_OBJECT
public:
    /// Both live as long as this; `log` owns it.
    kxLogNotice(QDockWidget* log, QStatusBar* bar);

private:
    void take(const kxLogEntry& entry);
    void setUnseen(int count);

    QDockWidget* _log;
    QStatusBar* _bar;
    QString _title;
    int _unseen = 0;
};
