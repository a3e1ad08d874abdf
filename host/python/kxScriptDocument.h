#pragma once

class QString;
class kxFileReport;

/// The open scene as a file, as scripts use it: nothing is asked, nothing is shown, and the list of recent files stays.
/// False, with the reason in `report`, where it can't be done.
class kxScriptDocument
{
public:
    virtual void startOver() = 0;
    virtual bool open(const QString& file, kxFileReport& report) = 0;
    virtual bool write(const QString& file, kxFileReport& report) = 0;

protected:
    ~kxScriptDocument() = default;
};
