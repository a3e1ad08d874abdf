#include <curveeditor/kxAnimCurveEditorGUI.h>

#include <frame/kxForm.h>

#include <QKXSpiner.h>

#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>

namespace
{
using kxForm::named;

QKXDoubleSpiner* makeField(const char* name, QWidget* parent)
{
    QKXDoubleSpiner* const field = named<QKXDoubleSpiner>(name, parent);
    field->setMinimumWidth(90);
    field->setDecimals(2);
    return field;
}

constexpr kxForm::Texts text("kxAnimCurveEditorGUI");
} // namespace

void Ui::kxAnimCurveEditorGUI::setupUi(QMainWindow* window)
{
    window->resize(1052, 535);
    window->setWindowTitle(text("MainWindow"));
    centralwidget = named<QWidget>("centralwidget", window);
    gridLayout = named<QGridLayout>("gridLayout", centralwidget);
    _splitter = named<QSplitter>("_splitter", centralwidget);
    _splitter->setOrientation(Qt::Horizontal);
    _treeFrame = named<QFrame>("_treeFrame", _splitter);
    _treeFrame->setFrameShape(QFrame::NoFrame);

    layoutWidget = named<QWidget>("layoutWidget", _splitter);
    verticalLayout = named<QVBoxLayout>("verticalLayout", layoutWidget);
    verticalLayout->setSpacing(0);
    verticalLayout->setContentsMargins(0, 0, 0, 0);
    _statsFrame = named<QFrame>("_statsFrame", layoutWidget);
    horizontalLayout = named<QHBoxLayout>("horizontalLayout", _statsFrame);
    horizontalLayout->setContentsMargins(0, 0, 0, 6);
    _frameLabel = named<QLabel>("_frameLabel", _statsFrame);
    _frameLabel->setText(text("Frame"));
    _frame = makeField("_frame", _statsFrame);
    _valueLabel = named<QLabel>("_valueLabel", _statsFrame);
    _valueLabel->setText(text("Value"));
    _value = makeField("_value", _statsFrame);
    for (QWidget* widget : {static_cast<QWidget*>(_frameLabel), static_cast<QWidget*>(_frame),
                            static_cast<QWidget*>(_valueLabel), static_cast<QWidget*>(_value)})
        horizontalLayout->addWidget(widget);
    horizontalLayout->addItem(new QSpacerItem(40, 20, QSizePolicy::Expanding, QSizePolicy::Minimum));
    _graphFrame = named<QFrame>("_graphFrame", layoutWidget);
    verticalLayout->addWidget(_statsFrame);
    verticalLayout->addWidget(_graphFrame, 1);

    _attributeFrame = named<QFrame>("_attributeFrame", _splitter);
    gridLayout->addWidget(_splitter, 0, 0);
    window->setCentralWidget(centralwidget);
    menubar = named<QMenuBar>("menubar", window);
    menubar->setNativeMenuBar(false);
    window->setMenuBar(menubar);
    statusbar = named<QStatusBar>("statusbar", window);
    statusbar->setSizeGripEnabled(false); // the window is in a dock
    window->setStatusBar(statusbar);
}
