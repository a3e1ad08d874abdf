#pragma once

#include <QApplication>
#include <QTimer>

/// Hands the dialog that opens next to `answer`.
template <class Dialog, class Answer>
void kxAnswer(const Answer& answer)
{
    QTimer::singleShot(0, qApp, [answer] { answer(*qobject_cast<Dialog*>(QApplication::activeModalWidget())); });
}
