#include <trees/kxAnimLibraryPayload.h>

#include <osg/FieldContainerFactory.h>

#include <QDataStream>
#include <QIODevice>
#include <QMimeData>

osg::AnimNodePtr kxAnimLibraryPayload::Row::animation() const
{
    return osg::living<osg::AnimNode>(animationId);
}

osg::AttachmentContainerPtr kxAnimLibraryPayload::Row::container() const
{
    return osg::living<osg::AttachmentContainer>(containerId);
}

QByteArray kxAnimLibraryPayload::encode() const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << qint32(rightButton ? 1 : 0);
    for (const Row& row : rows)
        stream << qint32(row.animationId) << qint32(row.containerId);
    return bytes;
}

kxAnimLibraryPayload kxAnimLibraryPayload::decode(const QByteArray& bytes)
{
    kxAnimLibraryPayload payload;
    QDataStream stream(bytes);
    qint32 first = 0;
    stream >> first;
    payload.rightButton = first == 1;
    while (!stream.atEnd())
    {
        qint32 animation = 0, container = 0;
        stream >> animation >> container;
        if (stream.status() != QDataStream::Ok)
            break;
        payload.rows.push_back(Row{static_cast<unsigned int>(animation), static_cast<unsigned int>(container)});
    }
    return payload;
}

bool kxAnimLibraryPayload::isIn(const QMimeData* data)
{
    return data != nullptr && data->hasFormat(QLatin1String(MimeType));
}

kxAnimLibraryPayload kxAnimLibraryPayload::of(const QMimeData* data)
{
    return isIn(data) ? decode(data->data(QLatin1String(MimeType))) : kxAnimLibraryPayload();
}
