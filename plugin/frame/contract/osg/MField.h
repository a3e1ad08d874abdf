#pragma once

#include <kxExport.h>
#include <osg/CCPnt.h>

#include <iosfwd>
#include <string>
#include <vector>

namespace osg
{

/// The text of a number that reads back as the same number; independent of the locale.
KX_API std::string toString(float value);
KX_API std::string toString(UInt32 value);

/// A field that holds any number of values.
template <class T, int fieldNamespace>
class MField : public std::vector<T>
{
public:
    using std::vector<T>::vector;
    bool isEmpty() const { return this->empty(); }
    UInt32 getSize() const { return UInt32(this->size()); }
};

/// The keys of a curve, with their text form.
///
/// One point is "x,y,in x,in y,out x,out y,in type,out type" between double quotes; points are joined by ", ".
template <>
class KX_API MField<CCPnt, 0> : public std::vector<CCPnt>
{
public:
    using std::vector<CCPnt>::vector;

    bool isEmpty() const { return empty(); }
    UInt32 getSize() const { return UInt32(size()); }

    /// Appends the point that `text` describes; the blank point where not all eight values are found.
    void pushValueByStr(const char* text);
    /// The text of point `index`; leaves `text` alone for an index beyond the end.
    void getValueByStr(std::string& text, UInt32 index) const;
    void getValuesByStr(std::string& text) const;
    void getValuesByStr(std::ostream& stream) const;
    /// Prints the head line of a dump on the standard output.
    void dump() const;
};

} // namespace osg
