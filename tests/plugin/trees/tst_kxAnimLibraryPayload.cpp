#include <trees/kxAnimLibraryMoves.h>
#include <trees/kxAnimLibraryPayload.h>

#include <kxAnimFixture.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

#include <QMimeData>
#include <kxTable.h>

using namespace osg;

/// 32-bit big-endian numbers.
static QByteArray numbers(std::initializer_list<quint32> values)
{
    QByteArray bytes;
    for (const quint32 value : values)
        for (const int shift : {24, 16, 8, 0})
            bytes.append(char(value >> shift));
    return bytes;
}

class tst_kxAnimLibraryPayload : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void bytes_data()
    {
        // whole: encodes to the same bytes again
        kxColumns<QByteArray, bool, QVector<quint32>, bool>("bytes", "rightButton", "ids", "whole");

        kxRow("nothing", QByteArray(), false, QVector<quint32>(), false);
        kxRow("no rows", numbers({1}), true, QVector<quint32>(), true);
        kxRow("two rows", numbers({0, 7, 300, 0, 0xFFFFFFFF}), false, QVector<quint32>{7, 300, 0, 0xFFFFFFFF}, true);
        kxRow("cut in the second id", numbers({1, 7, 300, 8, 9}).chopped(1), true, QVector<quint32>{7, 300}, false);
        kxRow("cut after an id", numbers({1, 7, 300, 8}), true, QVector<quint32>{7, 300}, false);
        kxRow("cut in the button", QByteArray("\0\0\0", 3), false, QVector<quint32>(), false);
        kxRow("another number for the button", numbers({2, 7, 8}), false, QVector<quint32>{7, 8}, false);
    }

    void bytes()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, whole);
        const kxAnimLibraryPayload payload = kxAnimLibraryPayload::decode(bytes);
        QTEST(payload.rightButton, "rightButton");
        QVector<quint32> ids;
        for (const kxAnimLibraryPayload::Row& row : payload.rows)
            ids << row.animationId << row.containerId;
        QTEST(ids, "ids");
        QCOMPARE(payload.encode() == bytes, whole);

        QMimeData data;
        QVERIFY(!kxAnimLibraryPayload::isIn(&data));
        data.setData("application/anim-lib-item", bytes);
        QVERIFY(kxAnimLibraryPayload::isIn(&data));
        QCOMPARE(kxAnimLibraryPayload::of(&data).rows.size(), payload.rows.size());
    }

    void movesSkipWhatDoesNotFit()
    {
        kxAnimFixture scene;
        const NodePtr source = kxAnimFixture::object("source"), target = kxAnimFixture::object("target");
        const MaterialPtr material = UberMaterial::create(), other = UberMaterial::create();
        kxScene::the()->addMaterial(material);
        kxScene::the()->addMaterial(other);
        kxAnimManager* const kernel = kxAnimManager::the();
        const AnimNodePtr ofNode = kxAnimFixture::block("of node", {}),
                          ofMaterial = kxAnimFixture::block("of material", {});
        kernel->addAnimation(source, ofNode);
        kernel->addAnimation(material, ofMaterial);

        kxAnimLibraryPayload payload;
        payload.rows = {{4000000000u, source->getId()},
                        {ofNode->getId(), 4000000000u},
                        {ofNode->getId(), material->getId()},
                        {ofMaterial->getId(), source->getId()},
                        {source->getId(), source->getId()}};
        const NodePtr nodeRoot = ofNode->getParent(), materialRoot = ofMaterial->getParent();
        kxAnimLibraryMoves::moveToNode(payload, target);
        kxAnimLibraryMoves::moveToMaterial(payload, other);
        QVERIFY(ofNode->getParent() == nodeRoot);
        QVERIFY(ofMaterial->getParent() == materialRoot);

        payload.rows = {{ofNode->getId(), source->getId()}, {ofMaterial->getId(), material->getId()}};
        kxAnimLibraryMoves::moveToNode(payload, target);
        kxAnimLibraryMoves::moveToMaterial(payload, other);
        QVERIFY(ofNode->getParent() == NodePtr(kernel->getAnimAttachment(target)->getAnimationRoot()));
        QVERIFY(ofMaterial->getParent() == NodePtr(kernel->getAnimAttachment(other)->getAnimationRoot()));
    }
};

QTEST_GUILESS_MAIN(tst_kxAnimLibraryPayload)
#include "tst_kxAnimLibraryPayload.moc"
