#pragma once

#include <osg/ChangeList.h>
#include <scene/kxIdTable.h>

#include <utility>
#include <vector>

/// Notes what the marked changes make stale, for the plans of evaluation. Main thread only.
class kxAnimWatch : public osg::ChangeListener
{
public:
    kxAnimWatch();
    ~kxAnimWatch() override;
    kxAnimWatch(const kxAnimWatch&) = delete;
    kxAnimWatch& operator=(const kxAnimWatch&) = delete;

    /// What the plans have met a container as.
    enum Role : osg::UInt8
    {
        Used = 1,        ///< a plan points to it
        SceneNode = 2,   ///< its place in time counts for the scene
        SceneCurve = 4,  ///< its values count for the scene
        FilledCurve = 8, ///< had keys when a plan was made
        EmptyCurve = 16, ///< had none
        StaleCurve = 32, ///< is in staleCurves()
        Touched = 64     ///< is in touched()
    };
    void addRole(osg::UInt32 id, osg::UInt8 roles);
    void subRole(osg::UInt32 id, osg::UInt8 roles);
    /// Notes a curve with the role of its present state.
    void addCurve(osg::UInt32 id, bool isEmpty, osg::UInt8 roles);

    /// Moves on when the trees, the objects or the channels of curves have changed: a plan made at another count is not
    /// used again.
    osg::UInt64 structureCount() const { return _structureCount; }
    void markStructure() { ++_structureCount; }

    /// Curves of the scene whose keys changed since clearStale().
    const std::vector<osg::UInt32>& staleCurves() const { return _staleCurves; }
    /// A node of the scene's plan was moved in time.
    bool areSceneTimesStale() const { return _sceneTimesStale; }
    void clearStale();

    /// What plans point to and something else than evaluation changed since clearTouched().
    const std::vector<osg::UInt32>& touched() const { return _touched; }
    void clearTouched();

    /// While evaluation writes values, nothing becomes stale.
    class Mute
    {
    public:
        explicit Mute(kxAnimWatch& watch) : _watch(watch), _before(std::exchange(watch._muted, true)) {}
        ~Mute() { _watch._muted = _before; }
        Mute(const Mute&) = delete;
        Mute& operator=(const Mute&) = delete;

    private:
        kxAnimWatch& _watch;
        const bool _before;
    };

    /// True while evaluation writes: what is marked then is no change of the scene.
    bool isMuted() const { return _muted; }

    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;
    void containerDestroyed(osg::UInt32 id) override;

private:
    void curveChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField);
    osg::UInt8 roles(osg::UInt32 id) const { return _roles.get(id); }

    kxIdTable<osg::UInt8> _roles;
    std::vector<osg::UInt32> _staleCurves;
    std::vector<osg::UInt32> _touched;
    osg::UInt64 _structureCount = 1;
    bool _sceneTimesStale = false;
    bool _muted = false;
};
