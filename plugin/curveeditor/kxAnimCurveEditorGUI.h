#pragma once

class QFrame;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class QMainWindow;
class QMenuBar;
class QSplitter;
class QStatusBar;
class QVBoxLayout;
class QWidget;
class QKXDoubleSpiner;

namespace Ui
{
/// The form of the curve editor's window: library, graph below its fields, channels.
class kxAnimCurveEditorGUI
{
public:
    void setupUi(QMainWindow* window);

    QWidget* centralwidget;
    QGridLayout* gridLayout;
    QSplitter* _splitter;
    QFrame* _treeFrame;
    QWidget* layoutWidget;
    QVBoxLayout* verticalLayout;
    QFrame* _statsFrame;
    QHBoxLayout* horizontalLayout;
    QLabel* _frameLabel;
    QKXDoubleSpiner* _frame;
    QLabel* _valueLabel;
    QKXDoubleSpiner* _value;
    QFrame* _graphFrame;
    QFrame* _attributeFrame;
    QMenuBar* menubar;
    QStatusBar* statusbar;
};
} // namespace Ui
