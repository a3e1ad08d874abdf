#pragma once

#include <kxdNode.h>

#include <QList>
#include <QObject>

/// Base of what parts of the host offer to others by class.
class KX_API kxKernelService : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
};

/// Finds services by class.
class KX_API kxKernelServiceFactory
{
public:
    static kxKernelServiceFactory& the();

    /// Null, with a line on the standard error stream, where the host has no such service.
    template <class Service>
    Service* getService() const
    {
        return qobject_cast<Service*>(find(Service::staticMetaObject.className()));
    }

    /// `service` null: the class is known but nothing answers. Not owned. A service that dies leaves by itself.
    template <class Service>
    void addService(Service* service)
    {
        add(Service::staticMetaObject.className(), service);
    }

private:
    kxKernelServiceFactory() = default;
    QObject* find(const char* className) const;
    void add(const char* className, QObject* service);
};

class KX_API kxSceneplateService : public kxKernelService
{
    Q_OBJECT
public:
    using kxKernelService::kxKernelService;
Q_SIGNALS:
    void nodesSelected(QList<kxdNode> nodes);
};

class KX_API kxMaterialService : public kxKernelService
{
    Q_OBJECT
public:
    using kxKernelService::kxKernelService;
Q_SIGNALS:
    void materialsChanged();
};

class KX_API kxCameraService : public kxKernelService
{
    Q_OBJECT
public:
    using kxKernelService::kxKernelService;

    virtual QList<kxdViewpointNode> getViewpoints() const;
    virtual QList<kxdCameraTrackNode> getCameraTracks() const;

public Q_SLOTS:
    /// The camera's panels take the values of the present frame.
    virtual void requestGUIUpdate();

Q_SIGNALS:
    void viewWentIdle();
    void attributesPasted();
    void viewpointActivated();
};

class KX_API kxObjectService : public kxKernelService
{
    Q_OBJECT
public:
    using kxKernelService::kxKernelService;
Q_SIGNALS:
    /// A property of a scene object was changed in the host.
    void propertyChangedBS();
};

class KX_API kxNodeService : public kxKernelService
{
    Q_OBJECT
public:
    using kxKernelService::kxKernelService;
};

class KX_API kxAnimationService : public kxKernelService
{
    Q_OBJECT
public:
    using kxKernelService::kxKernelService;
    static kxAnimationService& the();

    /// Animations came or went: the plan is brought up to date, the signal goes out, modules are notified next turn.
    void animationsChanged();

Q_SIGNALS:
    void changed();
};

class KX_API kxPreferencesService : public kxKernelService
{
    Q_OBJECT
public:
    using kxKernelService::kxKernelService;
    /// Opens the preferences dialog on the page of this name.
    virtual void openPreferences(const QString& page);
};
