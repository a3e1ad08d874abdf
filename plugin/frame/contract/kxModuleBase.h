#pragma once

#include <kxExport.h>

#include <QObject>
#include <QString>

#include <cstdint>

class QPixmap;
class QWidget;
class kxMessage;

/// A tool of the application: gets the numbered messages of its mask for as long as it lives.
class KX_API kxModuleBase : public QObject
{
    Q_OBJECT
public:
    /// `icon` may be null and is not owned.
    kxModuleBase(const QString& name, const QString& category, std::uint64_t messageMask, QPixmap* icon);
    ~kxModuleBase() override;

    const QString& name() const { return _name; }
    const QString& category() const { return _category; }
    std::uint64_t messageMask() const { return _messageMask; }

    virtual QWidget* moduleWidget();
    virtual void init();
    virtual void update();
    virtual void loop();
    /// The result is 0; the host doesn't read it.
    virtual int receivedMessage(kxMessage& message);

private:
    QString _name;
    QString _category;
    std::uint64_t _messageMask;
};
