#include <osg/AnimCores.h>

#include <scene/FieldDescription.h>

namespace osg
{

namespace
{
/// For classes that are made by their base's create().
template <class Base>
FieldContainerPtr made()
{
    return FieldContainerPtr(Base::create());
}
} // namespace

FieldContainerType AnimBlockBase::_type("AnimBlockBase", &AnimObject::_type, nullptr, nullptr, nullptr);
FieldContainerType AnimBlock::_type("AnimBlock", &AnimBlockBase::_type, nullptr, &made<AnimBlockBase>, nullptr);
FieldContainerType AnimClipBase::_type("AnimClipBase", &AnimObject::_type, nullptr, nullptr, nullptr);
FieldContainerType AnimClip::_type("AnimClip", &AnimClipBase::_type, nullptr, &made<AnimClipBase>, nullptr);
FieldContainerType AnimSequenceBase::_type("AnimSequenceBase", &AnimObject::_type, nullptr, nullptr,
                                           &AnimSequenceBase::describeFields);
FieldContainerType AnimSequence::_type("AnimSequence", &AnimSequenceBase::_type, nullptr, &made<AnimSequenceBase>,
                                       nullptr);
FieldContainerType AnimShotBase::_type("AnimShotBase", &AnimObject::_type, nullptr, nullptr,
                                       &AnimShotBase::describeFields);
FieldContainerType AnimShot::_type("AnimShot", &AnimShotBase::_type, nullptr, &made<AnimShotBase>, nullptr);
FieldContainerType AnimWizClipBase::_type("AnimWizClipBase", &AnimClip::_type, nullptr, nullptr,
                                          &AnimWizClipBase::describeFields);
FieldContainerType AnimWizClip::_type("AnimWizClip", &AnimWizClipBase::_type, nullptr, &made<AnimWizClipBase>, nullptr);
FieldContainerType TimeShapeCacheBase::_type("TimeShapeCacheBase", &AnimObject::_type, nullptr, nullptr,
                                             &TimeShapeCacheBase::describeFields);
FieldContainerType TimeShapeCache::_type("TimeShapeCache", &TimeShapeCacheBase::_type, nullptr,
                                         &made<TimeShapeCacheBase>, nullptr);
FieldContainerType VertexAnimCurvesBase::_type("VertexAnimCurvesBase", &AnimObject::_type, nullptr, nullptr, nullptr);
FieldContainerType VertexAnimCurves::_type("VertexAnimCurves", &VertexAnimCurvesBase::_type, nullptr,
                                           &made<VertexAnimCurvesBase>, nullptr);

AnimBlockPtr AnimBlockBase::create()
{
    return AnimBlockPtr(new AnimBlock);
}

AnimClipPtr AnimClipBase::create()
{
    return AnimClipPtr(new AnimClip);
}

AnimSequencePtr AnimSequenceBase::create()
{
    return AnimSequencePtr(new AnimSequence);
}

void AnimSequenceBase::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("isVariant", IsVariantFieldMask, &AnimSequenceBase::_isVariant));
    fields.push_back(FieldDescription::member("isViewpoint", IsViewpointFieldMask, &AnimSequenceBase::_isViewpoint));
}

AnimShotPtr AnimShotBase::create()
{
    return AnimShotPtr(new AnimShot);
}

void AnimShotBase::describeFields(FieldList& fields)
{
    const auto add = [&fields](const char* name, auto pointer)
    { fields.push_back(FieldDescription::member(name, ShotFieldMask, pointer)); };
    add("shotType", &AnimShotBase::_shotType);
    add("transitionType", &AnimShotBase::_transitionType);
    add("interpolation", &AnimShotBase::_interpolation);
    add("shotDuration", &AnimShotBase::_shotDuration);
    add("transitionDuration", &AnimShotBase::_transitionDuration);
    add("startFrom", &AnimShotBase::_startFrom);
    add("startAt", &AnimShotBase::_startAt);
    add("endFrom", &AnimShotBase::_endFrom);
    add("endAt", &AnimShotBase::_endAt);
    add("startUp", &AnimShotBase::_startUp);
    add("endUp", &AnimShotBase::_endUp);
    fields.push_back(referenceField("startShotImage", ShotFieldMask, &AnimShotBase::getStartShotImage,
                                    &AnimShotBase::setStartShotImage));
    fields.push_back(
        referenceField("endShotImage", ShotFieldMask, &AnimShotBase::getEndShotImage, &AnimShotBase::setEndShotImage));
}

void AnimShotBase::setStartShotImage(const ImagePtr& image)
{
    _startShotImage = image;
}

void AnimShotBase::setEndShotImage(const ImagePtr& image)
{
    _endShotImage = image;
}

AnimWizClipPtr AnimWizClipBase::create()
{
    return AnimWizClipPtr(new AnimWizClip);
}

void AnimWizClipBase::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("start", StartFieldMask, &AnimWizClipBase::_start));
    fields.push_back(FieldDescription::member("duration", DurationFieldMask, &AnimWizClipBase::_duration));
    fields.push_back(
        FieldDescription::member("interpolation", InterpolationFieldMask, &AnimWizClipBase::_interpolation));
    fields.push_back(referenceField("startImage", StartImageFieldMask, &AnimWizClipBase::getStartImage,
                                    &AnimWizClipBase::setStartImage));
    fields.push_back(
        referenceField("endImage", EndImageFieldMask, &AnimWizClipBase::getEndImage, &AnimWizClipBase::setEndImage));
}

void AnimWizClipBase::setStartImage(const ImagePtr& image)
{
    _startImage = image;
}

void AnimWizClipBase::setEndImage(const ImagePtr& image)
{
    _endImage = image;
}

TimeShapeCachePtr TimeShapeCacheBase::create()
{
    return TimeShapeCachePtr(new TimeShapeCache);
}

void TimeShapeCacheBase::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("range", RangeFieldMask, &TimeShapeCacheBase::_range));
}

VertexAnimCurvesPtr VertexAnimCurvesBase::create()
{
    return VertexAnimCurvesPtr(new VertexAnimCurves);
}

} // namespace osg
