#pragma once

#include <QKXSpiner.h>
#include <kxAnimManager.h>
#include <osg/AnimCurve.h>
#include <osg/Share.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QtTest>

#include <algorithm>

/// A key at 1 second, which a new rate takes along where "Keep Keys at Current Frames" came before the rate.
struct kxKeyOfTheRate
{
    kxKeyOfTheRate()
    {
        curve->addPoint(osg::Pnt2f(1, 0), osg::Vec2f(), osg::Vec2f(), 1, 1, true, true);
        kxAnimManager::the()->setKeepKeysAtFrame(false);
    }
    void verifyAt(double seconds) const { QCOMPARE(curve->getControlPoints(0).x(), float(seconds)); }

    const osg::Share<osg::AnimCurve> curve{osg::AnimCurveBase::create()};
};

/// Gives the fields that page and dialog have in common other values than the presets.
template <class Form>
void kxFillFields(Form& form)
{
    form._fps->setValue(29.97);
    form._speed->setCurrentIndex(3);
    form._range->setCurrentIndex(1);
    form._context->setCurrentIndex(1);
    form._loop->setChecked(false);
    form._evaluate_subframes->setChecked(false);
    form._keepFrames->setChecked(true);
    form._verifyClips->setChecked(true);
    form._fullRangeStart->setValue(-10);
    form._fullRangeEnd->setValue(110);
    form._detailedRangeStart->setValue(5);
    form._detailedRangeEnd->setValue(95);
}

/// Whether each form's rows are placed as they are read: a label has its field right beside it, all labels are as wide,
/// nothing lies on anything else, and nothing is right of an empty place but a check box below the fields.
inline void kxVerifyRows(const QWidget& page)
{
    int labels = 0;
    for (const QGridLayout* const grid : page.findChildren<QGridLayout*>())
    {
        for (int i = 0; i < grid->count(); ++i)
        {
            int row = 0, column = 0, rows = 0, columns = 0;
            grid->getItemPosition(i, &row, &column, &rows, &columns);
            for (int at = 0; at < i; ++at)
            {
                int otherRow = 0, otherColumn = 0, otherRows = 0, otherColumns = 0;
                grid->getItemPosition(at, &otherRow, &otherColumn, &otherRows, &otherColumns);
                QVERIFY(row + rows <= otherRow || otherRow + otherRows <= row || column + columns <= otherColumn ||
                        otherColumn + otherColumns <= column);
            }
            const bool isBox = qobject_cast<QCheckBox*>(grid->itemAt(i)->widget()) != nullptr;
            QVERIFY(column == (isBox ? 1 : 0) || grid->itemAtPosition(row, column - 1) != nullptr);
            if (qobject_cast<QLabel*>(grid->itemAt(i)->widget()) == nullptr)
                continue;
            ++labels;
            QVERIFY(grid->itemAtPosition(row, column + 1) != nullptr);
            QVERIFY(grid->columnMinimumWidth(0) >= 100);
        }
    }
    QVERIFY(labels > 3);
    for (const QCheckBox* const box : page.findChildren<QCheckBox*>())
        QVERIFY(!box->text().isEmpty());
    const QList<QLayout*> layouts = page.findChildren<QLayout*>();
    for (QWidget* const child : page.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        QVERIFY(std::any_of(layouts.begin(), layouts.end(),
                            [child](const QLayout* layout) { return layout->indexOf(child) >= 0; }));
}

/// Whether these values reached the kernel.
inline void kxVerifyFilled()
{
    const kxAnimManager& kernel = *kxAnimManager::the();
    QCOMPARE(kernel.fps(), 29.97);
    QCOMPARE(kernel.playbackFPS(), 30.0);
    QCOMPARE(kernel.playbackRangeHint(), 1);
    QCOMPARE(kernel.playbackContextHint(), 1);
    QVERIFY(!kernel.loopTimeline() && !kernel.evaluateSubframes());
    QVERIFY(kernel.keepKeysAtFrame() && kernel.getVerifyClipStructure());
    QCOMPARE(kernel.fullRangeStart(), -10);
    QCOMPARE(kernel.fullRangeEnd(), 110);
    QCOMPARE(kernel.detailedRangeStart(), 5);
    QCOMPARE(kernel.detailedRangeEnd(), 95);
}
