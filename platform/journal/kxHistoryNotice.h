#pragma once

#include <osg/ChangeList.h>

#include <QByteArray>

/// Tells the tools what a walk through the history has written, as any edit of theirs would.
class kxHistoryNotice : public osg::ChangeListener
{
public:
    kxHistoryNotice() = default;
    ~kxHistoryNotice() override;
    kxHistoryNotice(const kxHistoryNotice&) = delete;
    kxHistoryNotice& operator=(const kxHistoryNotice&) = delete;

    /// What is marked from here on counts.
    void listen();
    void tell();

    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;
    void containerDestroyed(osg::UInt32 id) override;

private:
    void tellFields() const;

    QByteArray _ofScene; // see kxSceneRecord
    bool _any = false;
    bool _structure = false;  // nodes, names, attachments
    bool _animations = false; // their trees, their names, who has them
    bool _materials = false, _transforms = false, _cameras = false, _lights = false;
};
