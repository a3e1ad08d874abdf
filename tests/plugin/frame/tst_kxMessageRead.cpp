#include <frame/kxMessageRead.h>
#include <kxCapturedStderr.h>

#include <QtTest>

class tst_kxMessageRead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void mismatchIsReported()
    {
        kxMessage message;
        message.set("frame", 12, true);
        message.set("empty", boost::any(), true);
        double frame = 3.5;
        kxCapturedStderr captured;
        QVERIFY(!getFromMessage(message, "missing", frame));
        QVERIFY(!getFromMessage(message, "empty", frame));
        QCOMPARE(captured.text(), QByteArray());

        QVERIFY(!getFromMessage(message, "frame", frame));
        QCOMPARE(frame, 3.5);
        const QByteArray first("getFromMessage : Attribute 'frame' has wrong type (is:'i' != req:'d')!\n");
        QVERIFY2(captured.text().startsWith(first), captured.text().constData());
        QVERIFY2(captured.text().mid(first.size()).count('\n') >= 2, captured.text().constData()); // a back trace

        QVERIFY(!getFromMessage(message, "frame", frame, "kxMessage::get"));
        QVERIFY(captured.text().contains("\nkxMessage::get : Attribute 'frame' has wrong type"));
    }
};

QTEST_GUILESS_MAIN(tst_kxMessageRead)
#include "tst_kxMessageRead.moc"
