#include <clipmaker/kxAnimClipInterferenceGUIImpl.h>

#include <QApplication>
#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QtTest>

/// The question what to do about an animation that is in the way.
class tst_kxAnimClipInterference : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void answers_data();
    void answers();
    void survivesItsParent();
};

void tst_kxAnimClipInterference::answers_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<bool>("accept");
    QTest::addColumn<int>("answer");
    QTest::newRow("moves unless something else is chosen") << "" << true << 2;
    QTest::newRow("move") << "_moveAnim" << true << 2;
    QTest::newRow("discard") << "_discardExisting" << true << 3;
    QTest::newRow("new clip") << "_newClip" << true << 4;
    QTest::newRow("none") << "none" << true << 1;
    QTest::newRow("cancel") << "_newClip" << false << 0;
}

void tst_kxAnimClipInterference::answers()
{
    QFETCH(QString, choice);
    QFETCH(bool, accept);
    QWidget parent;
    QTimer::singleShot(0, &parent,
                       [&]
                       {
                           auto* const dialog =
                               qobject_cast<kxAnimClipInterferenceGUIImpl*>(QApplication::activeModalWidget());
                           QVERIFY(dialog != nullptr);
                           if (choice == "none")
                           {
                               dialog->_proceedGroup->setExclusive(false);
                               dialog->_moveAnim->setChecked(false);
                           }
                           else if (!choice.isEmpty())
                               dialog->findChild<QRadioButton*>(choice)->click();
                           dialog->buttonBox->button(accept ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
                       });
    QTEST(kxAnimClipInterferenceGUIImpl::ask(&parent), "answer");
    QVERIFY(parent.findChild<QDialog*>() == nullptr);
}

void tst_kxAnimClipInterference::survivesItsParent()
{
    const QPointer<QWidget> parent(new QWidget);
    QTimer::singleShot(0, qApp, [parent] { delete parent; });
    QCOMPARE(kxAnimClipInterferenceGUIImpl::ask(parent), 0);
    QVERIFY(parent.isNull());
}

QTEST_MAIN(tst_kxAnimClipInterference)
#include "tst_kxAnimClipInterference.moc"
