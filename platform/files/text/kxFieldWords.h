#pragma once

#include <kxExport.h>
#include <scene/FieldDescription.h>

#include <QString>
#include <QStringList>

#include <string>

/// A field in the words of a user, the same wherever it is shown: in panels, in the history, in comparisons.
struct KX_API kxFieldWords
{
    QString label;       ///< "base colour"
    QString unit;        ///< after the number
    QStringList choices; ///< texts of the values 0, 1, 2 ...

    /// Of an object, a core or a material by the field's name; without an entry the name in words.
    static kxFieldWords of(const std::string& field);
    /// Of any class: nodes of animation have fields of the same name with another meaning.
    static kxFieldWords of(const osg::FieldContainerType& type, const std::string& field);
    /// Of what kxSceneTiming holds.
    static kxFieldWords ofSetting(const std::string& name);
    /// "eulerRotation" is "euler rotation".
    static QString words(const std::string& name);

    /// "0, 90, 0°"; rounded as a user wants to read it. Not for references.
    QString value(const osg::FieldValue& value) const;
    /// "frame rate 30 (was 24)"; exact where rounding would show the same twice.
    QString changed(const osg::FieldValue& before, const osg::FieldValue& after) const;

    static QString number(double value);
    /// Frames of a time, "12" or "12.5".
    static QString frames(double seconds, double fps);
    /// The track of an offset's y, from 0, as the clip maker writes it beside its tracks.
    static QString track(float y);
    /// "linear" and the like; the number for what nobody knows.
    static QString tangent(osg::UInt32 type);
    static QString infinity(osg::UInt32 mode);
    /// "object", "clip", "channel"; empty for what a user has no word for. `core` null for what has none.
    static QString kind(const osg::FieldContainerType& type, const osg::FieldContainerType* core);
    /// Kinds in the order in which a user counts them up: what holds others before what is held.
    static int order(const QString& kind);
    /// "a, b and c".
    static QString joined(const QStringList& texts);
    /// "3 keys"; `count` 1 gives "1 key".
    static QString counted(std::size_t count, const QString& kind);
};
