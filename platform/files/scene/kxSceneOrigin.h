#pragma once

#include <osg/Types.h>

#include <QByteArray>
#include <QString>

#include <vector>

/// Which file of ours holds the open scene, and where in it each container is.
struct kxSceneOrigin
{
    struct Place
    {
        osg::UInt32 id = 0;     ///< of the container in the open scene, 0 where it is none
        osg::UInt64 offset = 0; ///< in the payload
    };

    QString path;
    QByteArray head;               ///< the file's, see kxEnvelope: holds the length and checksum of what follows
    std::vector<Place> containers; ///< by their numbers, from 1
    osg::UInt64 end = 0;           ///< behind the last container
    /// Containers that name others which the file doesn't hold, so that it says less of them than the scene does.
    std::vector<osg::UInt32> incomplete;

    bool isEmpty() const { return containers.empty(); }
    /// The open scene has another container in the place of this one.
    void replace(osg::UInt32 id, osg::UInt32 by)
    {
        for (Place& place : containers)
            if (id != 0 && place.id == id)
                place.id = by;
    }
};

/// Hears when the open scene becomes another, and which file holds it. See kxSceneIO::setObserver().
class kxSceneObserver
{
public:
    virtual ~kxSceneObserver() = default;
    /// A new scene, or one that was opened, is in place of the one before. Empty: no file of ours holds it.
    virtual void sceneReplaced(const kxSceneOrigin& origin) = 0;
    virtual void sceneToBeSaved() = 0;
    /// It is written, and about to take the place of the file that is there; or not, where that fails.
    virtual void sceneToReplaceFile(const kxSceneOrigin& origin) = 0;
    virtual void sceneSaved(const kxSceneOrigin& origin) = 0;
};
