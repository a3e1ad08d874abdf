#include <QKXSpiner.h>
#include <kernel/kxLogModel.h>
#include <kxTable.h>

#include <QLineEdit>
#include <QToolTip>
#include <QtTest>

#include <cmath>

namespace
{
/// Puts `text` into the field as a user does: over what is there, then Return.
void type(QAbstractSpinBox& field, const QString& text)
{
    field.selectAll();
    QTest::keyClicks(&field, text);
    QTest::keyClick(&field, Qt::Key_Return);
}
} // namespace

class tst_QKXSpiner : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void undoKeysGoOnUnlessTextWaits()
    {
        QKXDoubleSpiner field;
        QKXSpiner whole;
        whole.setValue(7);
        // What Qt asks the widget with the focus before a shortcut runs; accepted means that the widget wants the key.
        const auto wantsUndo = [&field]
        {
            QKeyEvent event(QEvent::ShortcutOverride, Qt::Key_Z, Qt::ControlModifier);
            QApplication::sendEvent(&field, &event);
            return event.isAccepted();
        };
        QVERIFY(!wantsUndo());
        QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(&field, "2");
        QVERIFY(wantsUndo());
        QTest::keyClick(&field, Qt::Key_Return);
        QCOMPARE(field.value(), 2.0);
        QVERIFY(!wantsUndo());

        // Escape gives up what waits.
        for (QAbstractSpinBox* const any :
             {static_cast<QAbstractSpinBox*>(&field), static_cast<QAbstractSpinBox*>(&whole)})
        {
            const QString shown = any->text();
            QTest::keyClick(any, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClick(any, Qt::Key_Delete);
            QVERIFY(any->text() != shown);
            QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QApplication::sendEvent(any, &escape);
            QVERIFY(escape.isAccepted());
            QCOMPARE(any->text(), shown);
        }
    }

    void parses_data()
    {
        kxColumns<QString, int, double>("text", "op", "value"); // -1: no number
        QTest::newRow("plain") << "12.5" << int(RelativeSet) << 12.5;
        QTest::newRow("sign without operator") << "-5" << int(RelativeSet) << -5.0;
        QTest::newRow("plus sign") << "+5" << int(RelativeSet) << 5.0;
        QTest::newRow("comma") << "12,25" << int(RelativeSet) << 12.25;
        QTest::newRow("exponent") << "1e-2" << int(RelativeSet) << 0.01;
        QTest::newRow("add") << "+=5" << int(RelativeAdd) << 5.0;
        QTest::newRow("add negative with spaces") << " += -2,5 " << int(RelativeAdd) << -2.5;
        QTest::newRow("subtract") << "-=5" << int(RelativeSubtract) << 5.0;
        QTest::newRow("multiply") << "*=2" << int(RelativeMultiply) << 2.0;
        QTest::newRow("divide") << "/=.5" << int(RelativeDivide) << 0.5;
        QTest::newRow("assign") << "=7" << int(RelativeAssign) << 7.0;
        for (const char* bad :
             {"", " ", "+=", "=", "-", "nan", "inf", "1e999", "5+", "1.000,5", "1,000.5", "0x10", "+ =5", "*5", "5 5"})
            QTest::newRow(bad) << bad << -1 << 0.0;
    }

    void parses()
    {
        QFETCH(QString, text);
        QFETCH(int, op);
        QFETCH(double, value);
        RelativeOperator gotOp = RelativeSet;
        double got = 99;
        QCOMPARE(QKXDoubleSpiner::parseRelative(text, gotOp, got), op >= 0);
        if (op >= 0)
        {
            QCOMPARE(int(gotOp), op);
            QCOMPARE(got, value);
        }
        else
            QCOMPARE(got, 99.0);
    }

    void entersNumbers_data()
    {
        kxColumns<QString, double>("text", "expected"); // from 10.00 in -100 to 100
        QTest::newRow("plain") << "4.5" << 4.5;
        QTest::newRow("with its unit") << "4.5 fps" << 4.5;
        QTest::newRow("with its prefix") << "at: 4.5" << 4.5;
        QTest::newRow("unit without space") << "4.5fps" << 4.5;
        QTest::newRow("operator before the unit") << "+=5 fps" << 15.0;
        QTest::newRow("add") << "+=5" << 15.0;
        QTest::newRow("divide by zero") << "/=0" << 10.0;
        QTest::newRow("above the range") << "*=1000" << 100.0;
        QTest::newRow("below the range") << "-500" << -100.0;
        QTest::newRow("letters") << "abc" << 10.0;
        QTest::newRow("half an operator") << "+=" << 10.0;
    }

    void entersNumbers()
    {
        QFETCH(QString, text);
        QFETCH(double, expected);
        QKXDoubleSpiner field;
        field.setRange(-100, 100);
        field.setPrefix("at: ");
        field.setSuffix(" fps");
        field.setValue(10);
        QSignalSpy changed(&field, QOverload<double>::of(&QDoubleSpinBox::valueChanged));
        type(field, text);
        QCOMPARE(field.value(), expected);
        QCOMPARE(changed.count(), expected == 10.0 ? 0 : 1);
        QCOMPARE(field.text(), QString::number(expected, 'f', 2).prepend("at: ") + " fps");
    }

    void tellsOperatorsOnce()
    {
        QWidget window;
        QKXDoubleSpiner field(&window);
        QLineEdit other(&window);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        field.setFocus();
        QSignalSpy applied(&field, &QKXDoubleSpiner::relativeOperatorApplied);
        field.selectAll();
        QTest::keyClicks(&field, "+=3");
        QTest::keyClick(&field, Qt::Key_Return);
        other.setFocus(); // nothing was typed since
        QCOMPARE(applied.count(), 1);
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, "*=2");
        other.setFocus();
        QCOMPARE(applied.count(), 2);
        QCOMPARE(applied.at(1).at(0).value<RelativeOperator>(), RelativeMultiply);
        QCOMPARE(field.value(), 6.0);
        field.setFocus();
        QTest::keyClick(&field, Qt::Key_Return); // and here neither
        QCOMPARE(applied.count(), 2);
    }

    void halfANumberIsAnswered()
    {
        QKXSpiner field;
        field.show();
        QVERIFY(QTest::qWaitForWindowExposed(&field));
        type(field, "-");
        QCOMPARE(QToolTip::text(), QString("A whole number"));
        QToolTip::hideText();
    }

    void leavesTheValueToTheListener()
    {
        QKXDoubleSpiner field;
        field.setRelativeOperatorHandlingMode(1);
        field.setRange(0, 100);
        field.setValue(10);
        QSignalSpy applied(&field, &QKXDoubleSpiner::relativeOperatorApplied);
        QSignalSpy changed(&field, QOverload<double>::of(&QDoubleSpinBox::valueChanged));
        type(field, "+=5");
        type(field, "10.00"); // the same value: still an input, since it may be one of many
        type(field, "/=0");
        QCOMPARE(applied.count(), 2);
        QCOMPARE(applied.at(0).at(0).value<RelativeOperator>(), RelativeAdd);
        QCOMPARE(applied.at(0).at(1).toDouble(), 5.0);
        QCOMPARE(applied.at(1).at(1).toDouble(), 10.0);
        type(field, "*=1000"); // a factor may lie outside the range
        QCOMPARE(applied.takeLast().at(1).toDouble(), 1000.0);
        QVERIFY(changed.isEmpty());
        QCOMPARE(field.text(), QString("10.00"));
        connect(&field, &QKXDoubleSpiner::relativeOperatorApplied,
                [&field](RelativeOperator, double value)
                {
                    const QSignalBlocker quiet(&field);
                    field.setValue(value + 0.25);
                });
        type(field, "3");
        QCOMPARE(field.value(), 3.25);
        QCOMPARE(field.text(), QString("3.25"));
    }

    void stepsAreOperators()
    {
        QKXDoubleSpiner field;
        field.setSingleStep(0.5);
        QSignalSpy applied(&field, &QKXDoubleSpiner::relativeOperatorApplied);
        QTest::keyClick(&field, Qt::Key_Up);
        QTest::keyClick(&field, Qt::Key_PageDown);
        QCOMPARE(applied.count(), 2);
        QCOMPARE(applied.at(1).at(0).value<RelativeOperator>(), RelativeSubtract);
        QCOMPARE(applied.at(1).at(1).toDouble(), 5.0);
        QCOMPARE(field.value(), -4.5);
        field.selectAll();
        QTest::keyClicks(&field, "7"); // typed, not finished: the step starts from it
        QTest::keyClick(&field, Qt::Key_Up);
        QCOMPARE(field.value(), 7.5);

        // The same where the listener sets the value: each input counts once.
        field.setRelativeOperatorHandlingMode(1);
        field.selectAll();
        QTest::keyClicks(&field, "+=4");
        applied.clear();
        QTest::keyClick(&field, Qt::Key_Up);
        QTest::keyClick(&field, Qt::Key_Return);
        QCOMPARE(applied.count(), 2);
        QCOMPARE(applied.at(0).at(1).toDouble(), 4.0);
        QCOMPARE(applied.at(1).at(1).toDouble(), 0.5);
    }

    void neverHoldsANumberThatIsNotFinite()
    {
        for (const int mode : {0, 1})
        {
            kxLogModel::the().clear();
            QKXDoubleSpiner divided;
            divided.setRelativeOperatorHandlingMode(mode);
            divided.setSuffix(" m");
            divided.setValue(7);
            type(divided, "/=0");
            QCOMPARE(divided.value(), 7.0);
            QCOMPARE(kxLogModel::the().entries().size(), std::size_t(1)); // and not in silence
            QVERIFY(kxLogModel::the().entries().back().text.startsWith("'/=0 m' changes nothing"));
        }
        QKXDoubleSpiner field;
        field.setValue(2);
        field.setValue(qQNaN());
        field.setValue(qInf());
        QCOMPARE(field.value(), 2.0);
        type(field, "1e300");
        QVERIFY(std::isfinite(field.value()));
        QVERIFY(!field.text().contains('e'));
        double value = 1e308;
        QVERIFY(!QKXDoubleSpiner::applyRelative(RelativeMultiply, 1e308, value));
        QCOMPARE(value, 1e308);
    }

    void wholeNumbersHaveRoomForSums()
    {
        QKXSpiner field;
        type(field, "2147483647");
        field.setValue(INT_MAX);
        QVERIFY(field.value() > 1000000000);
        QVERIFY(qint64(field.value()) + field.value() <= INT_MAX);
        type(field, "-12");
        QCOMPARE(field.value(), -12);
        QVERIFY(field.sizeHint().width() < 120);
    }

    void comesIntoFocus_data()
    {
        // By the mouse it's selected after the press, which would take it off again.
        kxColumns<int, bool>("reason", "atOnce");
        QTest::newRow("tab") << int(Qt::TabFocusReason) << true;
        QTest::newRow("mouse") << int(Qt::MouseFocusReason) << false;
    }

    void comesIntoFocus()
    {
        QFETCH(int, reason);
        QFETCH(bool, atOnce);
        QKXSpiner whole;
        QKXDoubleSpiner real;
        QCOMPARE(whole.alignment() & Qt::AlignRight, Qt::AlignRight);
        for (QAbstractSpinBox* const field :
             {static_cast<QAbstractSpinBox*>(&whole), static_cast<QAbstractSpinBox*>(&real)})
        {
            auto* const edit = field->findChild<QLineEdit*>();
            field->show();
            edit->deselect();
            QFocusEvent event(QEvent::FocusIn, Qt::FocusReason(reason));
            QApplication::sendEvent(field, &event);
            QCOMPARE(edit->hasSelectedText(), atOnce);
            QCoreApplication::processEvents();
            QVERIFY(edit->hasSelectedText());
            // Room for the number, and for the buttons where there are any.
            const QSize withButtons = field->sizeHint();
            field->resize(withButtons);
            QVERIFY(edit->width() >=
                    field->fontMetrics().horizontalAdvance(field == &whole ? "-000000" : "-10000.00") + 4);
            field->setButtonSymbols(QAbstractSpinBox::NoButtons);
            QVERIFY(field->sizeHint().width() < withButtons.width());
        }
    }
};

QTEST_MAIN(tst_QKXSpiner)
#include "tst_QKXSpiner.moc"
