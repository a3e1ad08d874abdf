#include <QKXCollapsibleFrame.h>

#include <QGridLayout>
#include <QLabel>
#include <QToolButton>
#include <QtTest>

namespace
{
/// A page with one row: a label this wide and a field beside it.
QGridLayout* addPage(QKXCollapsibleFrame& frame, int labelWidth)
{
    auto* const page = new QWidget;
    auto* const holder = new QWidget(page);
    auto* const grid = new QGridLayout(holder);
    auto* const label = new QLabel;
    label->setFixedWidth(labelWidth);
    grid->addWidget(label, 0, 0);
    grid->addWidget(new QLabel("field"), 0, 1);
    frame.addPage(page, QString::number(labelWidth));
    return grid;
}
} // namespace

class tst_QKXCollapsibleFrame : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void foldsByCaptionAndByCall()
    {
        QKXCollapsibleFrame frame;
        addPage(frame, 10);
        addPage(frame, 10);
        QSignalSpy told(&frame, &QKXCollapsibleFrame::expandedChanged);
        QToolButton* const caption = frame.findChildren<QToolButton*>().last();
        caption->click();
        QVERIFY(frame.isExpanded(0) && !frame.isExpanded(1) && frame.page(1)->isHidden());
        frame.setExpanded(1, false); // is so
        frame.setExpanded(1, true);
        QVERIFY(caption->isChecked() && caption->arrowType() == Qt::DownArrow && !frame.page(1)->isHidden());
        frame.setExpanded(1, false);
        QVERIFY(!caption->isChecked() && caption->arrowType() == Qt::RightArrow);
        QCOMPARE(told.count(), 3);
        QVERIFY(frame.page(2) == nullptr && frame.page(-1) == nullptr && !frame.isExpanded(2));
        frame.setExpanded(2, true);
    }

    /// Over all frames below a widget, the frame itself too, but for the one that is left out.
    void fieldsBeginInOneLine()
    {
        QKXCollapsibleFrame root;
        QGridLayout *const narrow = addPage(root, 20), *const wide = addPage(root, 90);
        auto* const across = new QLabel;
        across->setFixedWidth(300);
        wide->addWidget(across, 1, 0, 1, 2); // reaches over both columns
        wide->setColumnStretch(2, 3);
        auto* const other = new QKXCollapsibleFrame(&root);
        QGridLayout* const excluded = addPage(*other, 200);
        auto* const page = new QWidget;
        auto* const single = new QGridLayout(new QWidget(page));
        single->addWidget(new QLabel("alone"), 0, 0);
        root.addPage(page, "alone");
        QKXCollapsibleFrame::fixLayouts(&root, 50, other);
        QCOMPARE(narrow->columnMinimumWidth(0), 90);
        QCOMPARE(wide->columnMinimumWidth(0), 90);
        QCOMPARE(excluded->columnMinimumWidth(0), 0);
        QVERIFY(narrow->columnStretch(1) == 1 && wide->columnStretch(1) == 0); // what takes the room already keeps it
        QCOMPARE(single->columnCount(), 1);
        QKXCollapsibleFrame::fixLayouts(&root, 250, nullptr);
        QCOMPARE(excluded->columnMinimumWidth(0), 250);
    }
};

QTEST_MAIN(tst_QKXCollapsibleFrame)
#include "tst_QKXCollapsibleFrame.moc"
