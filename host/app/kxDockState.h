#pragma once

class QByteArray;
class QMainWindow;

namespace kxDockState
{
/// QMainWindow::restoreState(), safely. Qt 5.15 shows the bars of tabs one by one out of a set that the window's layout
/// renews: a bar that comes into sight has the layout do so at once, in the middle of that set.
bool restore(QMainWindow& window, const QByteArray& state, int version = 0);
} // namespace kxDockState
