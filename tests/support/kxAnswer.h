#pragma once

#include <QApplication>
#include <QTimer>

/// Hands the dialog that opens next to `answer`, which isn't called where no dialog of this class does. By a timer that
/// has a time: one without runs as soon as posted events are sent. Where `life` ends before, nothing is answered.
template <class Dialog, class Answer>
void kxAnswer(const Answer& answer, QObject* life = qApp)
{
    QTimer::singleShot(1, life,
                       [answer]
                       {
                           if (auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget()))
                               answer(*dialog);
                       });
}
