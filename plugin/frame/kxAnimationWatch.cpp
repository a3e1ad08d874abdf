#include <frame/kxAnimationWatch.h>

#include <osg/AnimNode.h>

kxAnimationWatch::kxAnimationWatch(QObject* parent) : QObject(parent)
{
    if (osg::ChangeList* const changes = osg::WinThreadBase::getCurrentChangeList())
        changes->addListener(this);
}

kxAnimationWatch::~kxAnimationWatch()
{
    if (osg::ChangeList* const changes = osg::WinThreadBase::getCurrentChangeList())
        changes->subListener(this);
}

void kxAnimationWatch::tellLater()
{
    if (_isPending)
        return;
    _isPending = true;
    QMetaObject::invokeMethod(this, &kxAnimationWatch::tell, Qt::QueuedConnection);
}

void kxAnimationWatch::tell()
{
    _isPending = false;
    Q_EMIT animationsChanged();
}

void kxAnimationWatch::containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField)
{
    if (_isPending)
        return;
    const osg::BitVector transient =
        osg::AnimNodeBase::PlayingFieldMask | osg::AnimNodeBase::LastEvaluationTimeFieldMask;
    const osg::FieldContainerType& type = container->getType();
    if (type.isDerivedFrom(osg::AnimNodeBase::_type) ? whichField.intersects(~transient)
                                                     : type.isDerivedFrom(osg::AnimObject::_type))
        tellLater();
}

void kxAnimationWatch::containerDestroyed(osg::UInt32)
{
    tellLater(); // what died is known by nothing but its id
}
