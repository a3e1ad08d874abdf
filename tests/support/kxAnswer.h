#pragma once

#include <QApplication>
#include <QTimer>

/// Hands the dialog that opens next to `answer`, which isn't called where no dialog of this class does.
template <class Dialog, class Answer>
void kxAnswer(const Answer& answer)
{
    QTimer::singleShot(0, qApp,
                       [answer]
                       {
                           if (auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget()))
                               answer(*dialog);
                       });
}
