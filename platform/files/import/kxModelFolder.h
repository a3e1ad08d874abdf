#pragma once

#include <kxExport.h>

#include <QString>

#include <vector>

class kxFileReport;

/// What a model may have read beside itself: files of its own folder and below, whatever its texts and links say.
class KX_API kxModelFolder
{
public:
    explicit kxModelFolder(const QString& folder);

    /// True where a file, links followed, lies in the folder or below.
    bool holds(const QString& file) const;
    /// True for a name that means a place elsewhere: an absolute path, one that climbs out, an address.
    bool leadsOut(const QString& name) const;
    void refuse(const QString& name, kxFileReport& report) const;

    /// The file that a model means by a path, in any case of its letters. A place elsewhere is one of its author's
    /// machine more often than not: the file of that name beside the model is taken. Empty where there is none, noted
    /// where it leads out.
    QString find(const QString& name, kxFileReport& report) const;
    /// Of a picture that find() finds; empty, with one note, where it isn't there or is larger than `most`.
    std::vector<unsigned char> bytesOf(const QString& name, qint64 most, kxFileReport& report) const;

private:
    QString _folder, _root; ///< as it was given, and with all links followed; both end with /
};
