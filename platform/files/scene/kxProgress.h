#pragma once

#include <kxExport.h>

#include <functional>

/// How far the work with a file is, seen by whoever works; and whether it is to go on.
///
/// Those who work call goesOn() all the time, and stop where it gives false: with a report that says isCancelled(), the
/// scene and the file as they were. Without a watch it always goes on. For the thread of the scene alone.
namespace kxProgress
{
/// `share` is how much of the work is done, from 0 to 1, below 0 where nobody can tell; 1 is the end of all asking.
/// False gives the work up. Called some 30 times a second, in the middle of the work: it mustn't touch the scene, nor
/// let anybody else do so.
typedef std::function<bool(double share)> Watch;

/// While it lives, `watch` is asked; then the one before.
class KX_API Scope
{
public:
    explicit Scope(Watch watch);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
};

/// While it lives, what works counts from 0 to 1 for the part from `from` to `to` of the whole.
class KX_API Part
{
public:
    Part(double from, double to);
    ~Part();
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;

private:
    double _from, _length; ///< of before
};

/// Cheap enough for each object. Once false, always false.
KX_API bool goesOn(double share);
/// The last question: what follows can't be taken back. The watch gets 1, which it doesn't get before.
KX_API bool mayFinish();
} // namespace kxProgress
