#pragma once

#include <kxAnimManager.h>

#include <QString>

/// The counts and times of an animation for the information box, one line each. `fps`: frames in a second.
QString kxAnimInfoText(const kxAnimManager::kxAnimInfo& info, double fps);

/// Shows the information box of an animation and returns when it is closed; null does nothing.
void kxShowAnimInfo(const osg::AnimNodePtr& animation);
