#pragma once

#include <osg/Node.h>

/// The clipping plane of the scene: an object like others, that hides what is before it.
namespace kxClippingPlane
{
/// The one that cuts, or else the first that there is; null where the scene has none.
osg::NodePtr node();
/// True where one is shown.
bool isOn();
/// One step on the undo list. Switched on for the first time, a plane through the middle of the scene is made, facing
/// the front and a little larger than what it goes through.
void setOn(bool on);

/// While one lives, the application answers whoever asks for the node that moves the plane.
class Answer
{
public:
    Answer();
    ~Answer();
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;
};
} // namespace kxClippingPlane
