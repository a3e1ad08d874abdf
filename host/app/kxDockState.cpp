#include "kxDockState.h"

#include <QLayout>
#include <QMainWindow>

bool kxDockState::restore(QMainWindow& window, const QByteArray& state, int version)
{
    window.layout()->setEnabled(false); // what it is asked for meanwhile, it does with the next turn of the event loop
    const bool isRestored = window.restoreState(state, version);
    window.layout()->setEnabled(true);
    return isRestored;
}
