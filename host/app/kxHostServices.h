#pragma once

#include <kxServices.h>

#include <functional>

/// Opens the dialog for whoever asks the service.
class kxHostPreferencesService : public kxPreferencesService
{
    Q_OBJECT
public:
    explicit kxHostPreferencesService(std::function<void(const QString& page)> open) : _open(std::move(open)) {}
    void openPreferences(const QString& page) override { _open(page); }

private:
    std::function<void(const QString& page)> _open;
};

/// Lists what the open scene has.
class kxHostCameraService : public kxCameraService
{
    Q_OBJECT
public:
    using kxCameraService::kxCameraService;
    QList<kxdViewpointNode> getViewpoints() const override;
    QList<kxdCameraTrackNode> getCameraTracks() const override;
};

/// The services that the host offers, known to the factory for as long as this lives.
class kxHostServices
{
public:
    explicit kxHostServices(std::function<void(const QString& page)> openPreferences);

    kxCameraService& camera() { return _camera; }

private:
    kxSceneplateService _sceneplates;
    kxMaterialService _materials;
    kxHostCameraService _camera;
    kxObjectService _objects;
    kxNodeService _nodes;
    kxHostPreferencesService _preferences;
};
