#include "kxOwned.h"

#include <frame/kxMessageRead.h>
#include <kxCapturedStderr.h>

#include <kxAnimRecords.h>

#include <QtTest>

#include <set>

class tst_kxMessageRead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsEachType();
    void mismatchIsReported();
};

namespace
{
template <class T>
bool comesThrough(const T& value)
{
    kxMessage message;
    message.set("key", value, true);
    T out{};
    return getFromMessage(message, "key", out) && out == value;
}
} // namespace

void tst_kxMessageRead::readsEachType()
{
    const kxCapturedStderr silent;
    int pointee = 0;
    const kxOwned<osg::Node> node(osg::Node::create());
    const kxOwned<osg::AnimNode> animation(osg::AnimNodeBase::create());
    QVERIFY(comesThrough(true));
    QVERIFY(comesThrough(-7));
    QVERIFY(comesThrough(7u));
    QVERIFY(comesThrough(0.5));
    QVERIFY(comesThrough(std::string("text")));
    QVERIFY(comesThrough(static_cast<void*>(&pointee)));
    QVERIFY(comesThrough(node.get()));
    QVERIFY(comesThrough(animation.get()));
    QVERIFY(comesThrough(std::vector<osg::NodePtr>{node}));
    QVERIFY(comesThrough(std::vector<osg::AnimNodePtr>{animation, animation}));
    QVERIFY(comesThrough(std::vector<osg::MaterialPtr>{osg::MaterialPtr()}));
    QVERIFY(comesThrough(std::set<QString>{"a", "b"}));
}

void tst_kxMessageRead::mismatchIsReported()
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

QTEST_GUILESS_MAIN(tst_kxMessageRead)
#include "tst_kxMessageRead.moc"
